#include "mxf/metadata/descriptors/RGBAPictureDescriptor.h"

std::string toString(const MXFPixelLayout& layout) {
    std::string text;
    for (const MXFPixelComponent& component : layout.components) {
        if (component.code != 0) {
            text += component.code + std::to_string(component.depth);
        }
    }
    return text;
}

namespace klvutil {

void ValueCoding<MXFPixelLayout>::read(OctetReader& from, MXFPixelLayout& layout) {
    layout.components.clear();
    while (from.left() > 0) {
        layout.components.push_back(from.read<MXFPixelComponent>());
    }
}

void ValueCoding<MXFPixelLayout>::write(OctetWriter& to, const MXFPixelLayout& layout) {
    for (const MXFPixelComponent& component : layout.components) {
        to.write(component);
    }
}

} // namespace klvutil

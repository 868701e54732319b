#include "mxf/metadata/descriptors/RGBAPictureDescriptor.h"

namespace bryx {

std::string toString(const MXFPixelLayout& layout) {
    std::string text;
    for (const MXFPixelComponent& component : layout.components) {
        const auto code = static_cast<std::uint8_t>(component.code);
        if (code != 0) {
            text += code > 0x20 && code < 0x7F ? std::string(1, component.code) : "(" + std::to_string(code) + ")";
            text += std::to_string(component.depth);
        }
    }
    return text;
}

namespace klvutil {

void ValueCoding<MXFPixelLayout>::read(OctetReader& from, MXFPixelLayout& layout) {
    for (MXFPixelComponent& component : layout.components) {
        from.read(component);
    }
}

void ValueCoding<MXFPixelLayout>::write(OctetWriter& to, const MXFPixelLayout& layout) {
    for (const MXFPixelComponent& component : layout.components) {
        to.write(component);
    }
}

} // namespace klvutil

} // namespace bryx

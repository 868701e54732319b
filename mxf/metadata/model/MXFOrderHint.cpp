#include "mxf/metadata/model/MXFOrderHint.h"

namespace bryx {

bool mxfutil::isPrivateLabel(const KLVKey& label) noexcept {
    KLVKey family = label;
    family[10] = family[11] = 0;
    return family == klvutil::key("9cef38e7.d80425c1.c3d20000.9cad11e0");
}

} // namespace bryx

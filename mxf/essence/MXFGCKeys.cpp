#include "mxf/essence/MXFGCKeys.h"

#include <cstddef>

namespace mxfutil {

namespace {

/// Whether @p key has every octet of @p pattern that is not 0, octet 7 aside.
bool matches(const KLVKey& key, const KLVKey& pattern) noexcept {
    for (std::size_t i = 0; i < key.octets.size(); ++i) {
        if (i != 7 && pattern[i] != 0 && key[i] != pattern[i]) {
            return false;
        }
    }
    return true;
}

constexpr KLVKey systemElement = klvutil::key("060e2b34.02000100.0d010301.00000000");
constexpr KLVKey essenceElement = klvutil::key("060e2b34.01020100.0d010301.00000000");

} // namespace

bool isGCSystemElement(const KLVKey& key) noexcept {
    return matches(key, systemElement) && (key[12] == 0x04 || key[12] == 0x14);
}

bool isGCEssenceElement(const KLVKey& key) noexcept {
    return matches(key, essenceElement);
}

MXFGCEssenceKind gcEssenceKind(const KLVKey& key) noexcept {
    if (!isGCEssenceElement(key)) {
        return MXFGCEssenceKind::None;
    }
    switch (key[12]) {
    case 0x05:
    case 0x15:
        return MXFGCEssenceKind::Picture;
    case 0x06:
    case 0x16:
        return MXFGCEssenceKind::Sound;
    case 0x07:
    case 0x17:
        return MXFGCEssenceKind::Data;
    case 0x18:
        return MXFGCEssenceKind::Compound;
    default:
        return MXFGCEssenceKind::None;
    }
}

} // namespace mxfutil

#include "mxf/essence/MXFGCKeys.h"

#include <cstdint>

namespace bryx::mxfutil {

namespace {

/// The octets of keys that tell a family of elements, in a form that is compared with few instructions: it is done for each
/// element, more than once.
class KeyPattern {
public:
    /// @param pattern has 0 in octets that do not matter; octet 7 does not matter either
    constexpr explicit KeyPattern(const KLVKey& pattern)
        : first_(klvutil::detail::firstOctets(pattern)), last_(klvutil::detail::lastOctets(pattern)),
          firstMask_(mask(first_)), lastMask_(mask(last_)) {}

    bool matches(const KLVKey& key) const noexcept {
        return (klvutil::detail::lastOctets(key) & lastMask_) == last_ &&
               (klvutil::detail::firstOctets(key) & firstMask_) == first_;
    }

private:
    /// All bits of each octet of @p octets that is not 0.
    static constexpr std::uint64_t mask(std::uint64_t octets) {
        std::uint64_t result = 0;
        for (std::uint64_t octet = 0xFF; octet != 0; octet <<= 8U) {
            result |= (octets & octet) != 0 ? octet : 0;
        }
        return result;
    }

    std::uint64_t first_;
    std::uint64_t last_;
    std::uint64_t firstMask_;
    std::uint64_t lastMask_;
};

constexpr KeyPattern systemElement(klvutil::key("060e2b34.02000100.0d010301.00000000"));
constexpr KeyPattern essenceElement(klvutil::key("060e2b34.01020100.0d010301.00000000"));

} // namespace

bool isGCSystemElement(const KLVKey& key) noexcept {
    return systemElement.matches(key) && (key[12] == 0x04 || key[12] == 0x14);
}

bool isGCEssenceElement(const KLVKey& key) noexcept {
    return essenceElement.matches(key);
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

} // namespace bryx::mxfutil

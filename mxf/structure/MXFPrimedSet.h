#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "klv/KLVKey.h"

namespace bryx {

/// A local set decoded through the primer: every tag is replaced by the label of the property that it stands for.
struct MXFPrimedSet {
    KLVKey key; ///< of the set

    /// The values as they stand in the set, by label. Labels that differ in their version alone are one property.
    std::map<KLVKey, std::vector<std::uint8_t>> properties;

    std::uint64_t position = 0; ///< stream position of the first octet of the set's key
    std::uint64_t length = 0;   ///< octets of the whole triplet, key and length field included
};

} // namespace bryx

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// One entry of a random index: a partition of the file.
struct MXFRandomIndexEntry {
    std::uint32_t bodySID = 0;    ///< the essence container in the partition; 0 for none
    std::uint64_t byteOffset = 0; ///< offset of the partition pack, in octets from the end of the run-in

    /// Visits the fields in their order on the wire, with their names.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("bodySID", self.bodySID);
        visit("byteOffset", self.byteOffset);
    }

    friend bool operator==(const MXFRandomIndexEntry& a, const MXFRandomIndexEntry& b) noexcept {
        return a.bodySID == b.bodySID && a.byteOffset == b.byteOffset;
    }
    friend bool operator!=(const MXFRandomIndexEntry& a, const MXFRandomIndexEntry& b) noexcept { return !(a == b); }
    friend bool operator<(const MXFRandomIndexEntry& a, const MXFRandomIndexEntry& b) noexcept {
        return a.byteOffset != b.byteOffset ? a.byteOffset < b.byteOffset : a.bodySID < b.bodySID;
    }
};

/// The partitions of a file, in the order in which the random index pack lists them.
using MXFRandomIndex = std::vector<MXFRandomIndexEntry>;

namespace mxfutil {

/// The key of a random index pack (ST 377-1 §12). Compare with ==: the version does not matter.
///
///     key (16)  length  | bodySID 4 | byteOffset 8 |  for each partition  | overall length 4
///
/// The overall length is that of the whole pack, key and length field included: read from the last four octets of a
/// file, it leads to the pack.
inline constexpr KLVKey randomIndexPackKey{
    {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01, 0x01, 0x11, 0x01, 0x00}};

inline constexpr std::size_t randomIndexEntrySize = 12;
inline constexpr std::size_t overallLengthSize = 4;

/// Octets of a random index pack, key and length field included, whose length has BER form @p form and whose value has
/// @p valueSize octets. Requires "valid BER length form".
BRYX_API std::uint64_t randomIndexPackSize(std::uint8_t form, std::uint64_t valueSize);

/// Reads the whole entries of the value of a random index pack.
/// @param form the BER length form of the pack
/// @return whether the entries fill the value exactly and the overall length is right
BRYX_API bool readRandomIndex(const std::uint8_t* data, std::size_t size, std::uint8_t form, MXFRandomIndex& index);

/// The value of a random index pack whose length is written in BER form @p form.
BRYX_API std::vector<std::uint8_t> writeRandomIndex(const MXFRandomIndex& index, std::uint8_t form);

} // namespace mxfutil

} // namespace bryx

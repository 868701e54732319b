#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class FindingReporter;

/// The local tags of one header metadata region and the labels of the properties that they stand for.
using MXFPrimer = std::map<std::uint16_t, KLVKey>;

/// An entry of a primer pack (ST 377-1 §9.2).
struct MXFPrimerEntry {
    std::uint16_t tag = 0;
    KLVKey label;

    /// Visits the fields in their order on the wire, with their names.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("tag", self.tag);
        visit("label", self.label);
    }
};

namespace mxfutil {

/// The key of a primer pack (ST 377-1 §9.2). Compare with ==: the version does not matter.
///
///     key (16)  length  | count 4 | size of an entry 4 |  tag 2 | label 16  for each entry
inline constexpr KLVKey primerPackKey{
    {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01, 0x01, 0x05, 0x01, 0x00}};

inline constexpr std::size_t primerEntrySize = 18;

/// Reads the value of a primer pack and checks its entries: against the static tags, against one another and, where
/// there is one, against the primer of an earlier region of the file. Of two entries for one tag the first holds.
///
/// What is wrong with an entry is reported to @p errorHandler, which may be null, once for each tag, and the entry holds all
/// the same. "invalid primer pack" is reported when the octets are not a batch of entries; then the primer holds those that
/// could be read.
///
/// @param previous the primer of an earlier header metadata region, or null
BRYX_API MXFPrimer readPrimerPack(const std::uint8_t* data, std::size_t size, const MXFPrimer* previous,
                                  ErrorHandler* errorHandler);

/// The same for a region that may hold several primer packs.
/// @param reporter remembers what has been reported of the region
BRYX_API MXFPrimer readPrimerPack(const std::uint8_t* data, std::size_t size, const MXFPrimer* previous,
                                  ErrorHandler* errorHandler, FindingReporter& reporter);

/// A local tag as messages show it: "0x" and four hexadecimal digits, or eight for a larger one.
BRYX_API std::string tagText(std::uint32_t tag);

/// The value of a primer pack as it is written, in order of the tags.
BRYX_API std::vector<std::uint8_t> writePrimerPack(const MXFPrimer& primer);

} // namespace mxfutil

} // namespace bryx

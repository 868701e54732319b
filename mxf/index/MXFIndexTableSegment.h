#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/optional.hpp>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "klv/ValueCoding.h"
#include "util/Api.h"

namespace bryx {

/// Where one element stands in each edit unit (ST 377-1, delta entry).
struct MXFDeltaEntry {
    std::int8_t posTableIndex =
        0;                  ///< -1 if the element is reordered, 0 for none, else the pos table that applies, from 1
    std::uint8_t slice = 0; ///< the slice that the element is in; the first is 0
    std::uint32_t elementDelta = 0; ///< octets from the start of the slice to the element

    /// Visits the fields in their order on the wire.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("posTableIndex", self.posTableIndex);
        visit("slice", self.slice);
        visit("elementDelta", self.elementDelta);
    }
};

/// Where one edit unit stands (ST 377-1, index entry).
struct MXFIndexEntry {
    /// Edit units from this one in display order to the one in stored order whose picture is shown at its time.
    std::int8_t temporalOffset = 0;
    std::int8_t keyFrameOffset = 0;          ///< edit units to the key frame that decoding starts from; 0 or less
    std::uint8_t flags = 0;                  ///< see MXFIndexEntryFlags
    std::uint64_t streamOffset = 0;          ///< octets from the start of the essence container
    std::vector<std::uint32_t> sliceOffsets; ///< octets from there to each slice after the first
    std::vector<Rational> posTable;          ///< fractional position offsets of elements

    /// Visits the fields in their order on the wire, except the lists, whose sizes the segment tells.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("temporalOffset", self.temporalOffset);
        visit("keyFrameOffset", self.keyFrameOffset);
        visit("flags", self.flags);
        visit("streamOffset", self.streamOffset);
    }
};

/// The bits of MXFIndexEntry::flags (ST 377-1).
namespace MXFIndexEntryFlags {

inline constexpr std::uint8_t randomAccess = 0x80;       ///< decoding may start here
inline constexpr std::uint8_t sequenceHeader = 0x40;     ///< a sequence header comes with the picture
inline constexpr std::uint8_t forwardPrediction = 0x20;  ///< the picture is predicted from an earlier one
inline constexpr std::uint8_t backwardPrediction = 0x10; ///< the picture is predicted from a later one

} // namespace MXFIndexEntryFlags

/// A segment of an index table: leads from edit units to octets of an essence container (ST 377-1).
///
/// All edit units of a segment with an editUnitByteCount have that many octets, and it has no entries; else each edit
/// unit has an entry. A duration of 0 with an editUnitByteCount says that the segment goes on to the end of the essence.
struct MXFIndexTableSegment {
    MXFUID instanceUID;
    Rational indexEditRate;              ///< edit units per second
    std::int64_t indexStartPosition = 0; ///< the first edit unit of the segment
    std::int64_t indexDuration = 0;      ///< in edit units
    std::uint32_t editUnitByteCount = 0; ///< octets of each edit unit; 0 if they differ
    std::uint32_t indexSID = 0;
    std::uint32_t bodySID = 0; ///< of the essence container that is indexed
    std::uint8_t sliceCount = 0;
    std::uint8_t posTableCount = 0;
    std::vector<MXFDeltaEntry> deltaEntryArray; ///< one for each element of an edit unit; empty for a single element
    std::vector<MXFIndexEntry> indexEntryArray;
    boost::optional<std::uint64_t> extStartOffset; ///< octets before the first edit unit in an external file
    boost::optional<std::uint64_t> vbeByteCount;   ///< octets from the start of the last edit unit to its end
    boost::optional<bool> singleIndexLocation;     ///< whether the whole index table stands in one partition
    boost::optional<bool> singleEssenceLocation;   ///< whether the essence stands in one partition
    boost::optional<bool> forwardIndexDirection;   ///< whether the index table comes before its essence

    /// Whether segments have a property.
    enum class Presence : std::uint8_t {
        Mandatory, ///< a segment must have it
        Always,    ///< a segment is written with it
        Optional   ///< a segment has it or not
    };

    /// Visits the properties in the order in which they are written: name, static local tag, whether a segment must
    /// have it or is written with it, value. The arrays come after the counts that tell the size of their entries.
    template <class Self, class Visit>
    static void properties(Self& self, Visit&& visit) {
        visit("instanceUID", std::uint16_t{0x3C0A}, Presence::Mandatory, self.instanceUID);
        visit("indexEditRate", std::uint16_t{0x3F0B}, Presence::Mandatory, self.indexEditRate);
        visit("indexStartPosition", std::uint16_t{0x3F0C}, Presence::Mandatory, self.indexStartPosition);
        visit("indexDuration", std::uint16_t{0x3F0D}, Presence::Mandatory, self.indexDuration);
        visit("editUnitByteCount", std::uint16_t{0x3F05}, Presence::Always, self.editUnitByteCount);
        visit("indexSID", std::uint16_t{0x3F06}, Presence::Always, self.indexSID);
        visit("bodySID", std::uint16_t{0x3F07}, Presence::Mandatory, self.bodySID);
        visit("sliceCount", std::uint16_t{0x3F08}, Presence::Always, self.sliceCount);
        visit("posTableCount", std::uint16_t{0x3F0E}, Presence::Optional, self.posTableCount);
        visit("deltaEntryArray", std::uint16_t{0x3F09}, Presence::Optional, self.deltaEntryArray);
        visit("indexEntryArray", std::uint16_t{0x3F0A}, Presence::Optional, self.indexEntryArray);
        visit("extStartOffset", std::uint16_t{0x3F0F}, Presence::Optional, self.extStartOffset);
        visit("vbeByteCount", std::uint16_t{0x3F10}, Presence::Optional, self.vbeByteCount);
        visit("singleIndexLocation", std::uint16_t{0x3F11}, Presence::Optional, self.singleIndexLocation);
        visit("singleEssenceLocation", std::uint16_t{0x3F12}, Presence::Optional, self.singleEssenceLocation);
        visit("forwardIndexDirection", std::uint16_t{0x3F13}, Presence::Optional, self.forwardIndexDirection);
    }
};

namespace mxfutil {

/// The key of an index table segment. Compare with isIndexTableSegmentKey().
inline constexpr KLVKey indexTableSegmentKey = klvutil::key("060e2b34.02530101.0d010201.01100100");

/// Whether @p key is that of an index table segment, of whatever version, with two-octet item lengths or BER ones.
BRYX_API bool isIndexTableSegmentKey(const KLVKey& key) noexcept;

/// The octets of an index entry.
constexpr std::size_t indexEntrySize(std::uint8_t sliceCount, std::uint8_t posTableCount) noexcept {
    return 11 + std::size_t{4} * sliceCount + std::size_t{8} * posTableCount;
}

/// Reads the array of delta entries in @p octets. Throws std::length_error, and leaves @p segment as it is, if there is
/// none.
BRYX_API void readProperty(const std::vector<std::uint8_t>& octets, const MXFIndexTableSegment& segment,
                           std::vector<MXFDeltaEntry>& entries);

/// Reads the array of index entries in @p octets, whose size the counts of @p segment tell.
BRYX_API void readProperty(const std::vector<std::uint8_t>& octets, const MXFIndexTableSegment& segment,
                           std::vector<MXFIndexEntry>& entries);

/// The arrays as they are written. Requires of index entries "valid sliceOffsets" and "valid posTables": as many as the
/// counts of @p segment say.
BRYX_API std::vector<std::uint8_t> writeProperty(const MXFIndexTableSegment& segment,
                                                 const std::vector<MXFDeltaEntry>& entries);
BRYX_API std::vector<std::uint8_t> writeProperty(const MXFIndexTableSegment& segment,
                                                 const std::vector<MXFIndexEntry>& entries);

} // namespace mxfutil

} // namespace bryx

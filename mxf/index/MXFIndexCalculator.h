#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include <boost/optional.hpp>

#include "mxf/index/MXFIndexHandler.h"
#include "util/Api.h"

namespace bryx {

/// Answers where edit units stand in an essence container, from the segments of its index table (ST 377-1).
///
/// Segments may come in any order, repeated and overlapping; where two cover an edit unit, one with entries holds, then
/// the one that came first. Those with and without entries may follow one another. Edit units that no segment covers, or
/// whose place cannot be told, are not in the index.
///
/// Positions count edit units of the index. Those of entries are in stored order, in which the essence stands; where
/// pictures are reordered, storedPosition() leads from display order to it. Offsets count octets from the start of the
/// essence container; where all of it is one element, wrapped as a clip, files count those of entries from its key, and
/// edit units of one size from its value. Nothing that a file says makes an answer wrap around: what would is not in
/// the index.
///
/// An entry takes 11 octets of memory and 4 for each slice after the first. Copies share them.
class BRYX_API MXFIndexCalculator {
    struct Segment;

public:
    /// What makes segments those of one index table.
    struct Table {
        std::uint32_t indexSID;
        std::uint32_t bodySID; ///< of the essence container that is indexed
    };

    /// Collects segments, as the handler of an MXFIndexParser.
    class BRYX_API Collector : public MXFIndexHandler {
    public:
        ~Collector() override;
        void startIndex() override {}
        void endIndex() override {}

        /// Keeps what calculation needs of @p segment, unless it repeats one that came before: with the same start,
        /// duration, octets of an edit unit, SIDs and number of entries. Requires of its entries "valid sliceOffsets":
        /// as many as it says.
        void indexTableSegment(const MXFIndexTableSegment& segment) override;

        /// The index tables of which segments came, in the order of their first ones.
        const std::vector<Table>& tables() const noexcept { return tables_; }

    private:
        friend class MXFIndexCalculator;
        /// The segments by the SIDs of their tables.
        std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::shared_ptr<const Segment>>> segments_;
        std::vector<Table> tables_;
        /// Start, duration, octets of an edit unit, SIDs and number of entries of each.
        std::set<std::tuple<std::int64_t, std::int64_t, std::uint32_t, std::uint32_t, std::uint32_t, std::size_t>>
            known_;
    };

    /// Edit units that follow one another: from the first up to but without the end.
    struct Range {
        std::int64_t first;
        std::int64_t end; ///< endless if the segment goes on to the end of the essence
    };
    static constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();

    /// Replaces all segments by those of @p table that @p collector has. Segments that begin before 0 or beyond what can
    /// be counted are left out. The offsets of entries ascend in a sound file; where they do not, editUnitAt() is of no
    /// use.
    void setSegments(const Collector& collector, Table table);

    /// The same for @p segments: those of one index table, that of the first.
    void setSegments(const std::vector<MXFIndexTableSegment>& segments);

    /// The edit units that segments cover, in ascending order. Those among them whose place cannot be told are not in the
    /// index all the same, as contains() knows.
    std::vector<Range> ranges() const;

    /// Whether @p editUnit is in the index.
    bool contains(std::int64_t editUnit) const noexcept;

    // All that follow require "index segments set", and of an edit unit "found edit unit in index".

    /// Where @p editUnit begins.
    std::uint64_t streamOffset(std::int64_t editUnit) const;

    /// The octets of @p editUnit; none if the index does not tell, as for the last one with an entry.
    boost::optional<std::uint64_t> size(std::int64_t editUnit) const;

    /// The elements that the index knows in @p editUnit; at least 1.
    std::size_t elementCount(std::int64_t editUnit) const;

    /// Where an element of @p editUnit begins; none if it stands in a slice that the index does not tell. Fractions of edit
    /// units, which pos tables tell, are not looked at. Requires "valid element index".
    boost::optional<std::uint64_t> elementOffset(std::int64_t editUnit, std::size_t element) const;

    /// Whether the pictures in an element are stored in another order than they are displayed.
    bool isReordered(std::int64_t editUnit, std::size_t element) const;

    /// The edit unit at whose place the picture stands that is displayed at @p displayed; none if that is not in the
    /// index.
    boost::optional<std::int64_t> storedPosition(std::int64_t displayed) const;

    /// The edit unit from which decoding must start to get at the picture stored at @p editUnit; none if that is not in
    /// the index.
    boost::optional<std::int64_t> keyFrame(std::int64_t editUnit) const;

    /// The flags of the entry of @p editUnit (MXFIndexEntryFlags); of one that has no entry, that decoding may start
    /// there.
    std::uint8_t flags(std::int64_t editUnit) const;

    /// Sets what the entry of @p editUnit says beside its place: flags, temporal and key frame offset. One that has no
    /// entry sets that decoding may start there.
    void describe(std::int64_t editUnit, MXFIndexEntry& entry) const;

    /// The edit unit that the octet at @p streamOffset belongs to; none if that is not in the index. After the last entry
    /// of a segment, whose size need not be known, whatever follows belongs to it.
    boost::optional<std::int64_t> editUnitAt(std::uint64_t streamOffset) const;

private:
    /// Edit units that a segment covers and no earlier one does.
    struct Span {
        Range range;
        std::shared_ptr<const Segment> segment;
        std::uint64_t offset;         ///< of the first edit unit
        const std::uint64_t* offsets; ///< of all of them; null if there are no entries

        /// Where @p editUnit, one of the range, begins; too much for an offset if that cannot be told.
        std::uint64_t offsetOf(std::int64_t editUnit) const noexcept;
    };

    const Span* spanBefore(std::int64_t editUnit) const noexcept;
    const Span* find(std::int64_t editUnit) const noexcept;
    const Span& span(std::int64_t editUnit) const;
    static bool contains(const Span& span, std::int64_t editUnit) noexcept;
    static const MXFDeltaEntry* delta(const Span& span, std::size_t element);
    static std::vector<Span> cover(const std::vector<std::shared_ptr<const Segment>>& segments);
    void placeSpans(std::vector<Span> spans);

    bool isSet_ = false;
    std::vector<Span> spans_;            ///< in the order of their edit units
    std::vector<std::int64_t> firsts_;   ///< the first edit unit of each
    std::vector<std::size_t> byOffset_;  ///< the same spans, in the order of their offsets
    std::vector<std::uint64_t> offsets_; ///< of these
};

} // namespace bryx

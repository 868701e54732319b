#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "mxf/index/MXFIndexHandler.h"
#include "validation/internal/BRYXCrossValidator.h"

namespace bryx {

/// Checks index table segments, each by itself and all of a table together, and passes them on. MXFIndexParser has
/// checked before whether durations and counts fit the arrays.
class BRYXIndexValidator final : public MXFIndexHandler, public BRYXValidator, public BRYXIndexSummarizer {
public:
    /// @param next not owned, as @p cross
    BRYXIndexValidator(MXFIndexHandler& next, BRYXCrossValidator& cross, BRYXValidationMode::Enum mode);

    void startIndex() override;
    void endIndex() override;
    void indexTableSegment(const MXFIndexTableSegment& segment) override;

    const BRYXIndexSummaries& endFile() override;

private:
    /// What is kept of a segment. Its edit units end where @p end says, unless it goes on to the end of the essence.
    struct Segment {
        std::int64_t start;
        std::int64_t end;
        bool isEndless;
        std::uint64_t position;
        std::uint64_t digest; ///< of what it says
        std::uint64_t sum;    ///< of digests of what its entries say of their edit units
        std::uint32_t region; ///< the index region that it stands in
        bool hasEntries;
        // Of these.
        std::uint64_t firstOffset;
        std::uint64_t lastOffset;
    };
    /// The least of some values, and where it stands.
    struct Least {
        std::int64_t value = std::numeric_limits<std::int64_t>::max();
        std::uint64_t position = 0;

        void include(std::int64_t other, std::uint64_t otherPosition) {
            if (other < value) {
                value = other;
                position = otherPosition;
            }
        }
    };
    /// What is kept of a table, and what the entries of its segments ask of it.
    struct Table {
        Rational editRate;           ///< of the first segment
        bool hasInvalidRate = false; ///< reported
        std::vector<Segment> segments;
        bool isWhole = true; ///< whether all segments are kept
        // Where offsets lead to, as edit units; the greatest ones are held with their signs changed.
        Least leastKeyFrame;
        Least greatestKeyFrame; ///< of the offsets themselves
        Least leastTemporal;
        Least greatestTemporal;
    };

    void checkSegment(const MXFIndexTableSegment& segment);
    bool checkNumbers(const MXFIndexTableSegment& segment) const;
    void checkRate(const Rational& rate, Table& table) const;
    void checkDeltas(const MXFIndexTableSegment& segment) const;
    /// Whether an elementDelta leads out of its slice, or out of the edit unit.
    static bool leadsOut(const MXFIndexTableSegment& segment);
    void checkEntries(const MXFIndexTableSegment& segment, Table& table) const;
    void add(const MXFIndexTableSegment& segment, Table& table, BRYXIndexSummary& summary);
    void checkRepetitions(std::vector<Segment>& segments) const;
    void checkCoverage(const std::vector<Segment>& segments, bool isSparse) const;

    MXFIndexHandler& next_;
    BRYXCrossValidator& cross_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, Table> tables_;
    BRYXIndexSummaries summaries_;
    std::uint32_t region_ = 0;
    std::size_t kept_ = 0; ///< segments
};

} // namespace bryx

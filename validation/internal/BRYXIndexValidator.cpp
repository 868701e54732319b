#include "validation/internal/BRYXIndexValidator.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <tuple>
#include <unordered_map>

#include "validation/internal/BRYXDigest.h"
#include "validation/internal/BRYXRates.h"

namespace bryx {

namespace checks = BRYXIndexChecks;

namespace {

constexpr std::int64_t greatestPosition = std::numeric_limits<std::int64_t>::max();

/// The edit unit after the last one. Requires sound numbers.
std::int64_t endOf(const MXFIndexTableSegment& segment) {
    return segment.indexStartPosition > greatestPosition - segment.indexDuration
               ? greatestPosition
               : segment.indexStartPosition + segment.indexDuration;
}

bool isEndless(const MXFIndexTableSegment& segment) {
    return segment.indexDuration == 0 && segment.editUnitByteCount != 0;
}

/// What is kept of the values of a segment.
struct Digests {
    /// Of what must be the same wherever a segment is repeated, but for the edit rate, which is looked at by itself.
    std::uint64_t whole;
    /// Of what entries say of their edit units, whatever segment they stand in: a sum, which does not depend on how edit
    /// units are divided into segments.
    std::uint64_t sum;
};

Digests digestsOf(const MXFIndexTableSegment& segment) {
    BRYXDigest digest;
    digest.add(segment.editUnitByteCount);
    digest.add(segment.sliceCount);
    digest.add(segment.posTableCount);
    for (const MXFDeltaEntry& delta : segment.deltaEntryArray) {
        MXFDeltaEntry::fields(delta, [&](const char*, const auto& value) { digest.add(value); });
    }
    std::uint64_t sum = 0;
    std::int64_t editUnit = segment.indexStartPosition;
    for (const MXFIndexEntry& entry : segment.indexEntryArray) {
        BRYXDigest ofEntry;
        ofEntry.add(editUnit++);
        MXFIndexEntry::fields(entry, [&](const char*, const auto& value) { ofEntry.add(value); });
        sum += ofEntry.value();
        digest.add(ofEntry.value());
        for (const std::uint32_t offset : entry.sliceOffsets) {
            digest.add(offset);
        }
        for (const Rational& position : entry.posTable) {
            digest.add(position.numerator);
            digest.add(position.denominator);
        }
    }
    return {digest.value(), sum};
}

/// Finds whether sums over ranges of edit units contradict one another: the borders of ranges are joined to sets in which
/// the sum from one to any other is known.
class RangeSums {
public:
    /// @return whether the sum from @p first to @p end can be @p sum
    bool add(std::int64_t first, std::int64_t end, std::uint64_t sum) {
        const auto [firstRoot, toFirst] = find(first);
        const auto [endRoot, toEnd] = find(end);
        if (firstRoot == endRoot) {
            return toFirst + sum == toEnd;
        }
        borders_[endRoot] = {firstRoot, toFirst + sum - toEnd};
        return true;
    }

private:
    /// A border that comes before another in its set, and the sum from that to this one.
    struct Border {
        std::int64_t before;
        std::uint64_t sum;
    };

    /// The root of the set of @p border, and the sum from it.
    std::pair<std::int64_t, std::uint64_t> find(std::int64_t border) {
        std::vector<std::int64_t> way;
        borders_.emplace(border, Border{border, 0});
        for (; borders_[border].before != border; border = borders_[border].before) {
            way.push_back(border);
        }
        std::uint64_t sum = 0;
        for (auto below = way.rbegin(); below != way.rend(); ++below) {
            sum += borders_[*below].sum;
            borders_[*below] = {border, sum}; // shortens the way for the next time
        }
        return {border, sum};
    }

    std::unordered_map<std::int64_t, Border> borders_;
};

} // namespace

BRYXIndexValidator::BRYXIndexValidator(MXFIndexHandler& next, BRYXCrossValidator& cross, BRYXValidationMode::Enum mode)
    : BRYXValidator(mode), next_(next), cross_(cross) {
    cross_.setIndexSummarizer(*this);
}

void BRYXIndexValidator::startIndex() {
    ++region_;
    next_.startIndex();
}

void BRYXIndexValidator::endIndex() {
    next_.endIndex();
}

bool BRYXIndexValidator::checkNumbers(const MXFIndexTableSegment& segment) const {
    // Offsets in entries lead no further than 128 edit units away, and must not leave the numbers that there are.
    const auto entries = static_cast<std::int64_t>(segment.indexEntryArray.size());
    const bool isStart =
        segment.indexStartPosition >= 0 && segment.indexStartPosition < greatestPosition - entries - 128;
    if (!isStart) {
        report(checks::invalidIndexStartPosition, std::to_string(segment.indexStartPosition));
    }
    if (segment.indexDuration < 0) {
        report(checks::invalidIndexDuration, std::to_string(segment.indexDuration));
    }
    return isStart && segment.indexDuration >= 0;
}

void BRYXIndexValidator::checkDeltas(const MXFIndexTableSegment& segment) const {
    const auto& deltas = segment.deltaEntryArray;
    // Deltas count from the start of the slice. Elements follow one another, slice by slice; one may be empty.
    const auto before = [](const MXFDeltaEntry& a, const MXFDeltaEntry& b) {
        return std::pair(a.slice, a.elementDelta) < std::pair(b.slice, b.elementDelta);
    };
    if (!std::is_sorted(deltas.begin(), deltas.end(), before)) {
        report(checks::elementDeltaOrder);
    }
    const auto inSlice = [](const MXFDeltaEntry& a, const MXFDeltaEntry& b) { return a.slice < b.slice; };
    const auto last = std::max_element(deltas.begin(), deltas.end(), inSlice);
    if (last != deltas.end() && last->slice < segment.sliceCount) {
        report(checks::inconsistentSliceCount, std::to_string(segment.sliceCount));
    }
    if (leadsOut(segment)) {
        report(checks::elementDeltaBeyondEditUnit);
    }
}

bool BRYXIndexValidator::leadsOut(const MXFIndexTableSegment& segment) {
    // An element that is empty, or missing, may stand at the end. Slices without elements do not count.
    std::array<std::uint32_t, 256> greatest{};
    std::size_t last = 0;
    for (const MXFDeltaEntry& delta : segment.deltaEntryArray) {
        greatest[delta.slice] = std::max(greatest[delta.slice], delta.elementDelta);
        last = std::max<std::size_t>(last, delta.slice);
    }
    if (segment.editUnitByteCount != 0) {
        return greatest[0] > segment.editUnitByteCount;
    }
    const auto& entries = segment.indexEntryArray;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto& offsets = entries[i].sliceOffsets;
        std::uint64_t start = 0;
        const auto isOut = [&](std::size_t slice, std::uint64_t end) {
            return start <= end && greatest[slice] > end - start;
        };
        for (std::size_t slice = 0; slice < std::min(last, offsets.size()); ++slice) {
            if (isOut(slice, offsets[slice])) {
                return true;
            }
            start = offsets[slice];
        }
        if (i + 1 < entries.size() && entries[i + 1].streamOffset >= entries[i].streamOffset &&
            isOut(last, entries[i + 1].streamOffset - entries[i].streamOffset)) {
            return true;
        }
    }
    return false;
}

void BRYXIndexValidator::checkEntries(const MXFIndexTableSegment& segment, Table& table) const {
    const auto& entries = segment.indexEntryArray;
    std::int64_t leastKeyFrame = greatestPosition;
    std::int64_t greatestKeyFrame = greatestPosition;
    std::int64_t leastTemporal = greatestPosition;
    std::int64_t greatestTemporal = greatestPosition;
    bool streamOrder = true;
    bool sliceOrder = true;
    bool keyFrames = true;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const MXFIndexEntry& entry = entries[i];
        const bool isLast = i + 1 == entries.size();
        streamOrder = streamOrder && (isLast || entry.streamOffset <= entries[i + 1].streamOffset);
        std::uint32_t before = 0;
        for (const std::uint32_t offset : entry.sliceOffsets) {
            sliceOrder = sliceOrder && offset >= before;
            before = offset;
        }
        sliceOrder = sliceOrder && (isLast || entries[i + 1].streamOffset < entry.streamOffset ||
                                    entries[i + 1].streamOffset - entry.streamOffset >= before);

        const auto editUnit = segment.indexStartPosition + static_cast<std::int64_t>(i);
        leastKeyFrame = std::min<std::int64_t>(leastKeyFrame, editUnit + entry.keyFrameOffset);
        greatestKeyFrame = std::min<std::int64_t>(greatestKeyFrame, -entry.keyFrameOffset);
        leastTemporal = std::min<std::int64_t>(leastTemporal, editUnit + entry.temporalOffset);
        greatestTemporal = std::min<std::int64_t>(greatestTemporal, -(editUnit + entry.temporalOffset));
        const auto back = static_cast<std::size_t>(-std::min<int>(entry.keyFrameOffset, 0));
        keyFrames = keyFrames && (back > i || entries[i - back].keyFrameOffset == 0);
    }
    const std::uint64_t here = position();
    table.leastKeyFrame.include(leastKeyFrame, here);
    table.greatestKeyFrame.include(greatestKeyFrame, here);
    table.leastTemporal.include(leastTemporal, here);
    table.greatestTemporal.include(greatestTemporal, here);
    if (!streamOrder) {
        report(checks::streamOffsetOrder);
    }
    if (!sliceOrder) {
        report(checks::sliceOffsetOrder);
    }
    if (!keyFrames) {
        report(checks::noKeyFrame);
    }
}

void BRYXIndexValidator::add(const MXFIndexTableSegment& segment, Table& table, BRYXIndexSummary& summary) {
    const std::int64_t end = endOf(segment);
    const bool endless = isEndless(segment);
    const bool isFirst = table.segments.empty();
    if (kept_ == maxKept) {
        table.isWhole = summary.isWhole = false;
        return;
    }
    ++kept_;
    const auto& entries = segment.indexEntryArray;
    const Digests digests = digestsOf(segment);
    table.segments.push_back({segment.indexStartPosition, end, endless, position(), digests.whole, digests.sum, region_,
                              !entries.empty(), entries.empty() ? 0 : entries.front().streamOffset,
                              entries.empty() ? 0 : entries.back().streamOffset});
    if (isFirst) {
        table.editRate = segment.indexEditRate;
        summary.position = position();
        summary.editRate = segment.indexEditRate;
        summary.start = segment.indexStartPosition;
    }
    summary.start = std::min(summary.start, segment.indexStartPosition);
    summary.end = std::max(summary.end, end);
    summary.isEndless = summary.isEndless || endless;
    std::uint64_t reach = 0;
    if (segment.editUnitByteCount == 0) {
        for (const MXFIndexEntry& entry : entries) {
            reach = std::max(reach, entry.streamOffset == std::numeric_limits<std::uint64_t>::max()
                                        ? entry.streamOffset
                                        : entry.streamOffset + 1);
        }
    } else if (!endless) {
        const auto units = static_cast<std::uint64_t>(end);
        reach = units > std::numeric_limits<std::uint64_t>::max() / segment.editUnitByteCount
                    ? std::numeric_limits<std::uint64_t>::max()
                    : units * segment.editUnitByteCount;
    }
    if (reach > summary.reach) {
        summary.reach = reach;
        summary.reachPosition = position();
    }
}

void BRYXIndexValidator::checkRate(const Rational& rate, Table& table) const {
    if (!isRate(rate) && !table.hasInvalidRate) {
        table.hasInvalidRate = true;
        report(checks::invalidIndexEditRate, toString(rate));
    }
    if (!table.segments.empty() && !isSameRate(rate, table.editRate)) {
        report(checks::inconsistentIndexEditRate, toString(rate));
    }
}

void BRYXIndexValidator::checkSegment(const MXFIndexTableSegment& segment) {
    checkDeltas(segment);
    const std::pair sids(segment.indexSID, segment.bodySID);
    const bool areSound = checkNumbers(segment);
    if (tables_.size() == maxKept && tables_.count(sids) == 0) {
        return;
    }
    Table& table = tables_[sids];
    checkRate(segment.indexEditRate, table);
    if (areSound) {
        checkEntries(segment, table);
        add(segment, table, summaries_[sids]);
    }
}

void BRYXIndexValidator::indexTableSegment(const MXFIndexTableSegment& segment) {
    cross_.segment(segment);
    // Some makers write one entry more than there are edit units, which marks the end. That there are more has been
    // reported, and they tell nothing.
    const auto units = static_cast<std::uint64_t>(std::max<std::int64_t>(segment.indexDuration, 0));
    if (segment.indexEntryArray.size() > units) {
        MXFIndexTableSegment within = segment;
        within.indexEntryArray.resize(units);
        checkSegment(within);
    } else {
        checkSegment(segment);
    }
    next_.indexTableSegment(segment);
}

void BRYXIndexValidator::checkRepetitions(std::vector<Segment>& segments) const {
    const auto place = [](const Segment& s) { return std::tuple(s.start, s.end, s.isEndless); };
    std::stable_sort(segments.begin(), segments.end(),
                     [&](const Segment& a, const Segment& b) { return place(a) < place(b); });
    RangeSums sums;
    const Segment* first = nullptr;
    for (const Segment& segment : segments) {
        const bool isFirst = first == nullptr || place(segment) != place(*first);
        // A segment may also repeat several others, or a part of one.
        const bool fits = isFirst ? !segment.hasEntries || sums.add(segment.start, segment.end, segment.sum)
                                  : segment.digest == first->digest;
        if (!fits) {
            reportAt(segment.position, checks::inconsistentRepetition);
        }
        first = isFirst ? &segment : first;
    }
}

void BRYXIndexValidator::checkCoverage(const std::vector<Segment>& segments, bool isSparse) const {
    // A region has its segments once; one that follows may repeat them, and divide them in another way.
    std::map<std::uint32_t, const Segment*> before;
    const Segment* farthest = &segments.front();
    if (farthest->start > 0) {
        reportAt(farthest->position, checks::lateStart, std::to_string(farthest->start));
    }
    for (const Segment& segment : segments) {
        const Segment*& last = before[segment.region];
        if (last != nullptr && (last->isEndless || segment.start < last->end) && segment.digest != last->digest) {
            reportAt(segment.position, checks::overlap, std::to_string(segment.start));
        }
        if (last == nullptr || last->isEndless < segment.isEndless || last->end < segment.end) {
            last = &segment;
        }
        if (!farthest->isEndless && !isSparse && segment.start > farthest->end) {
            reportAt(segment.position, checks::gap,
                     std::to_string(farthest->end) + " to " + std::to_string(segment.start));
        }
        if (segment.hasEntries && farthest->hasEntries && segment.start >= farthest->end &&
            segment.firstOffset < farthest->lastOffset) {
            reportAt(segment.position, checks::streamOffsetOrder);
        }
        if (!farthest->isEndless && (segment.isEndless || segment.end > farthest->end)) {
            farthest = &segment;
        }
    }
}

const BRYXIndexSummaries& BRYXIndexValidator::endFile() {
    for (auto& [sids, table] : tables_) {
        if (table.segments.empty() || !table.isWhole) {
            continue;
        }
        const BRYXIndexSummary& summary = summaries_[sids];
        checkRepetitions(table.segments);
        checkCoverage(table.segments, cross_.isSparse(sids.first));
        // Key frames come before what needs them, so that their offsets are 0 or less.
        if (table.leastKeyFrame.value < summary.start) {
            reportAt(table.leastKeyFrame.position, checks::keyFrameOutside, std::to_string(table.leastKeyFrame.value));
        } else if (table.greatestKeyFrame.value < 0) {
            reportAt(table.greatestKeyFrame.position, checks::keyFrameOutside,
                     "+" + std::to_string(-table.greatestKeyFrame.value));
        }
        if (table.leastTemporal.value < summary.start) {
            reportAt(table.leastTemporal.position, checks::temporalOffsetOutside,
                     std::to_string(table.leastTemporal.value));
        } else if (-table.greatestTemporal.value >= summary.end && !summary.isEndless) {
            reportAt(table.greatestTemporal.position, checks::temporalOffsetOutside,
                     std::to_string(-table.greatestTemporal.value));
        }
    }
    return summaries_;
}

} // namespace bryx

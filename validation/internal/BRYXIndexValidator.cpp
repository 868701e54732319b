#include "validation/internal/BRYXIndexValidator.h"

#include <algorithm>
#include <limits>
#include <string>
#include <tuple>

#include "validation/internal/BRYXDigest.h"
#include "validation/internal/BRYXRates.h"

namespace checks = BRYXIndexChecks;

namespace {

constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();

/// The edit unit that comes @p further behind @p editUnit, which is not negative; the last one there is if that would be
/// beyond.
std::int64_t after(std::int64_t editUnit, std::int64_t further) {
    return further > greatest - editUnit ? greatest : editUnit + further;
}

/// The edit unit after the last one. Requires sound numbers.
std::int64_t endOf(const MXFIndexTableSegment& segment) {
    return after(segment.indexStartPosition, segment.indexDuration);
}

bool isEndless(const MXFIndexTableSegment& segment) {
    return segment.indexDuration == 0 && segment.editUnitByteCount != 0;
}

/// Of what must be the same wherever a segment is repeated, but for the edit rate, which is looked at by itself.
std::uint64_t digestOf(const MXFIndexTableSegment& segment) {
    BRYXDigest digest;
    const auto add = [&](const char*, const auto& value) { digest.add(value); };
    digest.add(segment.editUnitByteCount);
    digest.add(segment.sliceCount);
    digest.add(segment.posTableCount);
    for (const MXFDeltaEntry& delta : segment.deltaEntryArray) {
        MXFDeltaEntry::fields(delta, add);
    }
    for (const MXFIndexEntry& entry : segment.indexEntryArray) {
        MXFIndexEntry::fields(entry, add);
        for (const std::uint32_t offset : entry.sliceOffsets) {
            digest.add(offset);
        }
        for (const Rational& position : entry.posTable) {
            digest.add(position.numerator);
            digest.add(position.denominator);
        }
    }
    return digest.value();
}

} // namespace

BRYXIndexValidator::BRYXIndexValidator(MXFIndexHandler& next, BRYXCrossValidator& cross, BRYXValidationMode::Enum mode)
    : BRYXValidator(mode), next_(next), cross_(cross) {
    cross_.setIndexValidator(*this);
}

void BRYXIndexValidator::startIndex() {
    ++region_;
    next_.startIndex();
}

void BRYXIndexValidator::endIndex() {
    next_.endIndex();
}

bool BRYXIndexValidator::checkNumbers(const MXFIndexTableSegment& segment) const {
    if (!isRate(segment.indexEditRate)) {
        report(checks::invalidIndexEditRate, toString(segment.indexEditRate));
    }
    if (segment.indexStartPosition < 0) {
        report(checks::invalidIndexStartPosition, std::to_string(segment.indexStartPosition));
    }
    if (segment.indexDuration < 0) {
        report(checks::invalidIndexDuration, std::to_string(segment.indexDuration));
    }
    return segment.indexStartPosition >= 0 && segment.indexDuration >= 0;
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
    if (segment.editUnitByteCount != 0 && std::any_of(deltas.begin(), deltas.end(), [&](const MXFDeltaEntry& delta) {
            return delta.elementDelta >= segment.editUnitByteCount;
        })) {
        report(checks::elementDeltaBeyondEditUnit);
    }
}

void BRYXIndexValidator::checkEntries(const MXFIndexTableSegment& segment, Table& table) const {
    const auto& entries = segment.indexEntryArray;
    const std::uint64_t here = position();
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
        sliceOrder =
            sliceOrder && (isLast || !streamOrder || entries[i + 1].streamOffset - entry.streamOffset >= before);

        const std::int64_t editUnit = after(segment.indexStartPosition, static_cast<std::int64_t>(i));
        const std::int64_t shown = after(editUnit, entry.temporalOffset);
        table.leastKeyFrame.include(after(editUnit, entry.keyFrameOffset), here);
        table.greatestKeyFrame.include(-entry.keyFrameOffset, here);
        table.leastTemporal.include(shown, here);
        table.greatestTemporal.include(-shown, here);
        const auto back = static_cast<std::size_t>(-std::min<int>(entry.keyFrameOffset, 0));
        keyFrames = keyFrames && (back > i || entries[i - back].keyFrameOffset == 0);
    }
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
        table.isWhole = false;
        return;
    }
    ++kept_;
    table.segments.push_back({segment.indexStartPosition, end, endless, position(), digestOf(segment), region_});
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
        for (const MXFIndexEntry& entry : segment.indexEntryArray) {
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

void BRYXIndexValidator::indexTableSegment(const MXFIndexTableSegment& segment) {
    cross_.segment(segment);
    checkDeltas(segment);
    if (checkNumbers(segment) &&
        (tables_.size() < maxKept || tables_.count({segment.indexSID, segment.bodySID}) != 0)) {
        Table& table = tables_[{segment.indexSID, segment.bodySID}];
        if (!table.segments.empty() && segment.indexEditRate != table.editRate) {
            report(checks::inconsistentIndexEditRate, toString(segment.indexEditRate));
        }
        checkEntries(segment, table);
        add(segment, table, summaries_[{segment.indexSID, segment.bodySID}]);
    }
    next_.indexTableSegment(segment);
}

void BRYXIndexValidator::checkRepetitions(std::vector<Segment>& segments) const {
    const auto place = [](const Segment& s) { return std::tuple(s.start, s.end, s.isEndless); };
    std::stable_sort(segments.begin(), segments.end(),
                     [&](const Segment& a, const Segment& b) { return place(a) < place(b); });
    const Segment* first = nullptr;
    for (const Segment& segment : segments) {
        if (first == nullptr || place(segment) != place(*first)) {
            first = &segment;
        } else if (segment.digest != first->digest) {
            reportAt(segment.position, checks::inconsistentRepetition);
        }
    }
}

void BRYXIndexValidator::checkCoverage(const std::vector<Segment>& segments) const {
    // A region has its segments once; one that follows may repeat them, and divide them in another way.
    std::map<std::uint32_t, const Segment*> before;
    std::int64_t covered = segments.front().start;
    bool isEndless = false;
    if (covered > 0) {
        reportAt(segments.front().position, checks::lateStart, std::to_string(covered));
    }
    for (const Segment& segment : segments) {
        const Segment*& last = before[segment.region];
        if (last != nullptr && (last->isEndless || segment.start < last->end) && segment.digest != last->digest) {
            reportAt(segment.position, checks::overlap, std::to_string(segment.start));
        }
        if (last == nullptr || last->isEndless < segment.isEndless || last->end < segment.end) {
            last = &segment;
        }
        if (!isEndless && segment.start > covered) {
            reportAt(segment.position, checks::gap, std::to_string(covered) + " to " + std::to_string(segment.start));
        }
        covered = std::max(covered, segment.end);
        isEndless = isEndless || segment.isEndless;
    }
}

const BRYXIndexSummaries& BRYXIndexValidator::endFile() {
    for (auto& [sids, table] : tables_) {
        if (table.segments.empty() || !table.isWhole) {
            continue;
        }
        const BRYXIndexSummary& summary = summaries_[sids];
        checkRepetitions(table.segments);
        checkCoverage(table.segments);
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

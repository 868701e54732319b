#include "mxf/structure/MXFIndexCalculator.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "util/assertion_failure.h"

using util::require;

namespace {

/// More than a temporal or key frame offset.
constexpr std::int64_t maxEntryOffset = 256;

constexpr std::uint64_t maxOffset = std::numeric_limits<std::int64_t>::max();

/// The edit units that @p segment says it covers; none if the range is empty.
MXFIndexCalculator::Range rangeOf(const MXFIndexTableSegment& segment) {
    constexpr MXFIndexCalculator::Range none{0, 0};
    const std::int64_t first = segment.indexStartPosition;
    if (first < 0) {
        return none;
    }
    const std::int64_t most = MXFIndexCalculator::endless - first;
    if (segment.editUnitByteCount != 0) {
        return {first, segment.indexDuration <= 0 ? MXFIndexCalculator::endless
                                                  : first + std::min(segment.indexDuration, most)};
    }
    // Entries beyond the duration belong to no edit unit of the segment.
    auto entries = static_cast<std::int64_t>(segment.indexEntryArray.size());
    if (segment.indexDuration > 0) {
        entries = std::min(entries, segment.indexDuration);
    }
    return entries > most - maxEntryOffset ? none : MXFIndexCalculator::Range{first, first + entries};
}

/// @p base and @p count times @p size; none if that is too much for an offset.
boost::optional<std::uint64_t> advance(std::uint64_t base, std::uint64_t count, std::uint64_t size) {
    if (base > maxOffset || (size != 0 && count > (maxOffset - base) / size)) {
        return boost::none;
    }
    return base + count * size;
}

} // namespace

MXFIndexCalculator::Collector::~Collector() = default;

void MXFIndexCalculator::Collector::indexTableSegment(const MXFIndexTableSegment& segment) {
    if (indexSID_ != 0 && segment.indexSID != indexSID_) {
        return;
    }
    const auto identity = std::make_tuple(segment.indexStartPosition, segment.indexDuration, segment.editUnitByteCount,
                                          segment.indexSID, segment.bodySID, segment.indexEntryArray.size());
    if (known_.insert(identity).second) {
        segments_.push_back(segment);
    }
}

void MXFIndexCalculator::setSegments(std::vector<MXFIndexTableSegment> segments) {
    segments_ = std::move(segments);
    const auto table = [](const MXFIndexTableSegment& segment) {
        return std::make_pair(segment.indexSID, segment.bodySID);
    };
    segments_.erase(std::remove_if(segments_.begin(), segments_.end(),
                                   [&, first = segments_.empty() ? std::make_pair(0U, 0U) : table(segments_.front())](
                                       const MXFIndexTableSegment& segment) { return table(segment) != first; }),
                    segments_.end());
    // Entries know better than a calculation.
    std::stable_partition(segments_.begin(), segments_.end(),
                          [](const MXFIndexTableSegment& segment) { return segment.editUnitByteCount == 0; });
    spans_ = cover();
    placeSpans();
}

std::vector<MXFIndexCalculator::Span> MXFIndexCalculator::cover() const {
    std::vector<Span> spans;
    // What is covered so far, as ranges that do not touch one another: the ends by the first edit units. Each segment
    // fills the gaps that it reaches, and makes one range of all that it touches.
    std::map<std::int64_t, std::int64_t> covered;
    for (std::size_t i = 0; i < segments_.size(); ++i) {
        const Range range = rangeOf(segments_[i]);
        if (range.first >= range.end) {
            continue;
        }
        std::int64_t first = range.first;
        std::int64_t end = range.end;
        std::int64_t gap = range.first;
        auto next = covered.upper_bound(range.first);
        if (next != covered.begin() && std::prev(next)->second >= range.first) {
            --next;
        }
        while (next != covered.end() && next->first <= range.end) {
            if (gap < next->first) {
                spans.push_back({{gap, next->first}, i, 0});
            }
            gap = std::max(gap, next->second);
            first = std::min(first, next->first);
            end = std::max(end, next->second);
            next = covered.erase(next);
        }
        if (gap < range.end) {
            spans.push_back({{gap, range.end}, i, 0});
        }
        covered.emplace(first, end);
    }
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.range.first < b.range.first; });
    return spans;
}

void MXFIndexCalculator::placeSpans() {
    std::vector<Span> placed;
    for (Span span : spans_) {
        const MXFIndexTableSegment& segment = segments_[span.segment];
        boost::optional<std::uint64_t> offset;
        if (segment.editUnitByteCount == 0) {
            for (std::int64_t unit = span.range.first; unit < span.range.end && !offset; ++unit) {
                const std::uint64_t known = entry(span, unit)->streamOffset;
                offset = known <= maxOffset ? boost::optional<std::uint64_t>(known) : boost::none;
            }
        } else if (!placed.empty() && placed.back().range.end == span.range.first) {
            // It goes on where the edit unit before ends, if that is known.
            const Span& before = placed.back();
            const std::int64_t last = before.range.end - 1;
            const std::uint64_t octets = sizeIn(before, last).value_or(0);
            offset = octets == 0 ? boost::none : advance(offsetIn(before, last), 1, octets);
        } else if (std::all_of(placed.begin(), placed.end(), [&](const Span& before) {
                       return segments_[before.segment].editUnitByteCount == segment.editUnitByteCount;
                   })) {
            offset = advance(0, static_cast<std::uint64_t>(span.range.first), segment.editUnitByteCount);
        }
        if (!offset || *offset > maxOffset) {
            continue;
        }
        span.offset = *offset;
        if (segment.editUnitByteCount != 0) {
            const auto most = static_cast<std::int64_t>((maxOffset - span.offset) / segment.editUnitByteCount);
            if (most < span.range.end - span.range.first && span.range.end != endless) {
                span.range.end = span.range.first + most;
            }
        }
        placed.push_back(span);
    }
    spans_ = std::move(placed);
    byOffset_.resize(spans_.size());
    for (std::size_t i = 0; i < spans_.size(); ++i) {
        byOffset_[i] = i;
    }
    std::stable_sort(byOffset_.begin(), byOffset_.end(),
                     [&](std::size_t a, std::size_t b) { return spans_[a].offset < spans_[b].offset; });
}

std::vector<MXFIndexCalculator::Range> MXFIndexCalculator::ranges() const {
    std::vector<Range> result;
    for (const Span& span : spans_) {
        if (!result.empty() && result.back().end == span.range.first) {
            result.back().end = span.range.end;
        } else {
            result.push_back(span.range);
        }
    }
    return result;
}

const MXFIndexCalculator::Span* MXFIndexCalculator::find(std::int64_t editUnit) const noexcept {
    const auto after = std::upper_bound(spans_.begin(), spans_.end(), editUnit,
                                        [](std::int64_t value, const Span& span) { return value < span.range.first; });
    if (after == spans_.begin()) {
        return nullptr;
    }
    const Span& span = *std::prev(after);
    if (editUnit >= span.range.end) {
        return nullptr;
    }
    const MXFIndexEntry* const own = entry(span, editUnit);
    const std::uint64_t size = segments_[span.segment].editUnitByteCount;
    const bool isCountable =
        own != nullptr
            ? own->streamOffset <= maxOffset
            : advance(span.offset, static_cast<std::uint64_t>(editUnit - span.range.first), size).has_value();
    return isCountable ? &span : nullptr;
}

bool MXFIndexCalculator::contains(std::int64_t editUnit) const noexcept {
    return find(editUnit) != nullptr;
}

const MXFIndexCalculator::Span& MXFIndexCalculator::span(std::int64_t editUnit) const {
    require(!segments_.empty(), "index segments set");
    const Span* const found = find(editUnit);
    require(found != nullptr, "found edit unit in index");
    return *found;
}

const MXFIndexEntry* MXFIndexCalculator::entry(const Span& span, std::int64_t editUnit) const {
    const MXFIndexTableSegment& segment = segments_[span.segment];
    if (segment.editUnitByteCount != 0) {
        return nullptr;
    }
    return &segment.indexEntryArray[static_cast<std::size_t>(editUnit - segment.indexStartPosition)];
}

std::uint64_t MXFIndexCalculator::offsetIn(const Span& span, std::int64_t editUnit) const {
    if (const MXFIndexEntry* const found = entry(span, editUnit)) {
        return found->streamOffset;
    }
    return span.offset +
           static_cast<std::uint64_t>(editUnit - span.range.first) * segments_[span.segment].editUnitByteCount;
}

std::uint64_t MXFIndexCalculator::streamOffset(std::int64_t editUnit) const {
    return offsetIn(span(editUnit), editUnit);
}

boost::optional<std::uint64_t> MXFIndexCalculator::sizeIn(const Span& span, std::int64_t editUnit) const {
    const MXFIndexTableSegment& segment = segments_[span.segment];
    if (segment.editUnitByteCount != 0) {
        return std::uint64_t{segment.editUnitByteCount};
    }
    const auto next = static_cast<std::size_t>(editUnit - segment.indexStartPosition) + 1;
    if (next == segment.indexEntryArray.size()) {
        return segment.vbeByteCount;
    }
    const std::uint64_t start = offsetIn(span, editUnit);
    const std::uint64_t end = segment.indexEntryArray[next].streamOffset;
    return end > start && end <= maxOffset ? boost::optional<std::uint64_t>(end - start) : boost::none;
}

boost::optional<std::uint64_t> MXFIndexCalculator::size(std::int64_t editUnit) const {
    const Span& own = span(editUnit);
    if (const auto known = sizeIn(own, editUnit)) {
        return known;
    }
    const Span* const next = find(editUnit + 1);
    const std::uint64_t start = offsetIn(own, editUnit);
    const std::uint64_t end = next == nullptr ? 0 : offsetIn(*next, editUnit + 1);
    return end > start ? boost::optional<std::uint64_t>(end - start) : boost::none;
}

const MXFDeltaEntry* MXFIndexCalculator::delta(std::int64_t editUnit, std::size_t element) const {
    const std::vector<MXFDeltaEntry>& entries = segments_[span(editUnit).segment].deltaEntryArray;
    require(element < elementCount(editUnit), "valid element index");
    return entries.empty() ? nullptr : &entries[element];
}

std::size_t MXFIndexCalculator::elementCount(std::int64_t editUnit) const {
    return std::max<std::size_t>(1, segments_[span(editUnit).segment].deltaEntryArray.size());
}

boost::optional<std::uint64_t> MXFIndexCalculator::elementOffset(std::int64_t editUnit, std::size_t element) const {
    const MXFDeltaEntry* const found = delta(editUnit, element);
    const Span& own = span(editUnit);
    const std::uint64_t offset = offsetIn(own, editUnit);
    if (found == nullptr) {
        return offset;
    }
    if (found->slice == 0) {
        return offset + found->elementDelta;
    }
    const MXFIndexEntry* const slices = entry(own, editUnit);
    if (slices == nullptr || found->slice > slices->sliceOffsets.size()) {
        return boost::none;
    }
    return offset + slices->sliceOffsets[found->slice - 1U] + found->elementDelta;
}

bool MXFIndexCalculator::isReordered(std::int64_t editUnit, std::size_t element) const {
    const MXFDeltaEntry* const found = delta(editUnit, element);
    return found != nullptr && found->posTableIndex < 0;
}

boost::optional<std::int64_t> MXFIndexCalculator::storedPosition(std::int64_t displayed) const {
    const MXFIndexEntry* const found = entry(span(displayed), displayed);
    const std::int64_t stored = found == nullptr ? displayed : displayed + found->temporalOffset;
    return contains(stored) ? boost::optional<std::int64_t>(stored) : boost::none;
}

boost::optional<std::int64_t> MXFIndexCalculator::keyFrame(std::int64_t editUnit) const {
    const MXFIndexEntry* const found = entry(span(editUnit), editUnit);
    const std::int64_t first = found == nullptr ? editUnit : editUnit + found->keyFrameOffset;
    return first <= editUnit && contains(first) ? boost::optional<std::int64_t>(first) : boost::none;
}

std::uint8_t MXFIndexCalculator::flags(std::int64_t editUnit) const {
    const MXFIndexEntry* const found = entry(span(editUnit), editUnit);
    return found == nullptr ? MXFIndexEntryFlags::randomAccess : found->flags;
}

boost::optional<std::int64_t> MXFIndexCalculator::editUnitAt(std::uint64_t streamOffset) const {
    require(!segments_.empty(), "index segments set");
    const auto after =
        std::upper_bound(byOffset_.begin(), byOffset_.end(), streamOffset,
                         [&](std::uint64_t value, std::size_t span) { return value < spans_[span].offset; });
    if (after == byOffset_.begin()) {
        return boost::none;
    }
    const Span& own = spans_[*std::prev(after)];
    const MXFIndexTableSegment& segment = segments_[own.segment];
    if (segment.editUnitByteCount != 0) {
        const auto count =
            static_cast<std::int64_t>(std::min(streamOffset - own.offset, maxOffset) / segment.editUnitByteCount);
        const std::int64_t unit = count < own.range.end - own.range.first ? own.range.first + count : own.range.end;
        return unit < own.range.end ? boost::optional<std::int64_t>(unit) : boost::none;
    }
    const auto* const entries = segment.indexEntryArray.data();
    const auto* const first = entries + (own.range.first - segment.indexStartPosition);
    const auto* const end = entries + (own.range.end - segment.indexStartPosition);
    const auto* const next =
        std::upper_bound(first, end, streamOffset,
                         [](std::uint64_t value, const MXFIndexEntry& entry) { return value < entry.streamOffset; });
    if (next == first) {
        return boost::none;
    }
    const std::int64_t unit = own.range.first + (next - first) - 1;
    const auto octets = sizeIn(own, unit);
    return octets && streamOffset - offsetIn(own, unit) >= *octets ? boost::none : boost::optional<std::int64_t>(unit);
}

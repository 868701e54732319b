#include "mxf/index/MXFIndexCalculator.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "util/assertion_failure.h"

namespace bryx {

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

/// How far @p value is on the way from @p low, which is no more than it, to @p high; less than 1.
template <class Value>
double share(Value value, Value low, Value high) {
    return value < high ? static_cast<double>(value - low) / static_cast<double>(high - low) : 0;
}

/// The first of the ascending values from @p first up to but without @p end that is greater than @p value. The search
/// starts at @p share of the way, where the caller has reason to guess it, and takes logarithmic time in the distance
/// from there.
template <class Value>
const Value* upperBound(const Value* first, const Value* end, Value value, double share) {
    const Value* const guess = first + static_cast<std::ptrdiff_t>(share * static_cast<double>(end - first));
    std::ptrdiff_t reach = 4;
    const Value* low = guess - std::min(reach, guess - first);
    const Value* high = guess + std::min(reach, end - guess);
    while (low != first && *low > value) {
        high = low;
        low -= std::min(reach *= 2, low - first);
    }
    while (high != end && *high <= value) {
        low = high;
        high += std::min(reach *= 2, end - high);
    }
    // Between them by halves; not with std::upper_bound(), whose branches nobody can foretell.
    for (std::ptrdiff_t count = high - low; count > 0;) {
        const std::ptrdiff_t half = (count + 1) / 2;
        low += half * std::ptrdiff_t{low[half - 1] <= value};
        count -= half;
    }
    return low;
}

/// The same for values that are about equally far apart.
template <class Value>
const Value* upperBound(const std::vector<Value>& values, Value value) {
    const Value* const first = values.data();
    if (values.empty() || value < *first) {
        return first;
    }
    return upperBound(first, first + values.size(), value, share(value, *first, values.back()));
}

} // namespace

/// What calculation needs of a segment, its entries packed.
struct MXFIndexCalculator::Segment {
    /// What an entry tells beside its offset.
    struct Marks {
        std::int8_t temporalOffset;
        std::int8_t keyFrameOffset;
        std::uint8_t flags;
    };

    Range range;        ///< what the segment says it covers
    std::int64_t start; ///< the edit unit of the first entry
    std::uint32_t editUnitByteCount;
    boost::optional<std::uint64_t> vbeByteCount;
    std::vector<MXFDeltaEntry> deltas;
    std::size_t slices; ///< after the first
    std::vector<std::uint64_t> offsets;
    std::vector<Marks> marks;
    std::vector<std::uint32_t> sliceOffsets; ///< of all entries, one after the other

    explicit Segment(const MXFIndexTableSegment& from)
        : range(rangeOf(from)), start(from.indexStartPosition), editUnitByteCount(from.editUnitByteCount),
          vbeByteCount(from.vbeByteCount), deltas(from.deltaEntryArray), slices(from.sliceCount) {
        if (!hasEntries()) {
            return;
        }
        offsets.reserve(from.indexEntryArray.size());
        marks.reserve(from.indexEntryArray.size());
        sliceOffsets.reserve(from.indexEntryArray.size() * slices);
        for (const MXFIndexEntry& entry : from.indexEntryArray) {
            require(entry.sliceOffsets.size() == slices, "valid sliceOffsets");
            offsets.push_back(entry.streamOffset);
            marks.push_back({entry.temporalOffset, entry.keyFrameOffset, entry.flags});
            sliceOffsets.insert(sliceOffsets.end(), entry.sliceOffsets.begin(), entry.sliceOffsets.end());
        }
    }

    bool hasEntries() const noexcept { return editUnitByteCount == 0; }
    std::size_t indexOf(std::int64_t editUnit) const noexcept { return static_cast<std::size_t>(editUnit - start); }
    const Marks* marksOf(std::int64_t editUnit) const noexcept {
        return hasEntries() ? &marks[indexOf(editUnit)] : nullptr;
    }

    /// The octets of @p editUnit; none if the segment does not tell.
    boost::optional<std::uint64_t> sizeOf(std::int64_t editUnit) const noexcept {
        if (!hasEntries()) {
            return std::uint64_t{editUnitByteCount};
        }
        const std::size_t index = indexOf(editUnit);
        if (index + 1 == offsets.size()) {
            return vbeByteCount.value_or(0) != 0 && advance(offsets[index], 1, *vbeByteCount) ? vbeByteCount
                                                                                              : boost::none;
        }
        const std::uint64_t end = offsets[index + 1];
        return end > offsets[index] && end <= maxOffset ? boost::optional<std::uint64_t>(end - offsets[index])
                                                        : boost::none;
    }
};

std::uint64_t MXFIndexCalculator::Span::offsetOf(std::int64_t editUnit) const noexcept {
    const auto index = static_cast<std::uint64_t>(editUnit - range.first);
    return offsets != nullptr ? offsets[index]
                              : advance(offset, index, segment->editUnitByteCount).value_or(maxOffset + 1);
}

MXFIndexCalculator::Collector::~Collector() = default;

void MXFIndexCalculator::Collector::indexTableSegment(const MXFIndexTableSegment& segment) {
    const auto identity = std::make_tuple(segment.indexStartPosition, segment.indexDuration, segment.editUnitByteCount,
                                          segment.indexSID, segment.bodySID, segment.indexEntryArray.size());
    if (known_.count(identity) != 0) {
        return;
    }
    auto& ofTable = segments_[{segment.indexSID, segment.bodySID}];
    ofTable.push_back(std::make_shared<const Segment>(segment));
    known_.insert(identity);
    if (ofTable.size() == 1) {
        tables_.push_back({segment.indexSID, segment.bodySID});
    }
}

void MXFIndexCalculator::setSegments(const Collector& collector, Table table) {
    const auto found = collector.segments_.find({table.indexSID, table.bodySID});
    std::vector<std::shared_ptr<const Segment>> segments;
    if (found != collector.segments_.end()) {
        segments = found->second;
    }
    // Entries know better than a calculation.
    std::stable_partition(segments.begin(), segments.end(),
                          [](const std::shared_ptr<const Segment>& segment) { return segment->hasEntries(); });
    isSet_ = !segments.empty();
    placeSpans(cover(segments));
}

void MXFIndexCalculator::setSegments(const std::vector<MXFIndexTableSegment>& segments) {
    Collector collector;
    for (const MXFIndexTableSegment& segment : segments) {
        collector.indexTableSegment(segment);
    }
    setSegments(collector, segments.empty() ? Table{} : collector.tables().front());
}

std::vector<MXFIndexCalculator::Span>
MXFIndexCalculator::cover(const std::vector<std::shared_ptr<const Segment>>& segments) {
    std::vector<Span> spans;
    // What is covered so far, as ranges that do not touch one another: the ends by the first edit units. Each segment
    // fills the gaps that it reaches, and makes one range of all that it touches.
    std::map<std::int64_t, std::int64_t> covered;
    for (const auto& segment : segments) {
        const Range range = segment->range;
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
                spans.push_back({{gap, next->first}, segment, 0, nullptr});
            }
            gap = std::max(gap, next->second);
            first = std::min(first, next->first);
            end = std::max(end, next->second);
            next = covered.erase(next);
        }
        if (gap < range.end) {
            spans.push_back({{gap, range.end}, segment, 0, nullptr});
        }
        covered.emplace(first, end);
    }
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.range.first < b.range.first; });
    return spans;
}

void MXFIndexCalculator::placeSpans(std::vector<Span> spans) {
    spans_.clear();
    bool isUniform = true; // all edit units so far have one size
    for (Span& span : spans) {
        const Segment& segment = *span.segment;
        if (segment.hasEntries()) {
            span.offsets = segment.offsets.data() + segment.indexOf(span.range.first);
        }
        isUniform =
            isUniform && (spans_.empty() || segment.editUnitByteCount == spans_.back().segment->editUnitByteCount);
        boost::optional<std::uint64_t> offset;
        if (segment.hasEntries()) {
            for (std::int64_t unit = span.range.first; unit < span.range.end && !offset; ++unit) {
                const std::uint64_t known = span.offsetOf(unit);
                offset = known <= maxOffset ? boost::optional<std::uint64_t>(known) : boost::none;
            }
        } else if (!spans_.empty() && spans_.back().range.end == span.range.first) {
            // It goes on where the edit unit before ends, if that is known.
            const Span& before = spans_.back();
            const std::int64_t last = before.range.end - 1;
            const auto octets = before.segment->sizeOf(last);
            offset = octets ? advance(before.offsetOf(last), 1, *octets) : boost::none;
        } else if (isUniform) {
            offset = advance(0, static_cast<std::uint64_t>(span.range.first), segment.editUnitByteCount);
        }
        if (!offset || *offset > maxOffset) {
            continue;
        }
        span.offset = *offset;
        if (!segment.hasEntries()) {
            const auto most = static_cast<std::int64_t>((maxOffset - span.offset) / segment.editUnitByteCount);
            if (most < span.range.end - span.range.first && span.range.end != endless) {
                span.range.end = span.range.first + most;
            }
        }
        spans_.push_back(std::move(span));
    }
    firsts_.clear();
    byOffset_.clear();
    offsets_.clear();
    for (const Span& span : spans_) {
        byOffset_.push_back(firsts_.size());
        firsts_.push_back(span.range.first);
        offsets_.push_back(span.offset);
    }
    std::stable_sort(byOffset_.begin(), byOffset_.end(),
                     [&](std::size_t a, std::size_t b) { return spans_[a].offset < spans_[b].offset; });
    std::sort(offsets_.begin(), offsets_.end());
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

/// The last span that begins with @p editUnit or before it, or null.
const MXFIndexCalculator::Span* MXFIndexCalculator::spanBefore(std::int64_t editUnit) const noexcept {
    const std::int64_t* const after = upperBound(firsts_, editUnit);
    return after == firsts_.data() ? nullptr : &spans_[static_cast<std::size_t>(after - firsts_.data()) - 1];
}

const MXFIndexCalculator::Span* MXFIndexCalculator::find(std::int64_t editUnit) const noexcept {
    const Span* const span = spanBefore(editUnit);
    return span != nullptr && contains(*span, editUnit) ? span : nullptr;
}

bool MXFIndexCalculator::contains(const Span& span, std::int64_t editUnit) noexcept {
    return editUnit >= span.range.first && editUnit < span.range.end && span.offsetOf(editUnit) <= maxOffset;
}

bool MXFIndexCalculator::contains(std::int64_t editUnit) const noexcept {
    return find(editUnit) != nullptr;
}

const MXFIndexCalculator::Span& MXFIndexCalculator::span(std::int64_t editUnit) const {
    require(isSet_, "index segments set");
    // Not by find(): of its two results a compiler makes a conditional move, for which the offset has to come out of memory
    // before anything is looked up with it.
    const Span* const found = spanBefore(editUnit);
    require(found != nullptr && contains(*found, editUnit), "found edit unit in index");
    return *found;
}

std::uint64_t MXFIndexCalculator::streamOffset(std::int64_t editUnit) const {
    const Span& own = span(editUnit);
    return own.offsetOf(editUnit);
}

boost::optional<std::uint64_t> MXFIndexCalculator::size(std::int64_t editUnit) const {
    const Span& own = span(editUnit);
    if (const auto known = own.segment->sizeOf(editUnit)) {
        return known;
    }
    const Span* const next = find(editUnit + 1);
    const std::uint64_t start = own.offsetOf(editUnit);
    const std::uint64_t end = next == nullptr ? 0 : next->offsetOf(editUnit + 1);
    return end > start ? boost::optional<std::uint64_t>(end - start) : boost::none;
}

std::size_t MXFIndexCalculator::elementCount(std::int64_t editUnit) const {
    return std::max<std::size_t>(1, span(editUnit).segment->deltas.size());
}

const MXFDeltaEntry* MXFIndexCalculator::delta(const Span& span, std::size_t element) {
    const std::vector<MXFDeltaEntry>& deltas = span.segment->deltas;
    require(element < std::max<std::size_t>(1, deltas.size()), "valid element index");
    return deltas.empty() ? nullptr : &deltas[element];
}

boost::optional<std::uint64_t> MXFIndexCalculator::elementOffset(std::int64_t editUnit, std::size_t element) const {
    const Span& own = span(editUnit);
    const Segment& segment = *own.segment;
    const std::uint64_t offset = own.offsetOf(editUnit);
    const MXFDeltaEntry* const found = delta(own, element);
    if (found == nullptr) {
        return offset;
    }
    if (found->slice == 0) {
        return offset + found->elementDelta;
    }
    if (!segment.hasEntries() || found->slice > segment.slices) {
        return boost::none;
    }
    return offset + segment.sliceOffsets[segment.indexOf(editUnit) * segment.slices + found->slice - 1] +
           found->elementDelta;
}

bool MXFIndexCalculator::isReordered(std::int64_t editUnit, std::size_t element) const {
    const MXFDeltaEntry* const found = delta(span(editUnit), element);
    return found != nullptr && found->posTableIndex < 0;
}

boost::optional<std::int64_t> MXFIndexCalculator::storedPosition(std::int64_t displayed) const {
    const auto* const marks = span(displayed).segment->marksOf(displayed);
    const std::int64_t stored = marks == nullptr ? displayed : displayed + marks->temporalOffset;
    return contains(stored) ? boost::optional<std::int64_t>(stored) : boost::none;
}

boost::optional<std::int64_t> MXFIndexCalculator::keyFrame(std::int64_t editUnit) const {
    const Span& own = span(editUnit);
    const auto* const marks = own.segment->marksOf(editUnit);
    const std::int64_t first = marks == nullptr ? editUnit : editUnit + marks->keyFrameOffset;
    return first <= editUnit && (contains(own, first) || contains(first)) ? boost::optional<std::int64_t>(first)
                                                                          : boost::none;
}

std::uint8_t MXFIndexCalculator::flags(std::int64_t editUnit) const {
    const auto* const marks = span(editUnit).segment->marksOf(editUnit);
    return marks == nullptr ? MXFIndexEntryFlags::randomAccess : marks->flags;
}

void MXFIndexCalculator::describe(std::int64_t editUnit, MXFIndexEntry& entry) const {
    const auto* const marks = span(editUnit).segment->marksOf(editUnit);
    entry.flags = marks == nullptr ? MXFIndexEntryFlags::randomAccess : marks->flags;
    entry.temporalOffset = marks == nullptr ? std::int8_t{0} : marks->temporalOffset;
    entry.keyFrameOffset = marks == nullptr ? std::int8_t{0} : marks->keyFrameOffset;
}

boost::optional<std::int64_t> MXFIndexCalculator::editUnitAt(std::uint64_t streamOffset) const {
    require(isSet_, "index segments set");
    if (streamOffset > maxOffset) {
        return boost::none;
    }
    const std::uint64_t* const after = upperBound(offsets_, streamOffset);
    if (after == offsets_.data()) {
        return boost::none;
    }
    const auto place = static_cast<std::size_t>(after - offsets_.data()) - 1;
    const Span& own = spans_[byOffset_[place]];
    if (own.offsets == nullptr) {
        const auto count =
            static_cast<std::int64_t>(std::min(streamOffset - own.offset, maxOffset) / own.segment->editUnitByteCount);
        const std::int64_t unit = count < own.range.end - own.range.first ? own.range.first + count : own.range.end;
        return unit < own.range.end ? boost::optional<std::int64_t>(unit) : boost::none;
    }
    const std::uint64_t* const first = own.offsets;
    const std::uint64_t* const end = first + (own.range.end - own.range.first);
    // The next span tells where this one ends, without a look at its last entry.
    const std::uint64_t ownEnd = place + 1 < offsets_.size() ? offsets_[place + 1] : end[-1];
    const auto* const next = upperBound(first, end, streamOffset, share(streamOffset, own.offset, ownEnd));
    if (next == first) {
        return boost::none;
    }
    const std::int64_t unit = own.range.first + (next - first) - 1;
    if (next == end) {
        const auto octets = own.segment->sizeOf(unit);
        if (octets && streamOffset - end[-1] >= *octets) {
            return boost::none;
        }
    }
    return unit;
}

} // namespace bryx

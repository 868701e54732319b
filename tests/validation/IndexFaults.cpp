#include <limits>

#include "validation/Faults.h"

namespace {

namespace I = BRYXIndexChecks;

const ClipOptions twoSegments = with([](ClipOptions& o) {
    o.frames = 4400; // more entries than a segment holds
    o.pictureSize = 20;
    o.partitionDuration = 0;
    o.placement = ClipOptions::Placement::Footer;
});

} // namespace

std::vector<Fault> indexFaults() {
    return {
        {I::invalidIndexEditRate, segment(0, 0x3F0B, Rational{25, 0}), oneSegment},
        {I::invalidIndexStartPosition, segment(0, 0x3F0C, std::int64_t{-1}), oneSegment},
        {I::invalidIndexStartPosition, segment(0, 0x3F0C, std::numeric_limits<std::int64_t>::max()), oneSegment},
        {I::invalidIndexDuration, segment(0, 0x3F0D, std::int64_t{-1}), oneSegment},
        {I::elementDeltaOrder, segment(0, 0x3F09, std::uint32_t{300}, 8 + 2 * 6 + 2), oneSegment},
        {I::elementDeltaBeyondEditUnit, segment(0, 0x3F09, std::uint32_t{0x10000}, 8 + 3 * 6 + 2), constant},
        {I::streamOffsetOrder, entry(5, 3, std::uint64_t{0}), oneSegment},
        {I::streamOffsetOrder, [](GoodClip& clip) { clip.setEntry(1, 0, 3, std::uint64_t{0}); }, twoSegments},
        {I::sliceOffsetOrder, entry(5, 11, std::uint32_t{0x10000}), oneSegment},
        {I::keyFrameOutside, entry(0, 1, std::int8_t{-1}), oneSegment},
        {I::keyFrameOutside, entry(0, 1, std::int8_t{1}), oneSegment},
        {I::noKeyFrame, entry(7, 1, std::int8_t{-1}), oneSegment},
        {I::temporalOffsetOutside, entry(9, 0, std::int8_t{1}), oneSegment},
        {I::temporalOffsetOutside, entry(0, 0, std::int8_t{-1}), oneSegment},
        {I::inconsistentRepetition,
         [](GoodClip& clip) {
             clip.setEntry(0, 1, 2, std::uint8_t{0x30});
             clip.altered = {clip.all(mxfutil::indexTableSegmentKey).at(1).position};
         }},
        {I::inconsistentIndexEditRate, segment(2, 0x3F0B, Rational{30, 1})},
        {I::overlap, segment(2, 0x3F0C, std::int64_t{4})},
        {I::gap, segment(2, 0x3F0C, std::int64_t{6})},
        {I::inconsistentSliceCount, segment(0, 0x3F08, std::uint8_t{1}), constant},
        {I::lateStart, segment(0, 0x3F0C, std::int64_t{1}), oneSegment},
    };
}

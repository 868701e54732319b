#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/Octets.h"
#include "validation/Faults.h"

namespace {

namespace C = BRYXCrossChecks;
namespace Y = BRYXSystemChecks;

const ClipOptions onePackage = with([](ClipOptions& o) { o.frames = 1; });

} // namespace

std::vector<Fault> essenceFaults() {
    return {
        {C::inconsistentPrefacePattern, set<Preface>(0, "operationalPattern", other(keys::op1a, 13, 2))},
        {C::inconsistentPrefaceVersion, set<Preface>(0, "version", std::uint16_t{0x0102})},
        {C::inconsistentPrefaceContainers,
         [](GoodClip& clip) {
             clip.set<Preface>(0, "essenceContainers",
                               std::vector<KLVKey>{GoodClip::multiple, GoodClip::frames, GoodClip::waves, keys::item});
         }},
        {C::inconsistentRIPPresent,
         [](GoodClip& clip) {
             clip.set<Preface>(0, "ripPresent", false);
             clip.inLastRegion();
         }},
        {C::unknownBodySID, pack(0, "bodySID", std::uint32_t{9})},
        {C::missingEssence,
         [](GoodClip& clip) {
             clip.set<EssenceContainerData>(1, "bodySID", std::uint32_t{9});
             clip.inLastRegion();
         },
         emptyContainer},
        {C::unknownIndexSID, pack(0, "indexSID", std::uint32_t{9})},
        {C::missingIndex,
         [](GoodClip& clip) {
             clip.set<EssenceContainerData>(1, "indexSID", std::uint32_t{9});
             clip.inLastRegion();
         },
         emptyContainer},
        {C::misplacedSegment, segment(0, 0x3F06, std::uint32_t{9})},
        {C::unknownIndexTable, segment(0, 0x3F07, std::uint32_t{9})},
        {C::inconsistentIndexEditRate, segment(0, 0x3F0B, Rational{30, 1}), oneSegment},
        {C::incompleteIndexTable, segment(0, 0x3F0D, std::int64_t{9}), constant},
        {C::indexBeyondEssence, segment(0, 0x3F0D, std::int64_t{11}), constant},
        {C::indexBeyondEssence, entry(9, 3, std::uint64_t{1} << 40U), oneSegment},
        {C::unknownElement, element(GoodClip::picture, 3, 15, 9)},
        {C::missingElements,
         [](GoodClip& clip) {
             clip.put(clip.all(GoodClip::sound2).at(0), 15, {1});
             clip.at<TimelineTrack>(7);
             clip.inLastRegion();
         },
         onePackage},
        {C::inconsistentPackageCount,
         [](GoodClip& clip) {
             clip.set<SourceClip>(1, "duration", std::int64_t{11});
             clip.at<EssenceContainerData>();
             clip.inLastRegion();
         },
         pictureOnly},
        {C::inconsistentSystemLabel, system(0, 22, 0x55), onePackage},
        {C::inconsistentPackageRate, system(0, 1, mxfutil::packageRateCode({24, 1}).value()), onePackage},

        {Y::invalidPackageRate, system(0, 1, 0xFF), onePackage},
        {Y::inconsistentSystemItem, system(4, 22, 0x55)},
        {Y::inconsistentSystemItem, system(4, 1, 0)},
        {Y::discontinuousCount,
         [](GoodClip& clip) { clip.put(clip.all(mxfutil::sdtiCPSystemMetadataKey).at(9), 20 + 5, {0x55}); }},
        {Y::inconsistentBitmap, system(4, 0, MXFSystemBitmap::label | MXFSystemBitmap::soundItem)},
        {Y::invalidTimecode, system(4, 41, 0x3F)},
        {Y::discontinuousTimecode, system(9, 41, 0x15)},
        {Y::missingSystemItem,
         [](GoodClip& clip) {
             const auto item = clip.all(mxfutil::sdtiCPSystemMetadataKey).front();
             clip.put(item, 0,
                      std::vector<std::uint8_t>(klvutil::fillKey.octets.begin(), klvutil::fillKey.octets.end()));
             clip.altered = {clip.all(GoodClip::sound1).front().position};
         },
         onePackage},
        {Y::incorrectElementCount,
         [](GoodClip& clip) {
             clip.put(clip.all(GoodClip::sound2).at(3), 0,
                      std::vector<std::uint8_t>(klvutil::fillKey.octets.begin(), klvutil::fillKey.octets.end()));
             clip.altered = {clip.all(GoodClip::sound1).at(3).position};
         }},
    };
}

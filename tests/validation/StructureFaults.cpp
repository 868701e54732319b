#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/Octets.h"
#include "validation/Faults.h"

namespace {

namespace S = BRYXStructureChecks;

constexpr std::uint64_t lastLabelOctet = 16 + 4 + 88 + 4 * 16 - 1; // of a pack with its four labels

const ClipOptions genericStream = with([](ClipOptions& o) { o.hasGenericStream = true; });

const ClipOptions openHeader = with([](ClipOptions& o) {
    o.canSeek = false;
    o.placement = ClipOptions::Placement::None;
    o.change = [](Preface& p) { p.getContentStorage()->getEssenceContainerDataAt(0)->setIndexSID(0); };
});

} // namespace

std::vector<Fault> structureFaults() {
    return {
        {S::invalidOperationalPattern, pack(1, "operationalPattern", keys::label)},
        {S::inconsistentOperationalPattern, pack(1, "operationalPattern", other(keys::op1a, 13, 2))},
        {S::inconsistentEssenceContainers,
         [](GoodClip& clip) { clip.put(clip.packs().at(1), lastLabelOctet, {0x55}); }},
        {S::neverClosed,
         [](GoodClip& clip) {
             clip.setPack(clip.packs().size() - 1, "headerByteCount", std::uint64_t{0});
             clip.altered = {0};
         },
         openHeader, Wanted::Structure},
        {S::openFooter, [](GoodClip& clip) { clip.put(clip.packs().back(), 14, {1}); }},
        {S::openAfterClosed, [](GoodClip& clip) { clip.put(clip.packs().at(1), 14, {3}); }},
        {S::incorrectBodyOffset, pack(2, "bodyOffset", std::uint64_t{17})},
        {S::packOffKAG, pack(1, "kagSize", std::uint32_t{1 << 20U})},
        {S::inconsistentKAGSize, pack(1, "kagSize", std::uint32_t{1})},
        {S::randomIndexOrder,
         [](GoodClip& clip) {
             const auto index = clip.all(mxfutil::randomIndexPackKey).front();
             clip.put(index, index.value - index.position + 12 + 5, {0x7F});
         }},
        {S::missingHeaderMetadata, pack(0, "headerByteCount", std::uint64_t{0}), {}, Wanted::Structure},
        {S::genericStreamWithoutSID, pack(1, "bodySID", std::uint32_t{0}), genericStream},
        {S::sharedBodySID,
         [](GoodClip& clip) {
             clip.setPack(1, "bodySID", std::uint32_t{1});
             clip.altered = {clip.packs().at(2).position, clip.packs().at(3).position};
         },
         genericStream},
        {S::sharedSID, pack(3, "indexSID", std::uint32_t{1}), {}, Wanted::Structure},
        {S::inconsistentFormatVersion, pack(1, "minorVersion", std::uint16_t{4})},
        {S::inconsistentVersions, [](GoodClip& clip) { clip.put(clip.packs().at(1), 7, {9}); }},
    };
}

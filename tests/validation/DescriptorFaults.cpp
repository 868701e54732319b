#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/Octets.h"
#include "validation/Faults.h"

namespace {

namespace M = BRYXMetadataChecks;

const ClipOptions oneLine = with([](ClipOptions& o) {
    o.change = [](Preface& p) {
        const auto package = std::dynamic_pointer_cast<SourcePackage>(p.getContentStorage()->getPackageAt(1));
        const auto multiple = std::dynamic_pointer_cast<MultipleDescriptor>(package->getDescriptor());
        const auto picture = std::dynamic_pointer_cast<CDCIPictureDescriptor>(multiple->getSubDescriptorAt(0));
        picture->setVideoLineMap({1});
        picture->setFrameLayout(MXFFrameLayout::FullFrame);
    };
});

} // namespace

std::vector<Fault> descriptorFaults() {
    return {
        {M::unlistedEssenceContainer, set<WaveAudioDescriptor>(0, "essenceContainer", keys::item)},
        {M::invalidSampleRate, set<WaveAudioDescriptor>(0, "sampleRate", Rational{25, 0})},
        {M::inconsistentContainerDuration, set<WaveAudioDescriptor>(0, "containerDuration", std::int64_t{9})},
        {M::unknownLinkedTrack, set<WaveAudioDescriptor>(0, "linkedTrackID", std::uint32_t{9})},
        {M::duplicateLinkedTrack, set<WaveAudioDescriptor>(1, "linkedTrackID", std::uint32_t{3})},
        {M::undescribedTrack,
         [](GoodClip& clip) {
             clip.set<WaveAudioDescriptor>(1, "linkedTrackID", std::uint32_t{3});
             clip.at<TimelineTrack>(7);
         }},
        {M::missingLinkedTrack, [](GoodClip& clip) { clip.forget<WaveAudioDescriptor>(0, "linkedTrackID"); }},
        {M::invalidStoredSize, set<CDCIPictureDescriptor>(0, "storedHeight", std::uint32_t{0})},
        {M::invalidRectangle, set<CDCIPictureDescriptor>(0, "sampledYOffset", std::int32_t{17})},
        {M::invalidRectangle, set<CDCIPictureDescriptor>(0, "displayWidth", std::uint32_t{721})},
        {M::invalidAspectRatio, set<CDCIPictureDescriptor>(0, "aspectRatio", Rational{16, 0})},
        {M::inconsistentVideoLineMap, set<CDCIPictureDescriptor>(0, "frameLayout", MXFFrameLayout::SeparateFields),
         oneLine},
        {M::invalidComponentDepth, set<CDCIPictureDescriptor>(0, "componentDepth", std::uint32_t{0})},
        {M::inconsistentReferenceLevels, set<CDCIPictureDescriptor>(0, "blackReferenceLevel", std::uint32_t{235})},
        {M::invalidAudioSamplingRate, set<WaveAudioDescriptor>(0, "audioSamplingRate", Rational{-48000, 1})},
        {M::inconsistentBlockAlign, set<WaveAudioDescriptor>(0, "quantizationBits", std::uint32_t{24})},
        {M::inconsistentAverageBytesPerSecond,
         set<WaveAudioDescriptor>(1, "averageBytesPerSecond", std::uint32_t{191999})},
        {M::duplicateMCALink,
         set<AudioChannelLabelSubDescriptor>(1, "linkID", MXFUID{{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3}})},
        {M::invalidMCAChannel, set<AudioChannelLabelSubDescriptor>(1, "channelID", std::uint32_t{3})},
        {M::duplicateMCAChannel, set<AudioChannelLabelSubDescriptor>(1, "channelID", std::uint32_t{1})},
        {M::missingMCAChannel, [](GoodClip& clip) { clip.forget<AudioChannelLabelSubDescriptor>(1, "channelID"); }},
        {M::unknownSoundfieldGroup, set<AudioChannelLabelSubDescriptor>(1, "soundfieldGroup", MXFUID{{9}})},
        {M::unknownGroupOfSoundfieldGroups,
         set<SoundfieldGroupLabelSubDescriptor>(0, "groupOfSoundfieldGroups", std::vector<MXFUID>{MXFUID{{9}}})},
        {M::unlabelledChannels,
         [](GoodClip& clip) {
             clip.hide<AudioChannelLabelSubDescriptor>(1);
             clip.at<WaveAudioDescriptor>();
         }},
    };
}

#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/Octets.h"
#include "validation/Faults.h"

namespace {

namespace M = BRYXMetadataChecks;

const ClipOptions generation = with([](ClipOptions& o) {
    o.change = [](Preface& p) { p.setGenerationUID(p.getIdentificationAt(0)->getThisGenerationUID()); };
});
const ClipOptions external = with([](ClipOptions& o) {
    o.hasEssence = false;
    o.change = [](Preface& p) { p.getContentStorage()->removeEssenceContainerDataAt(0); };
});
/// With a track of data, which is nowhere, in both packages.
const ClipOptions listedData = with([](ClipOptions& o) {
    o.change = [](Preface& p) {
        for (std::size_t i = 0; i < 2; ++i) {
            const auto clip = SourceClip::create();
            clip->setDataDefinition(GoodClip::dataData);
            clip->setDuration(10);
            const auto track = TimelineTrack::create();
            track->setTrackID(9);
            track->setEditRate({25, 1});
            track->setSegment(clip);
            p.getContentStorage()->getPackageAt(i)->addTrack(track);
        }
    };
});
/// With a third package, whose essence is elsewhere.
const ClipOptions physical = with([](ClipOptions& o) {
    o.change = [](Preface& p) {
        BRYXDefaultUIDGenerator uids;
        const auto package = SourcePackage::create();
        package->setPackageUID(mxfutil::generateUMID(uids));
        const auto descriptor = DataDescriptor::create();
        descriptor->setSampleRate({25, 1});
        descriptor->setEssenceContainer(GoodClip::multiple);
        package->setDescriptor(descriptor);
        const auto track = StaticTrack::create();
        track->setTrackID(1);
        track->setSegment(Sequence::create());
        package->addTrack(track);
        p.getContentStorage()->addPackage(package);
    };
});

} // namespace

std::vector<Fault> packageFaults() {
    return {
        {M::missingPreface,
         [](GoodClip& clip) {
             clip.hide<Preface>();
             clip.at<Identification>();
         }},
        {M::missingIdentification,
         [](GoodClip& clip) {
             clip.hide<Identification>();
             clip.at<Preface>();
         }},
        {M::missingMaterialPackage,
         [](GoodClip& clip) {
             clip.hide<MaterialPackage>();
             clip.at<ContentStorage>();
         }},
        {M::missingFilePackage,
         [](GoodClip& clip) {
             clip.hide<SourcePackage>();
             clip.at<ContentStorage>();
         },
         external},
        {M::unresolvedStrongReference, set<TimelineTrack>(0, "segment", MXFUID{{1}})},
        {M::unresolvedWeakReference, set<Preface>(0, "primaryPackage", MXFUID{{1}})},
        {M::unknownGeneration, set<Preface>(0, "generationUID", MXFUID{{1}}), generation},
        {M::inconsistentRepetition,
         [](GoodClip& clip) {
             clip.set<Identification>(0, "modificationDate", MXFTimestamp{}, false);
             clip.altered = {clip.all(Identification::classKey).at(1).position};
         }},
        {M::invalidPackageUID, [](GoodClip& clip) { clip.set<MaterialPackage>(0, "packageUID", UMID{{6}}); }},
        {M::duplicatePackageUID,
         [](GoodClip& clip) {
             clip.set<SourcePackage>(1, "packageUID", clip.get<SourcePackage, UMID>(0, "packageUID"));
         },
         physical},
        {M::packageWithoutTracks, [](GoodClip& clip) { clip.empty<SourcePackage>(1, "tracks"); }, physical},
        {M::invalidTrackID, set<TimelineTrack>(0, "trackID", std::uint32_t{0})},
        {M::duplicateTrackID, set<TimelineTrack>(1, "trackID", std::uint32_t{1})},
        {M::duplicateTrackNumber,
         set<TimelineTrack>(7, "trackNumber", std::uint32_t{0x16020101}),
         {},
         Wanted::Metadata},
        {M::invalidEditRate, set<TimelineTrack>(0, "editRate", Rational{0, 1})},
        {M::invalidEditRate, set<TimelineTrack>(9, "editRate", Rational{0, 1}), listedData},
        {M::untimedData, set<TimelineTrack>(4, "editRate", Rational{0, 1}), listedData},
        {M::invalidOrigin, set<TimelineTrack>(0, "origin", std::int64_t{-1})},
        {M::originBeyondDuration, set<TimelineTrack>(0, "origin", std::int64_t{11})},
        {M::invalidDuration, set<Sequence>(0, "duration", std::int64_t{-2})},
        {M::unknownDuration, set<Sequence>(0, "duration", std::int64_t{-1})},
        {M::inconsistentSequenceDuration, set<Sequence>(0, "duration", std::int64_t{9})},
        {M::inconsistentDataDefinition, set<TimecodeComponent>(0, "dataDefinition", GoodClip::pictureData)},
        {M::unequalTracks,
         [](GoodClip& clip) {
             clip.set<SourceClip>(0, "duration", std::int64_t{9});
             clip.at<TimelineTrack>(1);
         },
         pictureOnly},
        {M::sourceClipBeyondSource, set<SourceClip>(0, "startPosition", std::int64_t{1})},
        {M::missingSourcePackage, set<SourceClip>(0, "sourcePackageID", UMID{{6, 10}})},
        {M::missingSourceTrack, set<SourceClip>(0, "sourceTrackID", std::uint32_t{99})},
        {M::inconsistentSourceTrack, set<SourceClip>(0, "sourceTrackID", std::uint32_t{3})},
        {M::inconsistentSourceEnd, set<SourceClip>(3, "startPosition", std::int64_t{1})},
        {M::cyclicSourceChain,
         [](GoodClip& clip) {
             clip.set<SourceClip>(3, "sourcePackageID", clip.get<SourcePackage, UMID>(0, "packageUID"));
         }},
        {M::inconsistentTimecodeBase, set<TimecodeComponent>(0, "roundedTimecodeBase", std::uint16_t{30})},
        {M::inconsistentDropFrame, set<TimecodeComponent>(0, "dropFrame", true)},
        {M::invalidStartTimecode, set<TimecodeComponent>(0, "startTimecode", std::int64_t{25 * 86400})},
        {M::unknownLinkedPackage, set<EssenceContainerData>(0, "linkedPackageUID", UMID{{6}})},
        {M::duplicateLinkedPackage,
         [](GoodClip& clip) {
             clip.set<EssenceContainerData>(1, "linkedPackageUID", clip.get<SourcePackage, UMID>(0, "packageUID"));
         },
         emptyContainer},
        {M::invalidBodySID, set<EssenceContainerData>(1, "bodySID", std::uint32_t{0}), emptyContainer},
        {M::duplicateBodySID, set<EssenceContainerData>(1, "bodySID", std::uint32_t{1}), emptyContainer},
        {M::duplicateIndexSID, set<EssenceContainerData>(1, "indexSID", std::uint32_t{2}), emptyContainer},
    };
}

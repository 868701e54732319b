#include <limits>
#include <set>

#include <gtest/gtest.h>

#include "mxf/index/MXFIndexCoder.h"
#include "support/GoodClip.h"
#include "support/KLVOctets.h"

namespace {

namespace S = BRYXStructureChecks;
namespace M = BRYXMetadataChecks;
namespace C = BRYXCrossChecks;
namespace I = BRYXIndexChecks;
namespace Y = BRYXSystemChecks;

/// Keeps what is reported.
struct Findings : DullErrorHandler {
    struct Finding {
        util::uuid id;
        klvutil::FindingLevel level;
        std::uint64_t position;
        std::string message;
    };

    std::vector<Finding> all;
    const Locator* locator = nullptr;

    void setLocator(const Locator& l) override { locator = &l; }
    void warning(const util::uuid& id, const std::string& m) override { add(id, klvutil::FindingLevel::warning, m); }
    void error(const util::uuid& id, const std::string& m) override { add(id, klvutil::FindingLevel::error, m); }
    void fatalError(const util::uuid& id, const std::string& m) override { add(id, klvutil::FindingLevel::fatal, m); }

    void add(const util::uuid& id, klvutil::FindingLevel level, const std::string& message) {
        all.push_back({id, level, static_cast<std::uint64_t>(std::streamoff{locator->streampos()}), message});
    }

    std::set<std::uint64_t> positionsOf(const BRYXCheck& check) const {
        std::set<std::uint64_t> positions;
        for (const Finding& finding : all) {
            if (finding.id == check.finding.id) {
                positions.insert(finding.position);
            }
        }
        return positions;
    }
};

enum class Wanted : std::uint8_t { Structure, Metadata, Everything };

Findings validate(const std::string& octets, BRYXValidationMode::Enum mode, Wanted wanted = Wanted::Everything) {
    const auto findings = std::make_shared<Findings>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(octets), mode);
    reader->setErrorHandler(findings);
    reader->setStructureHandler(std::make_shared<DullMXFStructureHandler>());
    if (wanted >= Wanted::Metadata) {
        reader->setMetadataHandler(std::make_shared<DullMXFMetadataHandler>());
    }
    if (wanted == Wanted::Everything) {
        reader->setIndexHandler(std::make_shared<DullMXFIndexHandler>());
        reader->setSDTICPSystemHandler(std::make_shared<DullMXFSDTICPSystemHandler>());
    }
    reader->read();
    return *findings;
}

/// A fault that one altered value makes in a good file, and the check that finds it where it is.
struct Fault {
    const BRYXCheck& check;
    std::function<void(GoodClip&)> plant;
    ClipOptions options = {};
    Wanted wanted = Wanted::Everything;
};

// Files with one thing or another.
ClipOptions with(void (*change)(ClipOptions&)) {
    ClipOptions options;
    change(options);
    return options;
}
const ClipOptions oneSegment = with([](ClipOptions& o) {
    o.partitionDuration = 0;
    o.placement = ClipOptions::Placement::Footer;
});
const ClipOptions twoSegments = with([](ClipOptions& o) {
    o.frames = 4400; // more entries than a segment holds
    o.pictureSize = 20;
    o.partitionDuration = 0;
    o.placement = ClipOptions::Placement::Footer;
});
const ClipOptions onePackage = with([](ClipOptions& o) { o.frames = 1; });
const ClipOptions constant = with([](ClipOptions& o) {
    o.isConstant = true;
    o.partitionDuration = 0;
    o.placement = ClipOptions::Placement::Footer;
});
const ClipOptions genericStream = with([](ClipOptions& o) { o.hasGenericStream = true; });
const ClipOptions emptyContainer = with([](ClipOptions& o) { o.hasEmptyContainer = true; });
const ClipOptions openHeader = with([](ClipOptions& o) {
    o.canSeek = false;
    o.placement = ClipOptions::Placement::None;
    o.change = [](Preface& p) { p.getContentStorage()->getEssenceContainerDataAt(0)->setIndexSID(0); };
});
const ClipOptions pictureOnly = with([](ClipOptions& o) { o.hasSound = o.hasSequences = false; });
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
const ClipOptions oneLine = with([](ClipOptions& o) {
    o.change = [](Preface& p) {
        const auto package = std::dynamic_pointer_cast<SourcePackage>(p.getContentStorage()->getPackageAt(1));
        const auto multiple = std::dynamic_pointer_cast<MultipleDescriptor>(package->getDescriptor());
        const auto picture = std::dynamic_pointer_cast<CDCIPictureDescriptor>(multiple->getSubDescriptorAt(0));
        picture->setVideoLineMap({1});
        picture->setFrameLayout(MXFFrameLayout::FullFrame);
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

template <class Value>
auto pack(std::size_t index, const char* field, Value value) {
    return [=](GoodClip& clip) { clip.setPack(index, field, value); };
}
template <class Set, class Value>
auto set(std::size_t index, const char* property, Value value) {
    return [=](GoodClip& clip) { clip.set<Set>(index, property, value); };
}
template <class Value>
auto segment(std::size_t index, std::uint16_t tag, Value value, std::uint64_t offset = 0) {
    return [=](GoodClip& clip) { clip.setSegment(index, tag, value, offset); };
}
template <class Value>
auto entry(std::size_t index, std::uint64_t offset, Value value) {
    return [=](GoodClip& clip) { clip.setEntry(0, index, offset, value); };
}
/// Alters an octet of the @p index-th element with @p key.
auto element(const KLVKey& key, std::size_t index, std::uint64_t offset, std::uint8_t value) {
    return [=](GoodClip& clip) { clip.put(clip.all(key).at(index), offset, {value}); };
}
/// Alters an octet of the value of a system metadata pack.
auto system(std::size_t index, std::uint64_t offset, std::uint8_t value) {
    return element(mxfutil::sdtiCPSystemMetadataKey, index, 20 + offset, value);
}
KLVKey other(KLVKey key, std::size_t octet, std::uint8_t value) {
    key.octets[octet] = value;
    return key;
}

constexpr std::uint64_t lastLabelOctet = 16 + 4 + 88 + 4 * 16 - 1;

// In a GoodClip, partitions are header, body, body (with the index of the first), footer; sets of one class stand in the
// order in which the model owns them: the material package comes first.
const Fault faults[] = {
    {S::invalidOperationalPattern, pack(1, "operationalPattern", keys::label)},
    {S::inconsistentOperationalPattern, pack(1, "operationalPattern", other(keys::op1a, 13, 2))},
    {S::inconsistentEssenceContainers, [](GoodClip& clip) { clip.put(clip.packs().at(1), lastLabelOctet, {0x55}); }},
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

    {S::inconsistentVersions, [](GoodClip& clip) { clip.put(clip.packs().at(1), 7, {9}); }},

    {M::missingPreface, [](GoodClip& clip) { clip.hide<Preface>(); clip.at<Identification>(); }},
    {M::missingIdentification, [](GoodClip& clip) { clip.hide<Identification>(); clip.at<Preface>(); }},
    {M::missingMaterialPackage, [](GoodClip& clip) { clip.hide<MaterialPackage>(); clip.at<ContentStorage>(); }},
    {M::missingFilePackage, [](GoodClip& clip) { clip.hide<SourcePackage>(); clip.at<ContentStorage>(); }, external},
    {M::unresolvedStrongReference, set<TimelineTrack>(0, "segment", MXFUID{{1}})},
    {M::unresolvedWeakReference, set<Preface>(0, "primaryPackage", MXFUID{{1}})},
    {M::unknownGeneration, set<Preface>(0, "generationUID", MXFUID{{1}}), generation},
    {M::inconsistentRepetition,
     [](GoodClip& clip) {
         clip.set<Identification>(0, "modificationDate", MXFTimestamp{}, false);
         clip.altered = {clip.all(Identification::classKey).at(1).position};
     }},
    {M::invalidPackageUID, [](GoodClip& clip) { clip.set<MaterialPackage>(0, "packageUID", UMID{{6}}); }},
    {M::duplicatePackageUID, [](GoodClip& clip) {
         clip.set<SourcePackage>(1, "packageUID", clip.get<SourcePackage, UMID>(0, "packageUID"));
     }, physical},
    {M::packageWithoutTracks, [](GoodClip& clip) { clip.empty<SourcePackage>(1, "tracks"); }, physical},
    {M::invalidTrackID, set<TimelineTrack>(0, "trackID", std::uint32_t{0})},
    {M::duplicateTrackID, set<TimelineTrack>(1, "trackID", std::uint32_t{1})},
    {M::duplicateTrackNumber, set<TimelineTrack>(7, "trackNumber", std::uint32_t{0x16020101}), {}, Wanted::Metadata},
    {M::invalidEditRate, set<TimelineTrack>(0, "editRate", Rational{0, 1})},
    {M::invalidEditRate, set<TimelineTrack>(9, "editRate", Rational{0, 1}), listedData},
    {M::untimedData, set<TimelineTrack>(4, "editRate", Rational{0, 1}), listedData},
    {M::invalidOrigin, set<TimelineTrack>(0, "origin", std::int64_t{-1})},
    {M::originBeyondDuration, set<TimelineTrack>(0, "origin", std::int64_t{11})},
    {M::invalidDuration, set<Sequence>(0, "duration", std::int64_t{-2})},
    {M::unknownDuration, set<Sequence>(0, "duration", std::int64_t{-1})},
    {M::inconsistentSequenceDuration, set<Sequence>(0, "duration", std::int64_t{9})},
    {M::inconsistentDataDefinition, set<TimecodeComponent>(0, "dataDefinition", GoodClip::pictureData)},
    {M::unequalTracks, [](GoodClip& clip) { clip.set<SourceClip>(0, "duration", std::int64_t{9}); clip.at<TimelineTrack>(1); },
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
    {M::inconsistentVideoLineMap, set<CDCIPictureDescriptor>(0, "frameLayout", MXFFrameLayout::SeparateFields), oneLine},
    {M::invalidComponentDepth, set<CDCIPictureDescriptor>(0, "componentDepth", std::uint32_t{0})},
    {M::inconsistentReferenceLevels, set<CDCIPictureDescriptor>(0, "blackReferenceLevel", std::uint32_t{235})},
    {M::invalidAudioSamplingRate, set<WaveAudioDescriptor>(0, "audioSamplingRate", Rational{-48000, 1})},
    {M::inconsistentBlockAlign, set<WaveAudioDescriptor>(0, "quantizationBits", std::uint32_t{24})},
    {M::inconsistentAverageBytesPerSecond, set<WaveAudioDescriptor>(1, "averageBytesPerSecond", std::uint32_t{191999})},
    {M::duplicateMCALink, set<AudioChannelLabelSubDescriptor>(1, "linkID", MXFUID{{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3}})},
    {M::invalidMCAChannel, set<AudioChannelLabelSubDescriptor>(1, "channelID", std::uint32_t{3})},
    {M::duplicateMCAChannel, set<AudioChannelLabelSubDescriptor>(1, "channelID", std::uint32_t{1})},
    {M::unknownSoundfieldGroup, set<AudioChannelLabelSubDescriptor>(1, "soundfieldGroup", MXFUID{{9}})},
    {M::unknownGroupOfSoundfieldGroups,
     set<SoundfieldGroupLabelSubDescriptor>(0, "groupOfSoundfieldGroups", std::vector<MXFUID>{MXFUID{{9}}})},
    {M::unlabelledChannels, [](GoodClip& clip) { clip.hide<AudioChannelLabelSubDescriptor>(1); clip.at<WaveAudioDescriptor>(); }},

    {C::inconsistentPrefacePattern, set<Preface>(0, "operationalPattern", other(keys::op1a, 13, 2))},
    {C::inconsistentPrefaceContainers,
     [](GoodClip& clip) {
         clip.set<Preface>(0, "essenceContainers",
                           std::vector<KLVKey>{GoodClip::multiple, GoodClip::frames, GoodClip::waves, keys::item});
     }},
    {C::inconsistentRIPPresent, [](GoodClip& clip) { clip.set<Preface>(0, "ripPresent", false); clip.inLastRegion(); }},
    {C::unknownBodySID, pack(0, "bodySID", std::uint32_t{9})},
    {C::missingEssence,
     [](GoodClip& clip) { clip.set<EssenceContainerData>(1, "bodySID", std::uint32_t{9}); clip.inLastRegion(); },
     emptyContainer},
    {C::unknownIndexSID, pack(0, "indexSID", std::uint32_t{9})},
    {C::missingIndex,
     [](GoodClip& clip) { clip.set<EssenceContainerData>(1, "indexSID", std::uint32_t{9}); clip.inLastRegion(); },
     emptyContainer},
    {C::misplacedSegment, segment(0, 0x3F06, std::uint32_t{9})},
    {C::unknownIndexTable, segment(0, 0x3F07, std::uint32_t{9})},
    {C::inconsistentIndexEditRate, segment(0, 0x3F0B, Rational{30, 1}), oneSegment},
    {C::incompleteIndexTable, segment(0, 0x3F0D, std::int64_t{9}), constant},
    {C::indexBeyondEssence, segment(0, 0x3F0D, std::int64_t{11}), constant},
    {C::indexBeyondEssence, entry(9, 3, std::uint64_t{1} << 40U), oneSegment},
    {C::unknownElement, element(GoodClip::picture, 3, 15, 9)},
    {C::missingElements,
     [](GoodClip& clip) { clip.put(clip.all(GoodClip::sound2).at(0), 15, {1}); clip.at<TimelineTrack>(7); clip.inLastRegion(); },
     onePackage},
    {C::inconsistentPackageCount,
     [](GoodClip& clip) { clip.set<SourceClip>(1, "duration", std::int64_t{11}); clip.at<EssenceContainerData>(); clip.inLastRegion(); },
     pictureOnly},
    {C::inconsistentSystemLabel, system(0, 22, 0x55), onePackage},
    {C::inconsistentPackageRate, system(0, 1, mxfutil::packageRateCode({24, 1}).value()), onePackage},

    {I::invalidIndexEditRate, segment(0, 0x3F0B, Rational{25, 0}), oneSegment},
    {I::invalidIndexStartPosition, segment(0, 0x3F0C, std::int64_t{-1}), oneSegment},
    {I::invalidIndexStartPosition, segment(0, 0x3F0C, std::numeric_limits<std::int64_t>::max()), oneSegment},
    {I::invalidIndexDuration, segment(0, 0x3F0D, std::int64_t{-1}), oneSegment},
    {I::elementDeltaOrder, segment(0, 0x3F09, std::uint32_t{300}, 8 + 2 * 6 + 2), oneSegment},
    {I::elementDeltaBeyondEditUnit, segment(0, 0x3F09, std::uint32_t{0x10000}, 8 + 3 * 6 + 2), constant},
    {I::streamOffsetOrder, entry(5, 3, std::uint64_t{0}), oneSegment},
    {I::streamOffsetOrder,
     [](GoodClip& clip) {
         clip.setEntry(1, 0, 3, std::uint64_t{0});
     },
     twoSegments},
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

    {Y::invalidPackageRate, system(0, 1, 0xFF), onePackage},
    {Y::inconsistentSystemItem, system(4, 22, 0x55)},
    {Y::inconsistentSystemItem, system(4, 1, 0)},
    {Y::discontinuousCount,
     [](GoodClip& clip) {
         clip.put(clip.all(mxfutil::sdtiCPSystemMetadataKey).at(9), 20 + 5, {0x55});
     }},
    {Y::inconsistentBitmap, system(4, 0, MXFSystemBitmap::label | MXFSystemBitmap::soundItem)},
    {Y::invalidTimecode, system(4, 41, 0x3F)},
    {Y::discontinuousTimecode, system(9, 41, 0x15)},
    {Y::incorrectElementCount,
     [](GoodClip& clip) {
         clip.put(clip.all(GoodClip::sound2).at(3), 0, std::vector<std::uint8_t>(klvutil::fillKey.octets.begin(), klvutil::fillKey.octets.end()));
         clip.altered = {clip.all(GoodClip::sound1).at(3).position};
     }},
};

} // namespace

TEST(BRYXValidation, FindsEachFaultWhereItIsAndNothingElse) {
    std::set<util::uuid> planted;
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.check.name);
        planted.insert(fault.check.finding.id);
        GoodClip clip(fault.options);
        for (const auto& finding : validate(clip.octets, BRYXValidationMode::Strict).all) {
            ADD_FAILURE() << finding.message << " at " << finding.position << " before anything is altered";
        }
        fault.plant(clip);
        const Findings found = validate(clip.octets, fault.check.mode, fault.wanted);
        EXPECT_EQ(found.positionsOf(fault.check), std::set<std::uint64_t>(clip.altered.begin(), clip.altered.end()));
        for (const auto& finding : found.all) {
            const bool isPlanted = finding.id == fault.check.finding.id;
            EXPECT_TRUE(isPlanted ? finding.level == fault.check.finding.level
                                  : finding.level == klvutil::FindingLevel::warning)
                << finding.message << " at " << finding.position;
        }
        const auto before = static_cast<BRYXValidationMode::Enum>(fault.check.mode - 1);
        EXPECT_TRUE(validate(clip.octets, before, fault.wanted).positionsOf(fault.check).empty());
    }
    for (const BRYXCheckGroup& group : getBRYXChecks()) {
        for (const BRYXCheck* check : group.checks) {
            EXPECT_EQ(planted.count(check->finding.id), 1U) << check->name;
        }
    }
}

/// Each octet of each partition pack and of the random index pack is held against something, save the register version in
/// the key of the latter.
TEST(BRYXValidation, FindsEachFlippedOctetOfAPack) {
    const GoodClip clip;
    auto packs = clip.packs();
    packs.push_back(clip.all(mxfutil::randomIndexPackKey).front());
    for (const GoodClip::Triplet& pack : packs) {
        for (std::uint64_t octet = pack.position; octet < pack.end; ++octet) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                std::string damaged = clip.octets;
                damaged[octet] = static_cast<char>(damaged[octet] ^ flip);
                try {
                    EXPECT_TRUE(!validate(damaged, BRYXValidationMode::Strict).all.empty() ||
                                octet == packs.back().position + 7)
                        << octet - pack.position << " of the pack at " << pack.position << ", " << flip;
                } catch (const klvutil::parse_error&) {
                    continue; // is as good
                }
            }
        }
    }
}

/// Edit units may be divided into segments in another way where they are repeated, but must stay what they are.
TEST(BRYXValidation, ComparesSegmentsThatRepeatOthers) {
    const auto index = [](std::initializer_list<std::int64_t> borders, std::uint8_t flags) {
        KLVOctets octets;
        MXFIndexCoder coder(octets);
        coder.startIndex();
        for (auto border = borders.begin(); border + 1 != borders.end(); ++border) {
            MXFIndexTableSegment segment;
            segment.indexEditRate = {25, 1};
            segment.indexStartPosition = *border;
            segment.indexDuration = border[1] - *border;
            segment.indexSID = 2;
            segment.bodySID = 1;
            for (std::int64_t unit = *border; unit < border[1]; ++unit) {
                segment.indexEntryArray.push_back({0, 0, flags, static_cast<std::uint64_t>(unit), {}, {}});
            }
            coder.indexTableSegment(segment);
        }
        return octets.octets;
    };
    const auto repetitions = [&](std::uint8_t flags) {
        FileBuilder file;
        file.partition(MXFPartitionKind::Header, {}, index({0, 2, 4, 6}, 0))
            .partition(MXFPartitionKind::Footer, {}, index({0, 4, 6}, flags));
        return validate(file.file, BRYXValidationMode::Strict).positionsOf(I::inconsistentRepetition).size();
    };
    EXPECT_EQ(repetitions(0), 0U);
    EXPECT_EQ(repetitions(0x80), 2U);
}

#include <functional>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/VerifyingKLVHandler.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/metadata/descriptors/CDCIPictureDescriptor.h"
#include "mxf/metadata/descriptors/MultipleDescriptor.h"
#include "mxf/metadata/descriptors/RGBAPictureDescriptor.h"
#include "mxf/metadata/descriptors/WaveAudioDescriptor.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/Sequence.h"
#include "mxf/metadata/structural/SourceClip.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "support/BuiltModel.h"
#include "support/Streams.h"
#include "support/WrittenPackages.h"

namespace {

using Status = MXFPartitionStatus;

/// The metadata of a clip of pictures and sound, with all that can be known before it is written; no durations.
struct Clip {
    /// @param soundTracks as many as there are; only the first one's elements are written
    explicit Clip(int soundTracks = 1) {
        picture->setSampleRate({25, 1});
        picture->setFrameLayout(MXFFrameLayout::FullFrame);
        picture->setStoredWidth(320);
        picture->setStoredHeight(180);
        picture->setAspectRatio({16, 9});
        picture->setComponentDepth(8);
        picture->setHorizontalSubsampling(2);
        sound->setSampleRate({48000, 1});
        sound->setAudioSamplingRate({48000, 1});
        sound->setChannelCount(1);
        sound->setQuantizationBits(16);
        descriptor->setSampleRate({25, 1});
        descriptor->addSubDescriptor(picture);
        descriptor->addSubDescriptor(sound);
        UMID umid;
        umid.octets[31] = 1;
        source->setPackageUID(umid);
        source->setDescriptor(descriptor);
        addTrack({25, 1}, 0x15010201);
        for (int i = 0; i < soundTracks; ++i) {
            addTrack({48000, 1}, 0x16010101 + static_cast<std::uint32_t>(i));
        }
        const auto data = EssenceContainerData::create();
        data->setLinkedPackageUID(umid);
        data->setBodySID(1);
        data->setIndexSID(2);
        const auto storage = ContentStorage::create();
        storage->addPackage(source);
        storage->addEssenceContainerData(data);
        preface->setContentStorage(storage);
    }

    void addTrack(Rational rate, std::uint32_t number) {
        const auto sequence = Sequence::create();
        sequence->addComponent(SourceClip::create());
        sequences.push_back(sequence);
        const auto track = TimelineTrack::create();
        track->setEditRate(rate);
        track->setTrackNumber(number);
        track->setSegment(sequence);
        source->addTrack(track);
    }

    void setDuration(std::int64_t pictures) {
        picture->setContainerDuration(pictures);
        descriptor->setContainerDuration(pictures);
        sound->setContainerDuration(pictures < 0 ? -1 : pictures * 1920);
        for (const auto& sequence : sequences) {
            const std::int64_t unit = sequence == sequences.front() ? 1 : 1920;
            sequence->setDuration(pictures < 0 ? -1 : pictures * unit);
            sequence->getComponentAt(0)->setDuration(sequence->getDuration());
        }
    }

    std::shared_ptr<CDCIPictureDescriptor> picture = CDCIPictureDescriptor::create();
    std::shared_ptr<WaveAudioDescriptor> sound = WaveAudioDescriptor::create();
    std::shared_ptr<MultipleDescriptor> descriptor = MultipleDescriptor::create();
    std::shared_ptr<SourcePackage> source = SourcePackage::create();
    std::shared_ptr<Preface> preface = Preface::create();
    std::vector<std::shared_ptr<Sequence>> sequences;
};

/// The status of the header, the first body and the footer partition, as "1 4 4".
std::string statusesOf(const std::string& octets) {
    struct : DullMXFStructureHandler {
        std::string found;
        MXFPartitionKind last = MXFPartitionKind::Footer;
        void startPartition(const KLVKey& key, const MXFPartitionPack& /*pack*/, std::uint64_t /*start*/) override {
            if (mxfutil::partitionKind(key) != last) {
                last = mxfutil::partitionKind(key);
                found += (found.empty() ? "" : " ") + std::to_string(static_cast<int>(mxfutil::partitionStatus(key)));
            }
        }
    } statuses;
    std::istringstream file(octets);
    MXFReader reader;
    reader.setStructureHandler(&statuses);
    reader.read(file);
    return statuses.found;
}

constexpr int packages = 10;

/// What is not as in the plain case.
struct Case {
    const char* what;
    const char* statuses;
    std::function<void(Clip&)> change = [](Clip&) {}; ///< before the end
    BRYXWriterConfiguration configuration{};
    std::function<void(BRYXWriter&)> essence = [](BRYXWriter& writer) {
        writer.startEssence({});
        writePackages(writer, packages);
        writer.endEssence();
    };
    std::int64_t announced = -1; ///< the duration in the beginning
};

} // namespace

TEST(BRYXWriterStatus, IsClosedAndCompleteInThePlainCase) {
    for (const int soundTracks : {1, 64}) {
        const auto file = std::make_shared<std::stringstream>();
        const auto writer = createVerifyingBRYXWriter(file);
        Clip clip(soundTracks);
        const auto metadata = toBRYXHeaderMetadata(clip.preface);
        writer->start(metadata);
        writer->startEssence({});
        writePackages(*writer, packages);
        writer->endEssence();
        clip.setDuration(packages);
        clip.picture->setActiveFormatDescriptor(4);
        const auto identification = Identification::create();
        identification->setProductName(L"a program that knows its name at the end");
        clip.preface->addIdentification(identification);
        EXPECT_TRUE(writer->finish(metadata)) << soundTracks;
        EXPECT_EQ(statusesOf(file->str()), "4 4 4") << soundTracks;
    }
}

TEST(BRYXWriterStatus, SaysNoMoreThanWhatHolds) {
    BRYXWriterConfiguration noIndex;
    noIndex.indexPlacement = BRYXWriterConfiguration::IndexPlacement::None;
    BRYXWriterConfiguration modest;
    modest.bodyStatus = Status::OpenIncomplete;
    modest.footerStatus = Status::ClosedIncomplete;
    BRYXWriterConfiguration bold;
    bold.headerStatus = Status::ClosedComplete;
    BRYXWriterConfiguration boldWithoutSpace = bold;
    boldWithoutSpace.headerSpace = 0;
    const auto manyIdentifications = [](Clip& clip) { clip.preface->addIdentification(Identification::create()); };
    const auto trackOf = [](Clip& clip) { return clip.sequences.front(); };
    const std::vector<Case> cases{
        {"the plain case", "4 4 4"},
        {"no index table", "4 4 4", [](Clip&) {}, noIndex},
        {"the caller's word", "2 1 2", [](Clip&) {}, modest},
        {"the caller's word in the beginning", "4 4 4", [](Clip&) {}, bold},
        {"a duration that is not known", "2 4 2", [](Clip& clip) { clip.setDuration(-1); }},
        {"a duration that is not there", "2 4 2", [&](Clip& clip) { trackOf(clip)->removeDuration(); }},
        {"a duration that is another", "3 4 2", [](Clip& clip) { clip.setDuration(packages + 1); }},
        {"of one track", "3 4 2", [&](Clip& clip) { trackOf(clip)->setDuration(packages - 1); }},
        {"of a track in samples", "3 4 2", [](Clip& clip) { clip.sequences.back()->setDuration(1920 * 9); }},
        {"but for a part of an edit unit", "4 4 4", [](Clip& clip) { clip.sequences.back()->setDuration(19201); }},
        {"of the descriptor", "3 4 2", [](Clip& clip) { clip.descriptor->setContainerDuration(1); }},
        {"of a descriptor in it", "3 4 2", [](Clip& clip) { clip.picture->setContainerDuration(1); }},
        {"neither known nor right", "1 4 2",
         [&](Clip& clip) {
             trackOf(clip)->setDuration(11);
             clip.sequences.back()->setDuration(-1);
         }},
        {"a layout that is not known", "2 4 2",
         [](Clip& clip) { clip.picture->setFrameLayout(static_cast<MXFFrameLayout>(255)); }},
        {"nor the width", "2 4 2", [](Clip& clip) { clip.picture->setStoredWidth(0); }},
        {"nor the height", "2 4 2", [](Clip& clip) { clip.picture->setStoredHeight(0); }},
        {"nor the aspect ratio", "2 4 2",
         [](Clip& clip) {
             clip.picture->setAspectRatio({0, 0});
         }},
        {"nor the depth", "2 4 2", [](Clip& clip) { clip.picture->setComponentDepth(0); }},
        {"nor the subsampling", "2 4 2", [](Clip& clip) { clip.picture->setHorizontalSubsampling(0); }},
        {"nor the sampling rate", "2 4 2",
         [](Clip& clip) {
             clip.sound->setAudioSamplingRate({0, 0});
         }},
        {"nor the channels", "2 4 2", [](Clip& clip) { clip.sound->setChannelCount(0); }},
        {"nor the bits", "2 4 2", [](Clip& clip) { clip.sound->setQuantizationBits(0); }},
        {"a clip in one element",
         "4 4 4",
         [](Clip&) {},
         {},
         [](BRYXWriter& writer) {
             writer.startEssence({});
             writePackages(writer, 1);
             writer.endEssence();
         }},
        {"essence that came as it was",
         "4 4 4",
         [](Clip&) {},
         {},
         [](BRYXWriter& writer) {
             writer.startEssence({});
             writePackages(writer, 3);
             KLVHandler& body = writer.bodyReceiver();
             body.berLengthForm(0x83);
             body.startIndividualItem(keys::picture, 0);
             body.endIndividualItem(keys::picture);
             writer.endEssence();
         }},
        {"pictures before the origin", "4 4 4",
         [](Clip& clip) {
             clip.setDuration(packages - 2);
             std::dynamic_pointer_cast<TimelineTrack>(clip.source->getTrackAt(0))->setOrigin(2);
         }},
        {"no essence",
         "3 4 2",
         [](Clip&) {},
         {},
         [](BRYXWriter& writer) {
             writer.startEssence({});
             writer.endEssence();
         }},
        {"two parts of a container, without rate",
         "3 4 2",
         [](Clip& clip) { clip.setDuration(7); },
         {},
         [](BRYXWriter& writer) {
             for (int i = 0; i < 2; ++i) {
                 writer.startEssence({1, 0, {24, 1}, false, {}, {}});
                 writePackages(writer, packages / 2);
                 writer.endEssence();
             }
         }},
        {"the same, as long as it says",
         "4 4 4",
         [](Clip&) {},
         {},
         [](BRYXWriter& writer) {
             writer.startEssence({1, 0, {24, 1}, false, {}, {}});
             writePackages(writer, packages);
             writer.endEssence();
         }},
        {"a header that is out of date", "3 4 4", manyIdentifications, boldWithoutSpace, Case{}.essence, packages},
        {"and was incomplete before", "1 4 4", manyIdentifications, boldWithoutSpace},
    };
    for (const Case& each : cases) {
        const auto file = std::make_shared<std::stringstream>();
        const auto writer = createVerifyingBRYXWriter(file);
        writer->setConfiguration(each.configuration);
        Clip clip;
        clip.setDuration(each.announced);
        const auto metadata = toBRYXHeaderMetadata(clip.preface);
        writer->start(metadata);
        each.essence(*writer);
        clip.setDuration(packages);
        each.change(clip);
        const bool isClosed = writer->finish(metadata);
        EXPECT_EQ(statusesOf(file->str()), each.statuses) << each.what;
        EXPECT_EQ(isClosed, each.statuses[0] == '4') << each.what;
    }
}

/// Sets that somebody makes by hand; and a header partition that cannot be corrected later.
TEST(BRYXWriterStatus, IsSeenInSetsOfAnyMaking) {
    for (const std::uint32_t width : {0U, 320U}) {
        BRYXHeaderMetadata metadata;
        metadata.send = [&](MXFMetadataHandler& handler) {
            handler.startMetadata();
            handler.primer({{0x3203, *mxfutil::staticLabel(0x3203)}});
            MXFPrimedSet set;
            set.key = CDCIPictureDescriptor::classKey;
            set.properties[*mxfutil::staticLabel(0x3203)] = klvutil::writeValue(width);
            handler.primedSet(set);
            handler.endMetadata();
        };
        BRYXWriterConfiguration configuration;
        configuration.headerStatus = Status::ClosedComplete;
        const auto pipe = std::make_shared<OutputPipe>();
        const auto writer = createBRYXWriter(pipe);
        writer->setConfiguration(configuration);
        writer->start(metadata);
        EXPECT_FALSE(writer->finish(metadata));
        EXPECT_EQ(statusesOf(pipe->octets()), width == 0 ? "2 2" : "4 4");
    }
}

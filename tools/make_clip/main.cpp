/// Writes a clip from nothing: moving bars and a tone, with timecode.
///
///     make_clip OUT [FRAMES]
///
/// The file is of operational pattern 1a (ST 378). Each content package holds a system item with the timecode, a picture
/// of 320 by 180 pixels, uncompressed 4:2:2 with 8 bits (ST 384), and the sound that goes with it, two channels of 16
/// bits (ST 382); 25 of them make a second.
///
/// This is how a file is written: a model of the header metadata, a writer, and for each content package the calls that
/// somebody who reads it would get.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <ostream>
#include <string>
#include <typeinfo>
#include <vector>

#include <boost/lexical_cast.hpp>
#include <boost/numeric/conversion/cast.hpp>
#include <boost/program_options/errors.hpp>

#include "klv/KLVKey.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "mxf/essence/MXFSDTICPSystemCoder.h"
#include "mxf/metadata/descriptors/CDCIPictureDescriptor.h"
#include "mxf/metadata/descriptors/MultipleDescriptor.h"
#include "mxf/metadata/descriptors/WaveAudioDescriptor.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "mxf/metadata/structural/MaterialPackage.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/Sequence.h"
#include "mxf/metadata/structural/SourceClip.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/metadata/structural/TimecodeComponent.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "sdk/BRYXVersion.h"
#include "sdk/BRYXWriter.h"
#include "shared/CommandLine.h"
#include "shared/OutputFile.h"
#include "timecode/TimecodeCalculator.h"
#include "util/byte_order.h"

namespace {

using klvutil::key;

// Labels (SMPTE registers).
constexpr KLVKey operationalPattern1a = key("060e2b34.04010101.0d010201.01010900");
constexpr KLVKey multipleMappings = key("060e2b34.04010103.0d010301.027f0100");
constexpr KLVKey uncompressedFrames = key("060e2b34.04010101.0d010301.02057f01");
constexpr KLVKey waveFrames = key("060e2b34.04010101.0d010301.02060100");
constexpr KLVKey interleavedCbYCrY = key("060e2b34.0401010a.04010201.01020101");
constexpr KLVKey timecodeData = key("060e2b34.04010101.01030201.01000000");
constexpr KLVKey pictureData = key("060e2b34.04010101.01030202.01000000");
constexpr KLVKey soundData = key("060e2b34.04010101.01030202.02000000");

// Essence elements: one picture, one sound.
constexpr KLVKey pictureElement = key("060e2b34.01020101.0d010301.15010201");
constexpr KLVKey soundElement = key("060e2b34.01020101.0d010301.16010101");

constexpr std::uint32_t width = 320;
constexpr std::uint32_t height = 180;
constexpr std::uint32_t framesPerSecond = 25;
constexpr std::uint32_t samplesPerSecond = 48000;
constexpr std::uint32_t channels = 2;
constexpr std::uint32_t samplesPerFrame = samplesPerSecond / framesPerSecond;
constexpr Rational editRate{framesPerSecond, 1};
constexpr std::uint32_t startTimecode = 10 * 3600 * framesPerSecond;

constexpr std::uint32_t bodySID = 1;
constexpr std::uint32_t indexSID = 2;

/// The number by which a track of the file package names its elements.
std::uint32_t trackNumber(const KLVKey& element) {
    return util::loadBigEndian<std::uint32_t>(&element.octets[12]);
}

// ---- Header metadata ----

std::shared_ptr<TimelineTrack> makeTrack(std::uint32_t id, const KLVKey& data, std::shared_ptr<Component> component,
                                         std::int64_t duration) {
    component->setDataDefinition(data);
    component->setDuration(duration);
    const auto sequence = Sequence::create();
    sequence->setDataDefinition(data);
    sequence->setDuration(duration);
    sequence->addComponent(std::move(component));
    const auto track = TimelineTrack::create();
    track->setTrackID(id);
    track->setTrackNumber(0);
    track->setEditRate(editRate);
    track->setOrigin(0);
    track->setSegment(sequence);
    return track;
}

/// A clip of a track of @p source; of nothing if there is none.
std::shared_ptr<SourceClip> makeClip(const GenericPackage* source, std::uint32_t track) {
    const auto clip = SourceClip::create();
    clip->setStartPosition(0);
    clip->setSourcePackageID(source == nullptr ? UMID() : source->getPackageUID());
    clip->setSourceTrackID(source == nullptr ? 0 : track);
    return clip;
}

/// Gives @p package a timecode, a picture and a sound track, which are clips of @p source.
void addTracks(GenericPackage& package, const GenericPackage* source, std::int64_t duration) {
    const auto timecode = TimecodeComponent::create();
    timecode->setRoundedTimecodeBase(framesPerSecond);
    timecode->setStartTimecode(startTimecode);
    timecode->setDropFrame(false);
    package.addTrack(makeTrack(1, timecodeData, timecode, duration));
    package.addTrack(makeTrack(2, pictureData, makeClip(source, 2), duration));
    package.addTrack(makeTrack(3, soundData, makeClip(source, 3), duration));
}

std::shared_ptr<CDCIPictureDescriptor> makePictureDescriptor(std::int64_t duration) {
    const auto descriptor = CDCIPictureDescriptor::create();
    descriptor->setLinkedTrackID(2);
    descriptor->setSampleRate(editRate);
    descriptor->setContainerDuration(duration);
    descriptor->setEssenceContainer(uncompressedFrames);
    descriptor->setPictureEssenceCoding(interleavedCbYCrY);
    descriptor->setFrameLayout(MXFFrameLayout::FullFrame);
    descriptor->setStoredWidth(width);
    descriptor->setStoredHeight(height);
    descriptor->setAspectRatio({16, 9});
    descriptor->setVideoLineMap({1, 0});
    descriptor->setComponentDepth(8);
    descriptor->setHorizontalSubsampling(2);
    descriptor->setVerticalSubsampling(1);
    descriptor->setBlackReferenceLevel(16);
    descriptor->setWhiteReferenceLevel(235);
    descriptor->setColourRange(225);
    return descriptor;
}

std::shared_ptr<WaveAudioDescriptor> makeSoundDescriptor(std::int64_t duration) {
    constexpr std::uint32_t octets = channels * sizeof(std::int16_t);
    const auto descriptor = WaveAudioDescriptor::create();
    descriptor->setLinkedTrackID(3);
    descriptor->setSampleRate(editRate);
    descriptor->setContainerDuration(duration);
    descriptor->setEssenceContainer(waveFrames);
    descriptor->setAudioSamplingRate({samplesPerSecond, 1});
    descriptor->setLocked(true);
    descriptor->setChannelCount(channels);
    descriptor->setQuantizationBits(16);
    descriptor->setBlockAlign(octets);
    descriptor->setAverageBytesPerSecond(octets * samplesPerSecond);
    return descriptor;
}

std::shared_ptr<Preface> makeMetadata(std::int64_t duration) {
    BRYXDefaultUIDGenerator uids;
    const auto file = SourcePackage::create();
    file->setPackageUID(mxfutil::generateUMID(uids));
    addTracks(*file, nullptr, duration);
    std::dynamic_pointer_cast<TimelineTrack>(file->getTrackAt(1))->setTrackNumber(trackNumber(pictureElement));
    std::dynamic_pointer_cast<TimelineTrack>(file->getTrackAt(2))->setTrackNumber(trackNumber(soundElement));
    const auto descriptor = MultipleDescriptor::create();
    descriptor->setSampleRate(editRate);
    descriptor->setContainerDuration(duration);
    descriptor->setEssenceContainer(multipleMappings);
    descriptor->addSubDescriptor(makePictureDescriptor(duration));
    descriptor->addSubDescriptor(makeSoundDescriptor(duration));
    file->setDescriptor(descriptor);

    const auto material = MaterialPackage::create();
    material->setPackageUID(mxfutil::generateUMID(uids));
    material->setName(L"Bars and tone");
    addTracks(*material, file.get(), duration);

    const auto container = EssenceContainerData::create();
    container->setLinkedPackageUID(file->getPackageUID());
    container->setBodySID(bodySID);
    container->setIndexSID(indexSID);
    const auto storage = ContentStorage::create();
    storage->addPackage(material);
    storage->addPackage(file);
    storage->addEssenceContainerData(container);

    const auto identification = Identification::create();
    identification->setCompanyName(L"Bryx");
    identification->setProductName(L"make_clip");
    identification->setVersionString(L"1.0");
    identification->setToolkitVersion(getBRYXToolkitVersion());
    identification->setPlatform(getBRYXPlatform());
    identification->setProductUID(
        {{0x5e, 0x0c, 0x52, 0x7d, 0x3a, 0x91, 0x4c, 0x1f, 0x8d, 0x66, 0x2b, 0x90, 0xf3, 0x17, 0xd8, 0x4a}});

    const auto preface = Preface::create();
    preface->setVersion(0x0103);
    preface->setOperationalPattern(operationalPattern1a);
    preface->setEssenceContainers({multipleMappings, uncompressedFrames, waveFrames});
    preface->setDMSchemes({});
    preface->addIdentification(identification);
    preface->setContentStorage(storage);
    preface->setPrimaryPackage(material);
    return preface;
}

// ---- Essence ----

using Octets = std::vector<std::uint8_t>;

/// Bars of six colours that move to the left, as Cb Y Cr Y for every two pixels.
Octets makePicture(std::uint32_t frame) {
    constexpr std::uint8_t bars[][3] = {{128, 235, 128}, {44, 162, 142}, {156, 131, 44},
                                        {72, 112, 58},   {184, 84, 198}, {100, 65, 212}};
    Octets picture;
    picture.reserve(std::size_t{2} * width * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; x += 2) {
            const auto& [cb, luminance, cr] = bars[(x + 2 * frame) % width * 6 / width];
            picture.insert(picture.end(), {cb, luminance, cr, luminance});
        }
    }
    return picture;
}

/// A tone of 440 Hz on all channels, 16 bits with the lower octet first.
Octets makeSound(std::uint32_t frame) {
    Octets sound;
    for (std::uint32_t i = 0; i < samplesPerFrame; ++i) {
        const double time = static_cast<double>(frame * samplesPerFrame + i) / samplesPerSecond;
        const auto sample = static_cast<std::int16_t>(3000 * std::sin(2 * 3.14159265358979 * 440 * time));
        for (std::uint32_t channel = 0; channel < channels; ++channel) {
            sound.push_back(static_cast<std::uint8_t>(sample & 0xFF));
            sound.push_back(static_cast<std::uint8_t>(sample >> 8 & 0xFF));
        }
    }
    return sound;
}

MXFSystemMetadataPack makeSystemMetadata(std::uint32_t frame, const TimecodeCalculator& calculator) {
    Timecode timecode;
    calculator.toTimecode(startTimecode + frame, timecode.hours, timecode.minutes, timecode.seconds, timecode.frames);
    MXFSystemMetadataPack pack;
    pack.bitmap =
        MXFSystemBitmap::label | MXFSystemBitmap::userStamp | MXFSystemBitmap::pictureItem | MXFSystemBitmap::soundItem;
    pack.rate = mxfutil::packageRateCode(editRate).value_or(0);
    pack.continuityCount = static_cast<std::uint16_t>(frame);
    pack.label = multipleMappings;
    pack.userStamp.type = MXFDateTimeStamp::timecodeType;
    pack.userStamp.stamp = MXFTimecodeStamp(timecode, framesPerSecond);
    return pack;
}

void writeClip(const std::shared_ptr<std::ostream>& file, std::uint32_t frames) {
    const auto metadata = toBRYXHeaderMetadata(makeMetadata(frames));
    const auto writer = createBRYXWriter(file);
    writer->start(metadata);
    BRYXEssenceContainer container;
    container.bodySID = bodySID;
    container.indexSID = indexSID;
    container.editRate = editRate;
    container.isConstant = true;
    writer->startEssence(container);

    MXFGCStructureHandler& structure = writer->structureReceiver();
    MXFGCEssenceHandler& essence = writer->essenceReceiver();
    MXFSDTICPSystemCoder system(writer->systemReceiver());
    const auto calculator = createTimecodeCalculator(framesPerSecond, false, false);
    const auto element = [&](const KLVKey& elementKey, auto write) {
        structure.startElement(elementKey);
        write();
        structure.endElement(elementKey);
    };
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        structure.startContentPackage();
        element(mxfutil::sdtiCPSystemMetadataKey,
                [&] { system.systemMetadata(makeSystemMetadata(frame, *calculator)); });
        element(pictureElement, [&] {
            const Octets picture = makePicture(frame);
            essence.pictureElement(pictureElement, picture.data(), picture.size(), 0);
        });
        element(soundElement, [&] {
            const Octets sound = makeSound(frame);
            essence.soundElement(soundElement, sound.data(), sound.size(), 0);
        });
        structure.endContentPackage();
    }
    writer->endEssence();
    writer->finish(metadata);
}

std::uint32_t frameCount(const std::string& text) {
    try {
        return boost::numeric_cast<std::uint16_t>(boost::lexical_cast<int>(text));
    } catch (const std::bad_cast&) { // no number, or too large a one
        throw boost::program_options::error(text + " is no number of frames");
    }
}

} // namespace

int main(int argc, char** argv) {
    namespace po = boost::program_options;
    const po::options_description options(
        "Writes a clip from nothing: moving bars and a tone, with timecode.\n\n"
        "  make_clip OUT [FRAMES]\n\n"
        "FRAMES is 50 unless given, and at most 65,535. Exits with 0, with 1 if that fails, or with 2 if it was called "
        "wrongly.\n\nOptions");
    return runProgram(argc, argv, {"make_clip", options, {"out", "frames"}}, [](const po::variables_map& given) {
        if (given.count("out") == 0) {
            throw po::error("no file is given");
        }
        const auto out = given["out"].as<std::string>();
        requireFile(out, "OUT");
        const std::uint32_t frames = given.count("frames") == 0 ? 50 : frameCount(given["frames"].as<std::string>());
        const auto file = createOutput(out);
        try {
            writeClip(file, frames);
        } catch (const std::exception&) {
            rethrow(*file, out);
        }
        return Success;
    });
}

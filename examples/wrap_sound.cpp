/// Makes an MXF file of samples: 16 bits, the lower octet first, two channels, 48,000 a second.
///
///     wrap_sound SAMPLES OUT
///
/// This is how a file is written: a model of the header metadata, a writer, and for each content package the calls that
/// somebody who reads it would get. The duration is known in the end alone.

#include <algorithm>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"

namespace {

constexpr KLVKey operationalPattern1a = klvutil::key("060e2b34.04010101.0d010201.01010900");
constexpr KLVKey waveFrames = klvutil::key("060e2b34.04010101.0d010301.02060100");
constexpr KLVKey soundData = klvutil::key("060e2b34.04010101.01030202.02000000");
constexpr KLVKey soundElement = klvutil::key("060e2b34.01020101.0d010301.16010101");
constexpr std::uint32_t trackNumber = 0x16010101; // octets 12 to 15 of the key of the elements

constexpr Rational editRate{25, 1};
constexpr std::uint32_t samplesPerSecond = 48000;
constexpr std::uint16_t octetsPerSample = 4; // of both channels

std::shared_ptr<TimelineTrack> makeTrack(std::uint32_t number, const UMID& sourcePackage, std::uint32_t sourceTrack) {
    const auto clip = SourceClip::create();
    clip->setDataDefinition(soundData);
    clip->setSourcePackageID(sourcePackage);
    clip->setSourceTrackID(sourceTrack);
    const auto track = TimelineTrack::create();
    track->setTrackID(1);
    track->setTrackNumber(number);
    track->setEditRate(editRate);
    track->setSegment(clip);
    return track;
}

/// What is said of the essence: a source package for what is in the file, and a material package, which plays that.
std::shared_ptr<Preface> makeMetadata() {
    BRYXDefaultUIDGenerator uids;
    const auto descriptor = WaveAudioDescriptor::create();
    descriptor->setLinkedTrackID(1);
    descriptor->setSampleRate(editRate);
    descriptor->setEssenceContainer(waveFrames);
    descriptor->setAudioSamplingRate({samplesPerSecond, 1});
    descriptor->setChannelCount(2);
    descriptor->setQuantizationBits(16);
    descriptor->setBlockAlign(octetsPerSample);
    descriptor->setAverageBytesPerSecond(octetsPerSample * samplesPerSecond);
    const auto source = SourcePackage::create();
    source->setPackageUID(mxfutil::generateUMID(uids));
    source->setDescriptor(descriptor);
    source->addTrack(makeTrack(trackNumber, UMID(), 0));
    const auto material = MaterialPackage::create();
    material->setPackageUID(mxfutil::generateUMID(uids));
    material->addTrack(makeTrack(0, source->getPackageUID(), 1));
    const auto container = EssenceContainerData::create();
    container->setLinkedPackageUID(source->getPackageUID());
    container->setBodySID(1);
    container->setIndexSID(2);
    const auto storage = ContentStorage::create();
    storage->addPackage(material);
    storage->addPackage(source);
    storage->addEssenceContainerData(container);
    const auto identification = Identification::create();
    identification->setCompanyName(L"Example");
    identification->setProductName(L"wrap_sound");
    identification->setVersionString(L"1.0");
    const auto preface = Preface::create();
    preface->setVersion(0x0103);
    preface->setOperationalPattern(operationalPattern1a);
    preface->setEssenceContainers({waveFrames});
    preface->addIdentification(identification);
    preface->setContentStorage(storage);
    preface->setPrimaryPackage(material);
    return preface;
}

void setDuration(Preface& preface, std::int64_t editUnits) {
    const auto storage = preface.getContentStorage();
    for (std::size_t i = 0; i < storage->getPackageCount(); ++i) {
        const auto package = storage->getPackageAt(i);
        package->getTrackAt(0)->getSegment()->setDuration(editUnits);
        if (const auto source = std::dynamic_pointer_cast<SourcePackage>(package)) {
            std::dynamic_pointer_cast<FileDescriptor>(source->getDescriptor())->setContainerDuration(editUnits);
        }
    }
}

/// Writes a content package for each 25th of a second. The last one is filled with silence.
std::int64_t writeEssence(BRYXWriter& writer, std::istream& samples) {
    std::vector<std::uint8_t> element(samplesPerSecond / 25 * octetsPerSample);
    std::int64_t editUnits = 0;
    const auto read = [&] {
        std::fill(element.begin(), element.end(), std::uint8_t{0});
        samples.read(reinterpret_cast<char*>(element.data()), static_cast<std::streamsize>(element.size()));
        return samples.gcount() > 0;
    };
    for (; read(); ++editUnits) {
        writer.structureReceiver().startContentPackage();
        writer.structureReceiver().startElement(soundElement);
        writer.essenceReceiver().soundElement(soundElement, element.data(), element.size(), 0);
        writer.structureReceiver().endElement(soundElement);
        writer.structureReceiver().endContentPackage();
    }
    return editUnits;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: wrap_sound SAMPLES OUT\n";
        return 2;
    }
    std::ifstream samples(argv[1], std::ios::binary);
    const auto file = std::make_shared<std::ofstream>(argv[2], std::ios::binary);
    if (!samples || !*file) {
        std::cerr << (samples ? argv[2] : argv[1]) << " cannot be opened\n";
        return 1;
    }
    try {
        const std::shared_ptr<Preface> preface = makeMetadata();
        setDuration(*preface, -1); // not known yet
        const BRYXHeaderMetadata metadata = toBRYXHeaderMetadata(preface);
        const auto writer = createBRYXWriter(file);
        writer->start(metadata);
        BRYXEssenceContainer container;
        container.bodySID = 1;
        container.indexSID = 2;
        container.editRate = editRate;
        container.isConstant = true; // all content packages have one size
        writer->startEssence(container);
        const std::int64_t editUnits = writeEssence(*writer, samples);
        writer->endEssence();
        setDuration(*preface, editUnits); // the model is looked at when it is written
        writer->finish(metadata);
    } catch (const std::exception& error) {
        std::cerr << argv[2] << " cannot be written: " << error.what() << '\n';
        return 1;
    }
}

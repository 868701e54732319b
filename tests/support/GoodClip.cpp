#include "support/GoodClip.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "mxf/essence/MXFSDTICPSystemCoder.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/Octets.h"
#include "support/Streams.h"
#include "timecode/TimecodeCalculator.h"
#include "util/byte_order.h"

namespace {

// ---- Header metadata ----

std::uint32_t number(const KLVKey& key) {
    return util::loadBigEndian<std::uint32_t>(&key.octets[12]);
}

void addTrack(const ClipOptions& options, GenericPackage& package, const GenericPackage* source, std::uint32_t id,
              const KLVKey& data, std::uint32_t trackNumber) {
    std::shared_ptr<Component> component;
    if (data == GoodClip::timecodeData) {
        const auto timecode = TimecodeComponent::create();
        timecode->setRoundedTimecodeBase(25);
        timecode->setStartTimecode(90000);
        timecode->setDropFrame(false);
        component = timecode;
    } else {
        const auto clip = SourceClip::create();
        clip->setSourcePackageID(source == nullptr ? UMID() : source->getPackageUID());
        clip->setSourceTrackID(source == nullptr ? 0 : id);
        clip->setStartPosition(0);
        component = clip;
    }
    component->setDataDefinition(data);
    component->setDuration(options.frames);
    const auto track = TimelineTrack::create();
    track->setTrackID(id);
    track->setTrackNumber(trackNumber);
    track->setEditRate({25, 1});
    track->setOrigin(0);
    if (options.hasSequences) {
        const auto sequence = Sequence::create();
        sequence->setDataDefinition(data);
        sequence->setDuration(options.frames);
        sequence->addComponent(component);
        track->setSegment(sequence);
    } else {
        track->setSegment(std::dynamic_pointer_cast<Segment>(component));
    }
    package.addTrack(track);
}

void addTracks(const ClipOptions& options, GenericPackage& package, const GenericPackage* source) {
    const bool isFile = source == nullptr;
    addTrack(options, package, source, 1, GoodClip::timecodeData, 0);
    addTrack(options, package, source, 2, GoodClip::pictureData, isFile ? number(GoodClip::picture) : 0);
    if (options.hasSound) {
        addTrack(options, package, source, 3, GoodClip::soundData, isFile ? number(GoodClip::sound1) : 0);
        addTrack(options, package, source, 4, GoodClip::soundData, isFile ? number(GoodClip::sound2) : 0);
    }
}

std::shared_ptr<WaveAudioDescriptor> soundDescriptor(const ClipOptions& options, std::uint32_t trackID) {
    const auto sound = WaveAudioDescriptor::create();
    sound->setLinkedTrackID(trackID);
    sound->setSampleRate({25, 1});
    sound->setContainerDuration(options.frames);
    sound->setEssenceContainer(GoodClip::waves);
    sound->setAudioSamplingRate({48000, 1});
    sound->setLocked(true);
    sound->setChannelCount(2);
    sound->setQuantizationBits(16);
    sound->setBlockAlign(4);
    sound->setAverageBytesPerSecond(192000);
    const auto label = [&](const std::shared_ptr<MCALabelSubDescriptor>& set, std::uint8_t link) {
        MXFUID uid{};
        uid.octets[0] = static_cast<std::uint8_t>(trackID);
        uid.octets[15] = link;
        set->setLabelDictionaryID(keys::label);
        set->setTagSymbol(L"ch");
        set->setLinkID(uid);
        sound->addGenericSubDescriptor(set);
        return uid;
    };
    const auto group = GroupOfSoundfieldGroupsLabelSubDescriptor::create();
    const MXFUID groupLink = label(group, 1);
    const auto soundfield = SoundfieldGroupLabelSubDescriptor::create();
    soundfield->setGroupOfSoundfieldGroups({groupLink});
    const MXFUID soundfieldLink = label(soundfield, 2);
    for (std::uint8_t i = 1; i <= 2; ++i) {
        const auto channel = AudioChannelLabelSubDescriptor::create();
        channel->setChannelID(i);
        channel->setSoundfieldGroup(soundfieldLink);
        label(channel, static_cast<std::uint8_t>(2 + i));
    }
    return sound;
}

std::shared_ptr<CDCIPictureDescriptor> pictureDescriptor(const ClipOptions& options) {
    const auto descriptor = CDCIPictureDescriptor::create();
    descriptor->setLinkedTrackID(2);
    descriptor->setSampleRate({25, 1});
    descriptor->setContainerDuration(options.frames);
    descriptor->setEssenceContainer(GoodClip::frames);
    descriptor->setFrameLayout(MXFFrameLayout::SeparateFields);
    descriptor->setStoredWidth(720);
    descriptor->setStoredHeight(304);
    descriptor->setSampledWidth(720);
    descriptor->setSampledHeight(288);
    descriptor->setSampledYOffset(16);
    descriptor->setDisplayWidth(720);
    descriptor->setDisplayHeight(288);
    descriptor->setAspectRatio({16, 9});
    descriptor->setVideoLineMap({7, 320});
    descriptor->setComponentDepth(8);
    descriptor->setHorizontalSubsampling(2);
    descriptor->setBlackReferenceLevel(16);
    descriptor->setWhiteReferenceLevel(235);
    return descriptor;
}

void addContainer(ContentStorage& storage, const UMID& package, std::uint32_t bodySID, std::uint32_t indexSID) {
    const auto container = EssenceContainerData::create();
    container->setLinkedPackageUID(package);
    container->setBodySID(bodySID);
    container->setIndexSID(indexSID);
    storage.addEssenceContainerData(container);
}

std::shared_ptr<Preface> model(const ClipOptions& options) {
    BRYXDefaultUIDGenerator uids;
    const auto file = SourcePackage::create();
    file->setPackageUID(mxfutil::generateUMID(uids));
    addTracks(options, *file, nullptr);
    const auto descriptor = MultipleDescriptor::create();
    descriptor->setSampleRate({25, 1});
    descriptor->setContainerDuration(options.frames);
    descriptor->setEssenceContainer(GoodClip::multiple);
    descriptor->addSubDescriptor(pictureDescriptor(options));
    if (options.hasSound) {
        descriptor->addSubDescriptor(soundDescriptor(options, 3));
        descriptor->addSubDescriptor(soundDescriptor(options, 4));
    }
    file->setDescriptor(descriptor);
    const auto material = MaterialPackage::create();
    material->setPackageUID(mxfutil::generateUMID(uids));
    addTracks(options, *material, file.get());
    const auto storage = ContentStorage::create();
    storage->addPackage(material);
    storage->addPackage(file);
    addContainer(*storage, file->getPackageUID(), 1, 2);
    if (options.hasEmptyContainer) {
        const auto empty = SourcePackage::create();
        empty->setPackageUID(mxfutil::generateUMID(uids));
        addTrack(options, *empty, nullptr, 1, GoodClip::timecodeData, 0);
        const auto data = DataDescriptor::create();
        data->setSampleRate({25, 1});
        data->setEssenceContainer(GoodClip::multiple);
        empty->setDescriptor(data);
        storage->addPackage(empty);
        addContainer(*storage, empty->getPackageUID(), 3, 0);
    }
    const auto identification = Identification::create();
    identification->setProductUID(identification->getThisGenerationUID());
    const auto preface = Preface::create();
    preface->setVersion(0x0103);
    preface->setOperationalPattern(keys::op1a);
    preface->setEssenceContainers({GoodClip::multiple, GoodClip::frames, GoodClip::waves, keys::label});
    preface->setRIPPresent(true);
    preface->setObjectModelVersion(1);
    preface->addIdentification(identification);
    preface->setContentStorage(storage);
    preface->setPrimaryPackage(material);
    if (options.change) {
        options.change(*preface);
    }
    return preface;
}

// ---- Essence ----

MXFSystemMetadataPack systemPack(const ClipOptions& options, int frame) {
    MXFSystemMetadataPack pack;
    pack.bitmap = MXFSystemBitmap::label | MXFSystemBitmap::userStamp | MXFSystemBitmap::pictureItem;
    if (options.hasSound) {
        pack.bitmap |= MXFSystemBitmap::soundItem;
    }
    pack.rate = mxfutil::packageRateCode({25, 1}).value();
    pack.continuityCount = static_cast<std::uint16_t>(frame);
    pack.label = GoodClip::multiple;
    pack.userStamp.type = MXFDateTimeStamp::timecodeType;
    Timecode timecode;
    createTimecodeCalculator(25, 1)->toTimecode(90000U + static_cast<std::uint32_t>(frame), timecode.hours,
                                                timecode.minutes, timecode.seconds, timecode.frames);
    pack.userStamp.stamp = MXFTimecodeStamp(timecode, 25);
    return pack;
}

void writePackage(const ClipOptions& options, BRYXWriter& writer, int frame) {
    MXFGCStructureHandler& structure = writer.structureReceiver();
    MXFGCEssenceHandler& essence = writer.essenceReceiver();
    const std::size_t more = options.isConstant ? 0 : static_cast<std::size_t>(frame) * 37 % 100;
    const std::size_t units = options.isClip ? static_cast<std::size_t>(options.frames) : 1;
    const std::size_t size = options.pictureSize * units + more;
    constexpr std::size_t soundSize = 192;
    const std::vector<std::uint8_t> content(std::max(size, soundSize), 7);
    structure.startContentPackage();
    if (options.hasSystemItems) {
        structure.startElement(mxfutil::sdtiCPSystemMetadataKey);
        MXFSDTICPSystemCoder(writer.systemReceiver()).systemMetadata(systemPack(options, frame));
        structure.endElement(mxfutil::sdtiCPSystemMetadataKey);
    }
    structure.startElement(GoodClip::picture);
    essence.pictureElement(GoodClip::picture, content.data(), size, 0);
    structure.endElement(GoodClip::picture);
    for (const KLVKey& key : {GoodClip::sound1, GoodClip::sound2}) {
        if (options.hasSound) {
            structure.startElement(key);
            essence.soundElement(key, content.data(), soundSize, 0);
            structure.endElement(key);
        }
    }
    structure.endContentPackage();
}

} // namespace

ClipOptions smallClip() {
    ClipOptions options;
    options.frames = 2;
    options.pictureSize = 20;
    options.partitionDuration = 1;
    options.hasSound = false;
    options.hasGenericStream = true;
    return options;
}

GoodClip::GoodClip(ClipOptions options) : options_(std::move(options)) {
    if (options_.canSeek) {
        const auto stream = std::make_shared<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
        write(*createBRYXWriter(stream));
        octets = stream->str();
    } else {
        const auto pipe = std::make_shared<OutputPipe>();
        write(*createBRYXWriter(pipe));
        octets = pipe->octets();
    }
    walk();
}

void GoodClip::write(BRYXWriter& writer) const {
    const auto preface = model(options_);
    BRYXWriterConfiguration configuration;
    configuration.kagSize = 16;
    configuration.headerSpace = 0; // all is known in the beginning
    configuration.partitionDuration = options_.partitionDuration;
    configuration.indexPlacement = options_.placement;
    writer.setConfiguration(configuration);
    writer.start(toBRYXHeaderMetadata(preface));
    if (options_.hasGenericStream) {
        KLVHandler& generic = writer.startGenericStream(7);
        generic.berLengthForm(0x83);
        generic.startIndividualItem(keys::item, 3);
        generic.value(reinterpret_cast<const std::uint8_t*>("abc"), 3);
        generic.endIndividualItem(keys::item);
        writer.endGenericStream();
    }
    if (options_.hasEmptyContainer) {
        writer.startEssence({3, 0, {25, 1}, false, {}, {}});
        writer.endEssence();
    }
    const auto describe = [](std::int64_t editUnit, MXFIndexEntry& entry) {
        entry.keyFrameOffset = static_cast<std::int8_t>(-(editUnit % 5));
    };
    if (options_.hasEssence) {
        std::vector<MXFIndexTableSegment> segments(options_.isClip ? 1 : 0);
        for (MXFIndexTableSegment& segment : segments) {
            segment.indexDuration = options_.frames;
            segment.editUnitByteCount = static_cast<std::uint32_t>(options_.pictureSize);
        }
        writer.startEssence({1, 2, {25, 1}, options_.isConstant, describe, segments});
        for (int frame = 0; frame < (options_.isClip ? 1 : options_.frames); ++frame) {
            writePackage(options_, writer, frame);
        }
        writer.endEssence();
    }
    writer.finish(toBRYXHeaderMetadata(preface));
}

void GoodClip::walk() {
    for (std::uint64_t position = 0; position < octets.size();) {
        Triplet triplet{position, position + 17, 0, {}};
        std::copy_n(octets.begin() + static_cast<std::ptrdiff_t>(position), 16, triplet.key.octets.begin());
        const auto octet = [&](std::uint64_t at) { return static_cast<std::uint8_t>(octets.at(at)); };
        std::uint64_t length = octet(position + 16);
        if (length >= 0x80) {
            const std::uint64_t size = length & 0x7FU;
            length = 0;
            for (std::uint64_t i = 0; i < size; ++i) {
                length = length << 8U | octet(triplet.value++);
            }
        }
        triplet.end = position = triplet.value + length;
        triplets_.push_back(triplet);
    }
}

std::vector<GoodClip::Triplet> GoodClip::all(const KLVKey& key) const {
    std::vector<Triplet> found;
    std::copy_if(triplets_.begin(), triplets_.end(), std::back_inserter(found),
                 [&](const Triplet& t) { return t.key == key; });
    return found;
}

std::vector<GoodClip::Triplet> GoodClip::packs() const {
    std::vector<Triplet> found;
    std::copy_if(triplets_.begin(), triplets_.end(), std::back_inserter(found),
                 [](const Triplet& t) { return mxfutil::isPartitionPackKey(t.key); });
    return found;
}

std::vector<GoodClip::Triplet> GoodClip::inEachRegion(const MXFSetDescription& set, std::size_t index) const {
    const auto sets = all(set.key());
    const std::size_t perRegion = sets.size() / all(keys::primer).size();
    std::vector<Triplet> found;
    for (std::size_t i = index; i < sets.size(); i += perRegion) {
        found.push_back(sets[i]);
    }
    return found;
}

std::uint16_t GoodClip::tagOf(const MXFSetDescription& set, const char* name) const {
    for (const MXFProperty* const property : set.properties()) {
        if (std::strcmp(property->name(), name) == 0) {
            if (property->tag() != 0 && property->tag() < 0x8000) {
                return property->tag();
            }
            const std::string label = octets::key(property->label());
            const std::size_t entry = octets.find(label, all(keys::primer).front().value);
            return util::loadBigEndian<std::uint16_t>(reinterpret_cast<const std::uint8_t*>(&octets[entry - 2]));
        }
    }
    throw std::logic_error(std::string("no property ") + name);
}

std::pair<std::uint64_t, std::uint64_t> GoodClip::itemAt(const Triplet& set, std::uint16_t tag) const {
    const auto number = [&](std::uint64_t at) {
        return util::loadBigEndian<std::uint16_t>(reinterpret_cast<const std::uint8_t*>(&octets[at]));
    };
    for (std::uint64_t item = set.value; item < set.end; item += 4U + number(item + 2)) {
        if (number(item) == tag) {
            return {item + 4, number(item + 2)};
        }
    }
    throw std::logic_error("no item " + std::to_string(tag));
}

// ---- Altering ----

void GoodClip::put(const Triplet& triplet, std::uint64_t offset, const Octets& value) {
    octets.replace(triplet.position + offset, value.size(), octets::of(value));
    altered.push_back(triplet.position);
}

void GoodClip::setProperty(const MXFSetDescription& set, std::size_t index, const char* name, const Octets& value,
                           bool everywhere) {
    for (const Triplet& triplet : inEachRegion(set, index)) {
        if (everywhere || altered.empty()) {
            put(triplet, itemAt(triplet, tagOf(set, name)).first - triplet.position, value);
        }
    }
}

void GoodClip::hideSet(const MXFSetDescription& set, std::size_t index) {
    for (const Triplet& triplet : inEachRegion(set, index)) {
        put(triplet, 14, {0x7E});
    }
}

GoodClip::Octets GoodClip::getProperty(const MXFSetDescription& set, std::size_t index, const char* name) const {
    const auto [item, size] = itemAt(all(set.key()).at(index), tagOf(set, name));
    const std::string value = octets.substr(item, size);
    return {value.begin(), value.end()};
}

void GoodClip::forgetProperty(const MXFSetDescription& set, std::size_t index, const char* name) {
    for (const Triplet& triplet : inEachRegion(set, index)) {
        const std::uint64_t item = itemAt(triplet, tagOf(set, name)).first;
        put(triplet, item - 4 - triplet.position, {0x3B, 0x07}); // Preface.objectModelVersion
    }
}

void GoodClip::emptyProperty(const MXFSetDescription& set, std::size_t index, const char* name) {
    for (const Triplet& triplet : inEachRegion(set, index)) {
        put(triplet, itemAt(triplet, tagOf(set, name)).first - 2 - triplet.position,
            {0, 8, 0, 0, 0, 0, 0, 0, 0, 16, 0x3B, 0x07, 0, 12}); // 3B07 is Preface.objectModelVersion
    }
}

void GoodClip::showAt(const MXFSetDescription& set, std::size_t index) {
    altered.clear();
    for (const Triplet& triplet : inEachRegion(set, index)) {
        altered.push_back(triplet.position);
    }
}

void GoodClip::setPackField(std::size_t index, const char* field, const Octets& value) {
    const Triplet pack = packs().at(index);
    MXFPartitionPack layout;
    std::uint64_t offset = pack.value - pack.position;
    bool isFound = false;
    MXFPartitionPack::fields(layout, [&](const char* name, const auto& member) {
        isFound = isFound || std::strcmp(name, field) == 0;
        offset += isFound ? 0 : klvutil::writeValue(member).size();
    });
    put(pack, offset, value);
}

void GoodClip::setSegmentItem(std::size_t index, std::uint16_t tag, const Octets& value, std::uint64_t offset) {
    const Triplet segment = all(mxfutil::indexTableSegmentKey).at(index);
    put(segment, itemAt(segment, tag).first + offset - segment.position, value);
}

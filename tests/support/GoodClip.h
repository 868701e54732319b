#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mxf/essence/MXFSDTICPSystemCoder.h"
#include "sdk/BRYX.h"
#include "support/Octets.h"
#include "support/Streams.h"
#include "timecode/TimecodeCalculator.h"
#include "util/byte_order.h"

/// What a GoodClip is like.
struct ClipOptions {
    using Placement = BRYXWriterConfiguration::IndexPlacement;

    int frames = 10;
    std::size_t pictureSize = 700; ///< octets, and up to 99 more unless all edit units have one size
    std::uint64_t partitionDuration = 5;
    Placement placement = Placement::AfterEssence;
    bool isConstant = false; ///< all edit units have one size
    bool isClip = false;     ///< all edit units, of one size, are in one element
    bool hasSystemItems = true;
    bool hasSound = true;
    bool hasSequences = true; ///< or else a component alone on each track
    bool canSeek = true;
    bool hasEssence = true;
    bool hasGenericStream = false;
    bool hasEmptyContainer = false;       ///< an essence container without essence, with body SID 3, before the other
    std::function<void(Preface&)> change; ///< of the model before it is written
};

/// The smallest clip with two body partitions, system items and a generic stream, for attacks on each of its octets.
inline ClipOptions smallClip() {
    ClipOptions options;
    options.frames = 2;
    options.pictureSize = 20;
    options.partitionDuration = 1;
    options.hasSound = false;
    options.hasGenericStream = true;
    return options;
}

/// A clip as good as can be: the strictest checks have nothing to say of it. Values in it can be altered.
class GoodClip {
public:
    static constexpr KLVKey multiple = klvutil::key("060e2b34.04010103.0d010301.027f0100");
    static constexpr KLVKey frames = klvutil::key("060e2b34.04010101.0d010301.02057f01");
    static constexpr KLVKey waves = klvutil::key("060e2b34.04010101.0d010301.02060100");
    static constexpr KLVKey picture = klvutil::key("060e2b34.01020101.0d010301.15010201");
    static constexpr KLVKey sound1 = klvutil::key("060e2b34.01020101.0d010301.16020101");
    static constexpr KLVKey sound2 = klvutil::key("060e2b34.01020101.0d010301.16020102");
    static constexpr KLVKey timecodeData = klvutil::key("060e2b34.04010101.01030201.01000000");
    static constexpr KLVKey pictureData = klvutil::key("060e2b34.04010101.01030202.01000000");
    static constexpr KLVKey soundData = klvutil::key("060e2b34.04010101.01030202.02000000");
    static constexpr KLVKey dataData = klvutil::key("060e2b34.04010101.01030202.03000000");

    struct Triplet {
        std::uint64_t position;
        std::uint64_t value; ///< where it begins
        std::uint64_t end;
        KLVKey key;
    };

    explicit GoodClip(ClipOptions options = {}) : options_(std::move(options)) {
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

    std::string octets;
    std::vector<std::uint64_t> altered; ///< positions of the triplets in which something was altered

    /// The triplets with @p key, in the order of the file.
    std::vector<Triplet> all(const KLVKey& key) const {
        std::vector<Triplet> found;
        std::copy_if(triplets_.begin(), triplets_.end(), std::back_inserter(found),
                     [&](const Triplet& t) { return t.key == key; });
        return found;
    }

    /// Replaces octets of @p triplet, counted from its key.
    void put(const Triplet& triplet, std::uint64_t offset, const std::vector<std::uint8_t>& value) {
        octets.replace(triplet.position + offset, value.size(), octets::of(value));
        altered.push_back(triplet.position);
    }

    /// Sets a property of the @p index-th set of a class in each header metadata region, or in the first alone.
    template <class Set, class Value>
    void set(std::size_t index, const char* property, const Value& value, bool everywhere = true) {
        forEachRegion<Set>(index, [&](const Triplet& set) {
            if (everywhere || altered.empty()) {
                put(set, itemAt(set, tagOf<Set>(property)) - set.position, klvutil::writeValue(value));
            }
        });
    }

    /// Gives the @p index-th set of a class a key that nobody knows.
    template <class Set>
    void hide(std::size_t index = 0) {
        forEachRegion<Set>(index, [&](const Triplet& set) { put(set, 14, {0x7E}); });
    }

    /// The value of a property as it is in the first header metadata region.
    template <class Set, class Value>
    Value get(std::size_t index, const char* property) const {
        const Triplet set = all(Set::classKey).at(index);
        const std::uint64_t item = itemAt(set, tagOf<Set>(property));
        const auto begin = octets.begin() + static_cast<std::ptrdiff_t>(item);
        return klvutil::readValue<Value>(
            {begin, begin + static_cast<std::ptrdiff_t>(klvutil::writeValue(Value{}).size())});
    }

    /// Gives a property of four octets the tag of one that sets of its class do not have.
    template <class Set>
    void forget(std::size_t index, const char* property) {
        forEachRegion<Set>(index, [&](const Triplet& set) {
            put(set, itemAt(set, tagOf<Set>(property)) - 4 - set.position, {0x3B, 0x07}); // Preface.objectModelVersion
        });
    }

    /// Leaves a property without the one reference that it holds, whose octets make another property.
    template <class Set>
    void empty(std::size_t index, const char* property) {
        forEachRegion<Set>(index, [&](const Triplet& set) {
            put(set, itemAt(set, tagOf<Set>(property)) - 2 - set.position,
                {0, 8, 0, 0, 0, 0, 0, 0, 0, 16, 0x3B, 0x07, 0, 12}); // 3B07 is Preface.objectModelVersion
        });
    }

    /// What was altered shows in the @p index-th set of a class.
    template <class Set>
    void at(std::size_t index = 0) {
        altered.clear();
        forEachRegion<Set>(index, [&](const Triplet& set) { altered.push_back(set.position); });
    }
    /// The same, in the last header metadata region alone.
    void inLastRegion() { altered.erase(altered.begin(), altered.end() - 1); }

    /// Writes such a clip again.
    void write(BRYXWriter& writer) const {
        const auto preface = model();
        BRYXWriterConfiguration configuration;
        configuration.kagSize = 16;
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
                writePackage(writer, frame);
            }
            writer.endEssence();
        }
        writer.finish(toBRYXHeaderMetadata(preface));
    }

    std::vector<Triplet> packs() const {
        std::vector<Triplet> found;
        std::copy_if(triplets_.begin(), triplets_.end(), std::back_inserter(found),
                     [](const Triplet& t) { return mxfutil::isPartitionPackKey(t.key); });
        return found;
    }

    /// Sets a field of the @p index-th partition pack.
    template <class Value>
    void setPack(std::size_t index, const char* field, const Value& value) {
        const Triplet pack = packs().at(index);
        MXFPartitionPack layout;
        std::uint64_t offset = pack.value - pack.position;
        bool isFound = false;
        MXFPartitionPack::fields(layout, [&](const char* name, const auto& member) {
            isFound = isFound || std::strcmp(name, field) == 0;
            offset += isFound ? 0 : klvutil::writeValue(member).size();
        });
        put(pack, offset, klvutil::writeValue(value));
    }

    /// Sets octets of a property of the @p index-th index table segment, @p offset octets into its value.
    template <class Value>
    void setSegment(std::size_t index, std::uint16_t tag, const Value& value, std::uint64_t offset = 0) {
        const Triplet segment = all(mxfutil::indexTableSegmentKey).at(index);
        put(segment, itemAt(segment, tag) + offset - segment.position, klvutil::writeValue(value));
    }

    /// Sets a field of the @p index-th entry of a segment; @p offset as in an index entry.
    template <class Value>
    void setEntry(std::size_t segment, std::size_t index, std::uint64_t offset, const Value& value) {
        constexpr std::uint64_t oneSlice = mxfutil::indexEntrySize(1, 0);
        setSegment(segment, 0x3F0A, value, 8 + index * oneSlice + offset);
    }

private:
    /// Calls @p visit with the @p index-th set of a class in each header metadata region.
    template <class Set, class Visit>
    void forEachRegion(std::size_t index, Visit visit) const {
        const auto sets = all(Set::classKey);
        const std::size_t perRegion = sets.size() / all(keys::primer).size();
        for (std::size_t i = index; i < sets.size(); i += perRegion) {
            visit(sets[i]);
        }
    }

    void walk() {
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

    template <class Set>
    std::uint16_t tagOf(const char* name) const {
        for (const MXFProperty* const property : mxfutil::describeSet<Set>().properties()) {
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

    std::uint64_t itemAt(const Triplet& set, std::uint16_t tag) const {
        const auto number = [&](std::uint64_t at) {
            return util::loadBigEndian<std::uint16_t>(reinterpret_cast<const std::uint8_t*>(&octets[at]));
        };
        for (std::uint64_t item = set.value; item < set.end; item += 4U + number(item + 2)) {
            if (number(item) == tag) {
                return item + 4;
            }
        }
        throw std::logic_error("no item " + std::to_string(tag));
    }

    // ---- Header metadata ----

    static std::uint32_t number(const KLVKey& key) { return util::loadBigEndian<std::uint32_t>(&key.octets[12]); }

    void addTrack(GenericPackage& package, const GenericPackage* source, std::uint32_t id, const KLVKey& data,
                  std::uint32_t trackNumber) const {
        std::shared_ptr<Component> component;
        if (data == timecodeData) {
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
        component->setDuration(options_.frames);
        const auto track = TimelineTrack::create();
        track->setTrackID(id);
        track->setTrackNumber(trackNumber);
        track->setEditRate({25, 1});
        track->setOrigin(0);
        if (options_.hasSequences) {
            const auto sequence = Sequence::create();
            sequence->setDataDefinition(data);
            sequence->setDuration(options_.frames);
            sequence->addComponent(component);
            track->setSegment(sequence);
        } else {
            track->setSegment(std::dynamic_pointer_cast<Segment>(component));
        }
        package.addTrack(track);
    }

    void addTracks(GenericPackage& package, const GenericPackage* source) const {
        const bool isFile = source == nullptr;
        addTrack(package, source, 1, timecodeData, 0);
        addTrack(package, source, 2, pictureData, isFile ? number(picture) : 0);
        if (options_.hasSound) {
            addTrack(package, source, 3, soundData, isFile ? number(sound1) : 0);
            addTrack(package, source, 4, soundData, isFile ? number(sound2) : 0);
        }
    }

    std::shared_ptr<WaveAudioDescriptor> soundDescriptor(std::uint32_t trackID) const {
        const auto sound = WaveAudioDescriptor::create();
        sound->setLinkedTrackID(trackID);
        sound->setSampleRate({25, 1});
        sound->setContainerDuration(options_.frames);
        sound->setEssenceContainer(waves);
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

    std::shared_ptr<CDCIPictureDescriptor> pictureDescriptor() const {
        const auto descriptor = CDCIPictureDescriptor::create();
        descriptor->setLinkedTrackID(2);
        descriptor->setSampleRate({25, 1});
        descriptor->setContainerDuration(options_.frames);
        descriptor->setEssenceContainer(frames);
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

    std::shared_ptr<Preface> model() const {
        BRYXDefaultUIDGenerator uids;
        const auto file = SourcePackage::create();
        file->setPackageUID(mxfutil::generateUMID(uids));
        addTracks(*file, nullptr);
        const auto descriptor = MultipleDescriptor::create();
        descriptor->setSampleRate({25, 1});
        descriptor->setContainerDuration(options_.frames);
        descriptor->setEssenceContainer(multiple);
        descriptor->addSubDescriptor(pictureDescriptor());
        if (options_.hasSound) {
            descriptor->addSubDescriptor(soundDescriptor(3));
            descriptor->addSubDescriptor(soundDescriptor(4));
        }
        file->setDescriptor(descriptor);
        const auto material = MaterialPackage::create();
        material->setPackageUID(mxfutil::generateUMID(uids));
        addTracks(*material, file.get());
        const auto storage = ContentStorage::create();
        storage->addPackage(material);
        storage->addPackage(file);
        addContainer(*storage, file->getPackageUID(), 1, 2);
        if (options_.hasEmptyContainer) {
            const auto empty = SourcePackage::create();
            empty->setPackageUID(mxfutil::generateUMID(uids));
            addTrack(*empty, nullptr, 1, timecodeData, 0);
            const auto data = DataDescriptor::create();
            data->setSampleRate({25, 1});
            data->setEssenceContainer(multiple);
            empty->setDescriptor(data);
            storage->addPackage(empty);
            addContainer(*storage, empty->getPackageUID(), 3, 0);
        }
        const auto identification = Identification::create();
        identification->setProductUID(identification->getThisGenerationUID());
        const auto preface = Preface::create();
        preface->setVersion(0x0103);
        preface->setOperationalPattern(keys::op1a);
        preface->setEssenceContainers({multiple, frames, waves, keys::label});
        preface->setRIPPresent(true);
        preface->setObjectModelVersion(1);
        preface->addIdentification(identification);
        preface->setContentStorage(storage);
        preface->setPrimaryPackage(material);
        if (options_.change) {
            options_.change(*preface);
        }
        return preface;
    }

    static void addContainer(ContentStorage& storage, const UMID& package, std::uint32_t bodySID,
                             std::uint32_t indexSID) {
        const auto container = EssenceContainerData::create();
        container->setLinkedPackageUID(package);
        container->setBodySID(bodySID);
        container->setIndexSID(indexSID);
        storage.addEssenceContainerData(container);
    }

    // ---- Essence ----

    void writePackage(BRYXWriter& writer, int frame) const {
        MXFGCStructureHandler& structure = writer.structureReceiver();
        MXFGCEssenceHandler& essence = writer.essenceReceiver();
        const std::size_t more = options_.isConstant ? 0 : static_cast<std::size_t>(frame) * 37 % 100;
        const std::size_t units = options_.isClip ? static_cast<std::size_t>(options_.frames) : 1;
        const std::size_t size = options_.pictureSize * units + more;
        constexpr std::size_t soundSize = 192;
        const std::vector<std::uint8_t> content(std::max(size, soundSize), 7);
        structure.startContentPackage();
        if (options_.hasSystemItems) {
            structure.startElement(mxfutil::sdtiCPSystemMetadataKey);
            MXFSDTICPSystemCoder(writer.systemReceiver()).systemMetadata(systemPack(frame));
            structure.endElement(mxfutil::sdtiCPSystemMetadataKey);
        }
        structure.startElement(picture);
        essence.pictureElement(picture, content.data(), size, 0);
        structure.endElement(picture);
        for (const KLVKey& key : {sound1, sound2}) {
            if (options_.hasSound) {
                structure.startElement(key);
                essence.soundElement(key, content.data(), soundSize, 0);
                structure.endElement(key);
            }
        }
        structure.endContentPackage();
    }

    MXFSystemMetadataPack systemPack(int frame) const {
        MXFSystemMetadataPack pack;
        pack.bitmap = MXFSystemBitmap::label | MXFSystemBitmap::userStamp | MXFSystemBitmap::pictureItem;
        if (options_.hasSound) {
            pack.bitmap |= MXFSystemBitmap::soundItem;
        }
        pack.rate = mxfutil::packageRateCode({25, 1}).value();
        pack.continuityCount = static_cast<std::uint16_t>(frame);
        pack.label = multiple;
        pack.userStamp.type = MXFDateTimeStamp::timecodeType;
        Timecode timecode;
        createTimecodeCalculator(25, 1)->toTimecode(90000U + static_cast<std::uint32_t>(frame), timecode.hours,
                                                    timecode.minutes, timecode.seconds, timecode.frames);
        pack.userStamp.stamp = MXFTimecodeStamp(timecode, 25);
        return pack;
    }

    ClipOptions options_;
    std::vector<Triplet> triplets_;
};

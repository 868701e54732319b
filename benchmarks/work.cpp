/// Does one piece of work with a file, for compare.py to time; each has a plain counterpart that does what no program could
/// do without. Prints what it has seen, so that contenders can be shown to do the same.
///
///     bryx_work WORK FILE [ELEMENTS]
///     bryx_work copy|copy-checked FILE KEY >ESSENCE
///
/// plain             reads all octets with read(2)
/// read, validate    the public reader, with all essence; without and with the strictest checks
/// skip              the same without the essence
/// copy, copy-checked          read and validate; what they deliver with a key, "urn:smpte:ul:...", goes to standard output
/// plain-scan, scan  the partition packs that the random index leads to
/// metadata          the model of the header metadata of the last partition that has any
/// index             all index table segments, and where each edit unit is; the first one alone where the table does not tell
///                   how many there are
/// write-large, -mono, -small, -uneven      writes FILE: sound in elements of 200,000, 1,600, 64, or 48 to 79 octets, a
///                   partition for each 250
/// plain-write-large, -mono, -small, -uneven    the same octets of essence by write(2), 200,000 at a time

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "util/byte_order.h"

namespace {

constexpr std::size_t largeElement = 200000;
constexpr std::size_t monoElement = 1600; // 16 bits at 48 kHz, in frames of 1/60 s
constexpr std::size_t smallElement = 64;

/// Prints what has been seen.
void saw(const char* what, std::uint64_t count) {
    std::printf("%s %llu\n", what, static_cast<unsigned long long>(count));
}

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

class Descriptor {
public:
    explicit Descriptor(const std::string& name, int mode = O_RDONLY)
        : number_(::open(name.c_str(), mode | O_CLOEXEC, 0666)) {
        require(number_ >= 0, "the file cannot be opened");
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    std::uint64_t size() const { return static_cast<std::uint64_t>(::lseek(number_, 0, SEEK_END)); }
    std::size_t read(std::vector<std::uint8_t>& buffer) const {
        return static_cast<std::size_t>(std::max<ssize_t>(::read(number_, buffer.data(), buffer.size()), 0));
    }
    void readAt(std::uint64_t offset, std::vector<std::uint8_t>& buffer) const {
        require(::pread(number_, buffer.data(), buffer.size(), static_cast<off_t>(offset)) > 0, "nothing is read");
    }
    void write(const std::uint8_t* data, std::size_t size) const {
        require(::write(number_, data, size) == static_cast<ssize_t>(size), "not all is written");
    }

private:
    int number_;
};

void plain(const std::string& name) {
    const Descriptor file(name);
    std::vector<std::uint8_t> buffer(std::size_t{1} << 20U);
    std::uint64_t octets = 0;
    while (const std::size_t count = file.read(buffer)) {
        octets += count;
    }
    saw("octets", octets);
}

/// Takes every element whole, or in chunks if it is longer than the buffer; or none. Elements of up to 64 KiB are taken
/// where the reader has them.
class Essence : public MXFGCChunkedEssenceHandler, public DullMXFGCEssenceHandler {
public:
    explicit Essence(bool isWanted) : isWanted_(isWanted) {}

    std::uint64_t octets = 0;
    std::uint64_t elements = 0;

    bool startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& buffer,
                      std::uint64_t& size) override {
        ++elements;
        octets += length;
        if (length >= leastBuffered && length <= buffer_.size()) {
            buffer = buffer_.data();
            size = buffer_.size();
        }
        return isWanted_;
    }
    bool startChunkedElement(const KLVKey& /*key*/, std::uint64_t length, std::uint64_t /*offset*/, std::uint64_t& size,
                             std::uint8_t*& buffer) override {
        if (length < leastBuffered) {
            return false;
        }
        buffer = buffer_.data();
        size = buffer_.size();
        return true;
    }

private:
    static constexpr std::uint64_t leastBuffered = 65537;

    bool isWanted_;
    std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(std::size_t{1} << 20U);
};

/// Writes what it takes of one key to standard output.
class CopiedEssence final : public Essence {
public:
    explicit CopiedEssence(std::string key) : Essence(true), key_(std::move(key)) {}

    void pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                        std::uint64_t /*offset*/) override {
        if (toString(key) == key_) {
            require(std::fwrite(data, 1, size, stdout) == size, "nothing is written");
        }
    }
    void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override {
        pictureElement(key, data, size, offset);
    }

private:
    std::string key_;
};

void readFor(const std::shared_ptr<Essence>& essence, const std::string& name, BRYXValidationMode::Enum mode) {
    const auto reader = createBRYXReader(std::make_shared<std::ifstream>(name, std::ios::binary), mode);
    reader->setStructureHandler(std::make_shared<DullMXFStructureHandler>());
    reader->setMetadataHandler(std::make_shared<DullMXFMetadataModelHandler>());
    reader->setIndexHandler(std::make_shared<DullMXFIndexHandler>());
    reader->setSDTICPSystemHandler(std::make_shared<DullMXFSDTICPSystemHandler>());
    reader->setEssenceHandler(essence);
    reader->setErrorHandler(std::make_shared<DullErrorHandler>());
    reader->read();
}

void read(const std::string& name, bool wantsEssence, BRYXValidationMode::Enum mode) {
    const auto essence = std::make_shared<Essence>(wantsEssence);
    readFor(essence, name, mode);
    saw("essence", essence->octets);
    saw("elements", essence->elements);
}

// ---- Single partitions ----

/// Where the partitions of a file are, as its random index tells.
class Places final : public DullMXFStructureHandler {
public:
    std::vector<std::uint64_t> offsets;
    std::uint64_t packs = 0;

    void startPartition(const KLVKey& /*key*/, const MXFPartitionPack& /*pack*/, std::uint64_t /*start*/) override {
        ++packs;
    }
    void randomIndex(const MXFRandomIndex& index) override {
        for (const MXFRandomIndexEntry& entry : index) {
            offsets.push_back(entry.byteOffset);
        }
    }
};

/// A partial reader that knows where the partitions are.
struct Parts {
    explicit Parts(const std::string& name)
        : reader(createBRYXPartialReader(std::make_shared<std::ifstream>(name, std::ios::binary))) {
        reader->setStructureHandler(places);
        require(reader->readRandomIndexPack(), "the file has no random index");
    }

    std::shared_ptr<Places> places = std::make_shared<Places>();
    std::shared_ptr<BRYXPartialReader> reader;
};

void plainScan(const std::string& name) {
    const Descriptor file(name);
    const std::uint64_t size = file.size();
    std::vector<std::uint8_t> octets(4);
    file.readAt(size - 4, octets);
    const auto length = util::loadBigEndian<std::uint32_t>(octets.data());
    octets.resize(length);
    file.readAt(size - length, octets);
    constexpr std::size_t entrySize = 12;
    const std::size_t entries = (length - 4 - 16) / entrySize; // the length field is shorter than an entry
    std::vector<std::uint8_t> pack(200);
    for (std::size_t i = 0; i < entries; ++i) {
        const std::size_t entry = length - 4 - (entries - i) * entrySize;
        file.readAt(util::loadBigEndian<std::uint64_t>(&octets[entry + 4]), pack);
    }
    saw("partitions", entries);
}

void scan(const std::string& name) {
    const Parts parts(name);
    for (const std::uint64_t offset : parts.places->offsets) {
        parts.reader->readPartition(offset);
    }
    saw("partitions", parts.places->packs);
}

void metadata(const std::string& name) {
    struct Keeper final : DullMXFMetadataModelHandler {
        std::uint64_t packages = 0;
        bool isDone = false;
        void model(const Model& model) override {
            const auto preface = std::dynamic_pointer_cast<Preface>(model.front());
            isDone = preface != nullptr && preface->getContentStorage() != nullptr;
            packages = isDone ? preface->getContentStorage()->getPackageCount() : 0;
        }
    };
    const Parts parts(name);
    const auto keeper = std::make_shared<Keeper>();
    parts.reader->setMetadataHandler(keeper);
    for (auto offset = parts.places->offsets.rbegin(); offset != parts.places->offsets.rend() && !keeper->isDone;
         ++offset) {
        parts.reader->readPartition(*offset);
    }
    saw("packages", keeper->packages);
}

void index(const std::string& name) {
    const Parts parts(name);
    const auto collector = std::make_shared<MXFIndexCalculator::Collector>();
    parts.reader->setIndexHandler(collector);
    for (const std::uint64_t offset : parts.places->offsets) {
        parts.reader->readPartition(offset);
    }
    std::uint64_t found = 0;
    for (const MXFIndexCalculator::Table table : collector->tables()) {
        MXFIndexCalculator calculator;
        calculator.setSegments(*collector, table);
        std::uint64_t end = 0; // of the first octet of the edit unit before
        for (const MXFIndexCalculator::Range& range : calculator.ranges()) {
            const std::int64_t last = range.end == MXFIndexCalculator::endless ? range.first : range.end - 1;
            for (std::int64_t unit = range.first; unit <= last; ++unit) {
                const std::uint64_t offset = calculator.streamOffset(unit);
                found += offset >= end ? 1U : 0U;
                end = offset + 1;
            }
        }
    }
    saw("edit units", found);
}

/// Samples that are unlike those around them, with no work for it: pieces of a buffer, each from where the one before ends.
class Samples {
public:
    const std::uint8_t* next(std::size_t size) {
        const std::uint8_t* const piece = &octets_[start_];
        start_ = (start_ + size) % period;
        return piece;
    }

private:
    static constexpr std::size_t period = 65537; // a prime, so that elements of one size differ

    static std::vector<std::uint8_t> make() {
        std::vector<std::uint8_t> octets(period + largeElement);
        std::minstd_rand random;
        std::generate_n(octets.begin(), period, [&] { return static_cast<std::uint8_t>(random() >> 8U); });
        for (std::size_t i = period; i < octets.size(); ++i) {
            octets[i] = octets[i - period];
        }
        return octets;
    }

    std::size_t start_ = 0;
    std::vector<std::uint8_t> octets_ = make();
};

/// The octets of an element where there are several sizes, if @p size is 0.
std::size_t sizeOf(std::int64_t element, std::size_t size) {
    return size != 0 ? size : 48 + static_cast<std::size_t>(element) * 7 % 32;
}

/// Writes a file with @p elements elements of sound, of @p size octets, or of several sizes if that is 0.
void write(const std::string& name, std::int64_t elements, std::size_t size) {
    constexpr KLVKey element = klvutil::key("060e2b34.01020101.0d010301.16010101");
    constexpr KLVKey waves = klvutil::key("060e2b34.04010101.0d010301.02060100");
    constexpr KLVKey op1a = klvutil::key("060e2b34.04010101.0d010201.01010900");
    constexpr KLVKey sound = klvutil::key("060e2b34.04010101.01030202.02000000");
    constexpr Rational editRate{3000, 1};
    constexpr std::int64_t partitionDuration = 250;
    BRYXDefaultUIDGenerator uids;
    const auto addTrack = [&](GenericPackage& package, const UMID& source, std::uint32_t sourceTrack) {
        const auto clip = SourceClip::create();
        clip->setSourcePackageID(source);
        clip->setSourceTrackID(sourceTrack);
        const auto sequence = Sequence::create();
        sequence->addComponent(clip);
        for (Component* component : {static_cast<Component*>(clip.get()), static_cast<Component*>(sequence.get())}) {
            component->setDataDefinition(sound);
            component->setDuration(elements);
        }
        const auto track = TimelineTrack::create();
        track->setTrackID(1);
        track->setTrackNumber(sourceTrack == 0 ? util::loadBigEndian<std::uint32_t>(&element.octets[12]) : 0);
        track->setEditRate(editRate);
        track->setSegment(sequence);
        package.addTrack(track);
    };
    const auto file = SourcePackage::create();
    file->setPackageUID(mxfutil::generateUMID(uids));
    addTrack(*file, UMID(), 0);
    const auto descriptor = WaveAudioDescriptor::create();
    descriptor->setLinkedTrackID(1);
    descriptor->setSampleRate(editRate);
    descriptor->setContainerDuration(elements);
    descriptor->setEssenceContainer(waves);
    descriptor->setAudioSamplingRate({48000, 1});
    descriptor->setLocked(true);
    descriptor->setChannelCount(2);
    descriptor->setQuantizationBits(16);
    descriptor->setBlockAlign(4);
    descriptor->setAverageBytesPerSecond(192000);
    file->setDescriptor(descriptor);
    const auto material = MaterialPackage::create();
    material->setPackageUID(mxfutil::generateUMID(uids));
    addTrack(*material, file->getPackageUID(), 1);
    const auto container = EssenceContainerData::create();
    container->setLinkedPackageUID(file->getPackageUID());
    container->setBodySID(1);
    container->setIndexSID(2);
    const auto storage = ContentStorage::create();
    storage->addPackage(material);
    storage->addPackage(file);
    storage->addEssenceContainerData(container);
    const auto preface = Preface::create();
    preface->setVersion(0x0103);
    preface->setOperationalPattern(op1a);
    preface->setEssenceContainers({waves});
    preface->addIdentification(Identification::create());
    preface->setContentStorage(storage);

    const auto writer = createBRYXWriter(std::make_shared<std::ofstream>(name, std::ios::binary));
    BRYXWriterConfiguration configuration;
    configuration.partitionDuration = partitionDuration;
    writer->setConfiguration(configuration);
    writer->start(toBRYXHeaderMetadata(preface));
    writer->startEssence({1, 2, editRate, size != 0, {}, {}});
    Samples samples;
    for (std::int64_t i = 0; i < elements; ++i) {
        writer->structureReceiver().startContentPackage();
        writer->structureReceiver().startElement(element);
        const std::size_t octets = sizeOf(i, size);
        writer->essenceReceiver().soundElement(element, samples.next(octets), octets, 0);
        writer->structureReceiver().endElement(element);
        writer->structureReceiver().endContentPackage();
    }
    writer->endEssence();
    writer->finish(toBRYXHeaderMetadata(preface));
    saw("elements", static_cast<std::uint64_t>(elements));
}

void plainWrite(const std::string& name, std::int64_t elements, std::size_t size) {
    const Descriptor file(name, O_WRONLY | O_CREAT | O_TRUNC);
    std::uint64_t left = 0;
    for (std::int64_t i = 0; i < elements; ++i) {
        left += sizeOf(i, size);
    }
    saw("essence", left);
    for (Samples samples; left > 0;) {
        const std::size_t octets = std::min<std::uint64_t>(left, largeElement);
        file.write(samples.next(octets), octets);
        left -= octets;
    }
}

using Work = std::function<void(const std::string& name, const std::string& argument)>;

template <class Reading>
Work reading(Reading work) {
    return [work](const std::string& name, const std::string& /*argument*/) { work(name); };
}
Work copying(BRYXValidationMode::Enum mode) {
    return [mode](const std::string& name, const std::string& key) {
        readFor(std::make_shared<CopiedEssence>(key), name, mode);
    };
}
template <class Writing>
Work writing(Writing work, std::size_t size) {
    return
        [work, size](const std::string& name, const std::string& elements) { work(name, std::stoll(elements), size); };
}

const std::map<std::string, Work> works{
    {"plain", reading(plain)},
    {"read", reading([](const std::string& name) { read(name, true, BRYXValidationMode::None); })},
    {"validate", reading([](const std::string& name) { read(name, true, BRYXValidationMode::Strict); })},
    {"skip", reading([](const std::string& name) { read(name, false, BRYXValidationMode::None); })},
    {"copy", copying(BRYXValidationMode::None)},
    {"copy-checked", copying(BRYXValidationMode::Strict)},
    {"plain-scan", reading(plainScan)},
    {"scan", reading(scan)},
    {"metadata", reading(metadata)},
    {"index", reading(index)},
    {"write-large", writing(write, largeElement)},
    {"write-mono", writing(write, monoElement)},
    {"write-small", writing(write, smallElement)},
    {"write-uneven", writing(write, 0)},
    {"plain-write-large", writing(plainWrite, largeElement)},
    {"plain-write-mono", writing(plainWrite, monoElement)},
    {"plain-write-small", writing(plainWrite, smallElement)},
    {"plain-write-uneven", writing(plainWrite, 0)},
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4 || works.count(argv[1]) == 0) {
        std::fputs("usage: bryx_work WORK FILE [ELEMENTS|KEY]\n", stderr);
        return 2;
    }
    try {
        works.at(argv[1])(argv[2], argc < 4 ? "1000" : argv[3]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bryx_work: %s\n", error.what());
        return 1;
    }
}

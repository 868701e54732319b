/// Reads small whole files in which one thing at a time is wrong: each octet of each key, and each length, count, tag,
/// SID, offset and other number, is 0, 1, the largest there is, or off by one; each triplet and each item of a set is
/// missing, there twice, or behind its neighbour. Each is read to its end or to a parse_error, in little memory and
/// time, and handlers get the same from a pipe as from a stream that seeks.
///
///     mutations NUMBER    reads mutants of the file with that number, from 0

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <sanitizer/common_interface_defs.h>
#include <set>
#include <sstream>

#include "Allocations.h"
#include "BuiltRegions.h"
#include "Expect.h"
#include "Listener.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/structure/MXFPrimer.h"
#include "support/GoodClip.h"
#include "support/Streams.h"

namespace {

/// A number in a file, or an octet of a key.
struct Field {
    std::size_t offset;
    std::size_t size;
};

std::uint64_t numberAt(const std::string& octets, const Field& field) {
    std::uint64_t number = 0;
    for (const char octet : octets.substr(field.offset, field.size)) {
        number = number << 8U | static_cast<std::uint8_t>(octet);
    }
    return number;
}

void put(std::string& octets, const Field& field, std::uint64_t number) {
    util::storeBigEndian(reinterpret_cast<std::uint8_t*>(&octets[field.offset]), number, field.size);
}

/// A triplet, or an item of a set.
struct Part {
    std::size_t begin;
    std::size_t end;

    std::size_t size() const { return end - begin; }
};

/// Parts that follow one another, and the number that says how many octets they have; of no size if there is none.
struct Row {
    Field length;
    std::vector<Part> parts;
};

/// Knows what a file consists of. Where things stand follows from how the library itself describes them.
class Anatomy {
public:
    explicit Anatomy(const std::string& file) : file_(file) {
        Row triplets{{0, 0}, {}};
        while (at_ < file.size()) {
            const std::size_t begin = at_;
            triplet();
            triplets.parts.push_back({begin, at_});
        }
        rows.push_back(triplets);
    }

    std::vector<Field> fields;
    std::vector<Row> rows;

private:
    const std::uint8_t* data() const { return reinterpret_cast<const std::uint8_t*>(file_.data()) + at_; }

    std::uint64_t field(std::size_t size) {
        fields.push_back({at_, size});
        at_ += size;
        return numberAt(file_, fields.back());
    }

    KLVKey key() {
        KLVKey key;
        for (std::uint8_t& octet : key.octets) {
            octet = static_cast<std::uint8_t>(field(1));
        }
        return key;
    }

    std::uint64_t berLength() {
        const std::uint64_t first = field(1);
        return first < 0x80 ? first : field(first & 0x7FU);
    }

    /// A value that is laid out as @p layout, or as the records in it describe themselves.
    template <class T>
    void value(const T& layout) {
        if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
            field(sizeof layout);
        } else if constexpr (klvutil::detail::HasOctets<T>::value) {
            anything(layout.octets.size());
        } else {
            T::fields(layout, [&](const char*, const auto& member) { value(member); });
        }
    }

    template <class T>
    void value(const std::vector<T>& layout) {
        batch([&](std::size_t) { value(layout.empty() ? T() : layout.front()); });
    }

    template <class T>
    void value(const boost::optional<T>& /*layout*/) {
        value(T());
    }

    /// Slices and fractional positions follow the fields of an index entry.
    void value(const std::vector<MXFIndexEntry>& /*layout*/) {
        batch([&](std::size_t size) {
            const std::size_t end = at_ + size;
            value(MXFIndexEntry());
            while (at_ < end) {
                field(4);
            }
        });
    }

    template <class Element>
    void batch(Element element) {
        const std::uint64_t count = field(4);
        const std::uint64_t size = field(4);
        for (std::uint64_t i = 0; i < count; ++i) {
            element(size);
        }
    }

    /// Octets of which nothing is known: a number, if they are few, or what ends with one.
    void anything(std::uint64_t size) {
        const std::uint64_t numberSize = std::min<std::uint64_t>(size, 8);
        at_ += size - numberSize;
        if (numberSize > 0) {
            field(numberSize);
        }
    }

    void triplet() {
        const KLVKey k = key();
        const std::uint64_t size = berLength();
        const Field length = fields.back();
        const std::size_t end = at_ + size;
        const KLVCoding coding = klvutil::classify(k);
        if (coding == KLVCoding::LocalSet || coding == KLVCoding::VariableLengthPack) {
            items(k, length, end);
        } else if (mxfutil::isPartitionPackKey(k)) {
            MXFPartitionPack pack;
            mxfutil::readPartitionPack(data(), size, pack);
            MXFPartitionPack::fields(pack, [&](const char*, const auto& member) { value(member); });
        } else if (k == mxfutil::primerPackKey) {
            primer_ = mxfutil::readPrimerPack(data(), size, nullptr, nullptr);
            value(std::vector<MXFPrimerEntry>());
        } else if (k == mxfutil::randomIndexPackKey) {
            while (end - at_ >= mxfutil::randomIndexEntrySize) {
                value(MXFRandomIndexEntry());
            }
        } else if (k == mxfutil::sdtiCPSystemMetadataKey) {
            value(MXFSystemMetadataPack());
        }
        anything(k == klvutil::fillKey ? 0 : end - at_);
        at_ = end;
    }

    void items(const KLVKey& k, const Field& length, std::size_t end) {
        Row row{length, {}};
        const KLVFieldForm form = klvutil::itemLengthForm(k);
        while (at_ < end) {
            const std::size_t begin = at_;
            const bool isSet = klvutil::classify(k) == KLVCoding::LocalSet;
            const auto tag = static_cast<std::uint16_t>(isSet ? field(klvutil::fieldSize(klvutil::itemTagForm(k))) : 0);
            const std::uint64_t size = form == KLVFieldForm::BER ? berLength() : field(klvutil::fieldSize(form));
            row.parts.push_back({begin, at_ + size});
            const MXFIndexTableSegment emptySegment;
            if (mxfutil::isIndexTableSegmentKey(k)) {
                MXFIndexTableSegment::properties(emptySegment,
                                                 [&](const char*, std::uint16_t known, auto, const auto& member) {
                                                     if (tag == known) {
                                                         value(member);
                                                     }
                                                 });
            } else if (factory_.canParse(k)) {
                property(k, primer_[tag], size);
            }
            anything(row.parts.back().end - at_);
        }
        rows.push_back(row);
    }

    /// A property of a set of header metadata, as its class understands it.
    void property(const KLVKey& set, const KLVKey& label, std::size_t size) {
        const auto root = factory_.parse({set, {{label, {data(), data() + size}}}, 0, 0}).first;
        for (const MXFProperty* const known : root->getDescription().properties()) {
            if (known->label() == label) {
                if (std::holds_alternative<std::vector<MXFScalar>>(known->value(*root))) {
                    batch([&](std::size_t each) { anything(each); });
                }
                return;
            }
        }
    }

    const std::string& file_;
    std::size_t at_ = 0;
    MXFPrimer primer_;
    BRYXMetadataFactory factory_;
};

constexpr std::size_t mostOctets = std::size_t{2} << 20U;
constexpr std::clock_t mostTime = CLOCKS_PER_SEC;

/// What came of the mutants.
struct Tally {
    std::size_t ended = 0;
    std::size_t found = 0;
    std::size_t clean = 0;
    std::size_t octets = 0; ///< of memory, the most that a reading took
    std::clock_t time = 0;  ///< of the processor, the most that a reading took

    void print() const {
        std::printf("%zu mutants: %zu end with a parse_error, %zu have other findings, %zu are clean\n"
                    "a reading takes %zu octets of memory at most, and %ld ms\n",
                    ended + found + clean, ended, found, clean, octets, time * 1000 / CLOCKS_PER_SEC);
    }
} tally;

// What is being read, for those who want to know why a sanitizer stopped the program.
std::string name;
std::string mutant;

void save() {
    std::fprintf(stderr, "while reading a file with %s, which is kept as mutant.mxf\n", name.c_str());
    std::ofstream("mutant.mxf", std::ios::binary) << mutant;
}

struct Outcome {
    std::shared_ptr<Listener> listener;
    bool isWhole;
};

Outcome read(const std::shared_ptr<std::istream>& stream) {
    Outcome outcome{std::make_shared<Listener>(), false};
    const auto reader = createBRYXReader(stream, BRYXValidationMode::Strict);
    static const auto factory = std::make_shared<BRYXMetadataFactory>();
    listen(*reader, outcome.listener, factory);
    const std::size_t octetsBefore = allocations::octets();
    const std::clock_t timeBefore = std::clock();
    allocations::startPeak();
    outcome.isWhole = readsToEnd(*reader);
    tally.octets = std::max(tally.octets, allocations::peak() - octetsBefore);
    tally.time = std::max(tally.time, std::clock() - timeBefore);
    expect(tally.octets <= mostOctets, "too much memory");
    expect(tally.time <= mostTime, "too much time");
    expect(outcome.listener->findings.open == 0, "the stream of findings does not end");
    return outcome;
}

void judge() {
    const Outcome outcome = read(std::make_shared<std::istringstream>(mutant));
    const Outcome fromPipe = read(std::make_shared<PipeStream>(mutant, 100));
    expect(outcome.isWhole == fromPipe.isWhole && outcome.listener->sum == fromPipe.listener->sum,
           "a pipe gives something else");
    ++(!outcome.isWhole ? tally.ended : !outcome.listener->findings.reports.empty() ? tally.found : tally.clean);
}

void change(const std::string& file, const Field& field) {
    const std::uint64_t number = numberAt(file, field);
    const std::uint64_t greatest = ~std::uint64_t{0} >> (64 - 8 * field.size);
    std::set<std::uint64_t> numbers = {0, 1, greatest, (number + 1) & greatest, (number - 1) & greatest};
    if (field.size > 1) {
        numbers.insert(greatest / 2); // the largest of those with a sign
    }
    numbers.erase(number);
    for (const std::uint64_t other : numbers) {
        name = "the number " + std::to_string(other) + " at " + std::to_string(field.offset);
        mutant = file;
        put(mutant, field, other);
        judge();
    }
}

void fit(const Field& length, std::size_t more) {
    if (length.size > 0) {
        put(mutant, length, numberAt(mutant, length) + more);
    }
}

void rearrange(const std::string& file, const Row& row) {
    for (std::size_t i = 0; i < row.parts.size(); ++i) {
        const Part& part = row.parts[i];
        name = "nothing of what was at " + std::to_string(part.begin);
        mutant = file;
        mutant.erase(part.begin, part.size());
        fit(row.length, 0 - part.size());
        judge();
        name = "two of what is at " + std::to_string(part.begin);
        mutant = file;
        mutant.insert(part.begin, file, part.begin, part.size());
        fit(row.length, part.size());
        judge();
        if (i > 0) {
            name = "neighbours swapped at " + std::to_string(part.begin);
            mutant = file;
            const auto at = [](std::size_t offset) { return mutant.begin() + static_cast<std::ptrdiff_t>(offset); };
            std::rotate(at(row.parts[i - 1].begin), at(part.begin), at(part.end));
            judge();
        }
    }
}

ClipOptions constantClip() {
    ClipOptions options = smallClip();
    options.hasGenericStream = false;
    options.partitionDuration = 0;
    options.isConstant = true;
    options.hasSystemItems = false;
    options.hasSequences = false;
    options.placement = BRYXWriterConfiguration::IndexPlacement::Footer;
    return options;
}

ClipOptions wrappedAsClip() {
    ClipOptions options = constantClip();
    options.isClip = true;
    options.placement = BRYXWriterConfiguration::IndexPlacement::BeforeEssence;
    return options;
}

/// Without header metadata, but with system items and index entries of every kind.
std::string builtFile() {
    FileBuilder builder;
    builder.partition(MXFPartitionKind::Header)
        .partition(MXFPartitionKind::Body, {}, {}, builtBody())
        .partition(MXFPartitionKind::Footer, {}, builtIndex());
    return builder.randomIndexPack().file;
}

} // namespace

int main(int argc, char** argv) {
    const std::string files[] = {GoodClip(smallClip()).octets, GoodClip(constantClip()).octets,
                                 GoodClip(wrappedAsClip()).octets, builtFile()};
    const std::size_t number = argc == 2 ? std::strtoul(argv[1], nullptr, 10) : std::size(files);
    if (number >= std::size(files)) {
        return 2;
    }
    __sanitizer_set_death_callback(save);
    beforeFailure = save;
    std::set_terminate(failUncaught); // which no sanitizer sees
    const std::string& file = files[number];
    const Anatomy anatomy(file);
    std::printf("%zu octets with %zu fields\n", file.size(), anatomy.fields.size());
    for (const Field& field : anatomy.fields) {
        change(file, field);
    }
    for (const Row& row : anatomy.rows) {
        rearrange(file, row);
    }
    tally.print();
    return 0;
}

/// Reads the input as the body of a partition, and as its index region.
///
/// The elements of the body are the same octets whether they are held by the splitter, by the caller or nobody, in
/// chunks of whatever size; and system items that are decoded and coded are the same when they are decoded again. The
/// segments of the index region are the same when they are coded and read again, and whatever they say, the calculator
/// answers, and does not contradict itself.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Expect.h"
#include "klv/GenericKLVReader.h"
#include "klv/parse_error.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemCoder.h"
#include "mxf/essence/MXFSDTICPSystemParser.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexCoder.h"
#include "mxf/index/MXFIndexParser.h"
#include "support/KLVOctets.h"
#include "util/assertion_failure.h"

namespace {

/// Whether @p octets could be read to the end.
bool parse(const std::string& octets, KLVHandler& handler) {
    std::istringstream stream(octets);
    GenericKLVReader reader;
    reader.setHandler(&handler);
    try {
        reader.parse(stream, 0);
        return true;
    } catch (const klvutil::parse_error&) {
        return false;
    }
}

/// Collects the octets of elements, each behind its key, as they come.
class Essence : public MXFGCEssenceHandler {
public:
    std::string octets;
    bool ownsBuffer = false;

    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override {
        octets.append(key.octets.begin(), key.octets.end());
        // A length may be a lie: there is not so much room.
        if (ownsBuffer && length <= sizeof own_) {
            buffer = own_;
            size = sizeof own_;
        }
        return true;
    }
    void pictureElement(const KLVKey&, const std::uint8_t* d, std::uint64_t s, std::uint64_t) override { add(d, s); }
    void soundElement(const KLVKey&, const std::uint8_t* d, std::uint64_t s, std::uint64_t) override { add(d, s); }
    void dataElement(const KLVKey&, const std::uint8_t* d, std::uint64_t s, std::uint64_t) override { add(d, s); }
    void compoundElement(const KLVKey&, const std::uint8_t* d, std::uint64_t s, std::uint64_t) override { add(d, s); }
    void setLengthForm(std::uint8_t) override {}

private:
    void add(const std::uint8_t* data, std::uint64_t size) {
        if (data != nullptr) {
            octets.append(data, data + size);
        }
    }

    std::uint8_t own_[4096] = {};
};

class ChunkedEssence : public Essence, public MXFGCChunkedEssenceHandler {
public:
    explicit ChunkedEssence(std::uint64_t size) : chunk_(size) {}

    bool startChunkedElement(const KLVKey&, std::uint64_t, std::uint64_t, std::uint64_t& size,
                             std::uint8_t*& buffer) override {
        size = chunk_.size();
        buffer = chunk_.data();
        return true;
    }

private:
    std::vector<std::uint8_t> chunk_;
};

/// Keeps the elements of system items as octets, and passes them on.
class SystemElements : public MXFGCSystemHandler {
public:
    explicit SystemElements(MXFGCSystemHandler* next = nullptr) : next_(next) {}
    std::string octets;

    bool wantsSystemElement(const KLVKey& key) override {
        expect(next_ == nullptr || next_->wantsSystemElement(key), "the parser does not want what was coded");
        return true;
    }
    void localSet(const KLVKey& key, const MXFGCItems& items) override {
        octets.append(key.octets.begin(), key.octets.end());
        for (const MXFGCItem& item : items) {
            octets += static_cast<char>(item.tag);
            octets.append(item.data, item.data + item.size);
        }
        if (next_ != nullptr) {
            next_->localSet(key, items);
        }
    }
    void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) override {
        octets.append(key.octets.begin(), key.octets.end()).append(data, data + size);
        if (next_ != nullptr) {
            next_->fixedLengthPack(key, data, size);
        }
    }
    void variableLengthPack(const KLVKey& key, const MXFGCItems& items) override { localSet(key, items); }

private:
    MXFGCSystemHandler* next_;
};

class ProxyTaker : public MXFPDProxySystemHandler {
public:
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems&) override {
        for (const MXFTimecodeStamp& stamp : metadata.timecodes) {
            stamp.timecode(50);
        }
    }
};

void readBody(const std::string& body) {
    SystemElements again;
    MXFSDTICPSystemCoder secondCoder(again);
    MXFSDTICPSystemParser secondParser(&secondCoder);
    SystemElements coded(&secondParser);
    MXFSDTICPSystemCoder coder(coded);
    MXFSDTICPSystemParser parser(&coder);
    MXFGCSplitter sdtiCPSplitter(nullptr, &parser, nullptr);
    parse(body, sdtiCPSplitter);
    expect(coded.octets == again.octets, "system items change when they are coded again");

    ProxyTaker taker;
    MXFPDProxySystemParser proxy(&taker);
    MXFGCSplitter proxySplitter(nullptr, &proxy, nullptr);
    parse(body, proxySplitter);

    Essence held;
    Essence buffered;
    buffered.ownsBuffer = true;
    ChunkedEssence byOne(1);
    ChunkedEssence byMany(1000);
    bool isWhole = false;
    for (Essence* essence : {&held, &buffered, static_cast<Essence*>(&byOne), static_cast<Essence*>(&byMany)}) {
        SystemElements system;
        MXFGCSplitter splitter(nullptr, &system, essence);
        const bool ended = parse(body, splitter);
        expect(essence == &held || ended == isWhole, "how elements are delivered changes what can be read");
        isWhole = ended;
    }
    expect(held.octets == buffered.octets, "the caller's buffer gets other octets than the splitter's");
    expect(byOne.octets.compare(0, byMany.octets.size(), byMany.octets) == 0 &&
               byMany.octets.compare(0, held.octets.size(), held.octets) == 0 &&
               (!isWhole || held.octets == byOne.octets),
           "chunks have other octets than whole elements");
}

class SegmentKeeper : public MXFIndexHandler {
public:
    std::vector<MXFIndexTableSegment> segments;
    void startIndex() override {}
    void endIndex() override {}
    void indexTableSegment(const MXFIndexTableSegment& segment) override { segments.push_back(segment); }
};

std::string coded(const std::vector<MXFIndexTableSegment>& segments) {
    KLVOctets octets;
    MXFIndexCoder coder(octets);
    coder.startIndex();
    for (const MXFIndexTableSegment& segment : segments) {
        coder.indexTableSegment(segment);
    }
    coder.endIndex();
    return octets.octets;
}

void ask(const MXFIndexCalculator& index) {
    std::int64_t end = -1;
    for (const MXFIndexCalculator::Range& range : index.ranges()) {
        expect(range.first > end && range.first < range.end, "ranges are not in order");
        end = range.end;
        for (const std::int64_t unit : {range.first, range.first + (range.end - range.first) / 2, range.end - 1}) {
            if (!index.contains(unit)) {
                continue;
            }
            const std::uint64_t offset = index.streamOffset(unit);
            index.editUnitAt(offset);
            index.flags(unit);
            index.storedPosition(unit);
            expect(index.keyFrame(unit).value_or(unit) <= unit, "a key frame comes after the picture");
            for (std::size_t element = 0; element < index.elementCount(unit); ++element) {
                index.isReordered(unit, element);
                expect(index.elementOffset(unit, element).value_or(offset) >= offset, "an element comes too early");
            }
            if (const auto size = index.size(unit)) {
                expect(*size > 0 && offset + *size > offset, "an edit unit has an impossible size");
            }
        }
    }
}

void readIndex(const std::string& region) {
    SegmentKeeper kept;
    MXFIndexParser parser(kept);
    parse(region, parser);
    MXFIndexCalculator::Collector collector;
    for (const MXFIndexTableSegment& segment : kept.segments) {
        collector.indexTableSegment(segment);
    }
    for (const MXFIndexCalculator::Table table : collector.tables()) {
        MXFIndexCalculator index;
        index.setSegments(collector, table);
        ask(index);
    }
    const bool hasAnonymous = std::any_of(kept.segments.begin(), kept.segments.end(), [](const auto& segment) {
        return segment.instanceUID == MXFUID(); // gets a fresh one each time
    });
    // Arrays of a set with BER lengths may be too long for one without.
    const bool isCodable = std::all_of(kept.segments.begin(), kept.segments.end(), [](const auto& segment) {
        const std::size_t entrySize = mxfutil::indexEntrySize(segment.sliceCount, segment.posTableCount);
        return 8 + 6 * segment.deltaEntryArray.size() <= 65535 &&
               8 + entrySize * segment.indexEntryArray.size() <= 65535;
    });
    std::string first;
    bool isCoded = true;
    try {
        first = coded(kept.segments);
    } catch (const util::assertion_failure&) {
        isCoded = false;
    }
    expect(isCoded == isCodable, "segments that fit are not coded, or others are");
    if (!isCoded) {
        return;
    }
    SegmentKeeper again;
    MXFIndexParser second(again);
    expect(parse(first, second) && again.segments.size() == kept.segments.size(), "segments are lost");
    expect(hasAnonymous || coded(again.segments) == first, "segments change when they are coded again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string octets(data, data + size);
    readBody(octets);
    readIndex(octets);
    return 0;
}

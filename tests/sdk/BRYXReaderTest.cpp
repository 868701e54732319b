#include "sdk/BRYXReader.h"

#include <set>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/GoodClip.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "util/utf8.h"

namespace {

/// Logs whatever a reader tells, with all handlers in one.
class Everything : public StructureRecorder,
                   public MXFMetadataHandler,
                   public MXFMetadataModelHandler,
                   public MXFIndexHandler,
                   public DullMXFGCStructureHandler,
                   public DullMXFSDTICPSystemHandler,
                   public MXFPDProxySystemHandler,
                   public DullMXFGCEssenceHandler,
                   public FindingRecorder {
public:
    explicit Everything(Log& log) : StructureRecorder(log), FindingRecorder(log), log_(log) {}

    void startMetadata() override { log_.emplace_back("startMetadata"); }
    void endMetadata() override { log_.emplace_back("endMetadata"); }
    void primer(const Primer& primer) override { log_.push_back(line(nullptr, "primer", primer.size())); }
    bool handlesSet(const KLVKey& key) override { return key != TimelineTrack::classKey; }
    void primedSet(MXFPrimedSet& set) override {
        log_.push_back(line(nullptr, "set", toString(set.key), set.position, set.properties.size()));
        set.properties.clear(); // whoever gets a set may take its contents
    }
    void unhandledSet(const MXFPrimedSet& set) override {
        log_.push_back(line(nullptr, "unhandled", set.position, set.properties.size()));
    }
    void model(const Model& model) override {
        log_.push_back(line(nullptr, "model", model.front()->getDescription().name(), model.size()));
    }
    void startIndex() override { log_.emplace_back("startIndex"); }
    void endIndex() override { log_.emplace_back("endIndex"); }
    void indexTableSegment(const MXFIndexTableSegment& s) override {
        log_.push_back(line(nullptr, "segment", s.indexStartPosition, s.indexEntryArray.size()));
    }
    void startStream(std::uint64_t kagSize) override { log_.push_back(line(nullptr, "startStream", kagSize)); }
    void startStream() override { FindingRecorder::startStream(); }
    void endStream() override { log_.emplace_back("endStream"); } // of findings and of content packages
    void startContentPackage() override { log_.emplace_back("package"); }
    void endContentPackage() override { log_.emplace_back("/package"); }
    void startElement(const KLVKey& key) override { log_.push_back(line(nullptr, "element", int{key[12]})); }
    void endElement(const KLVKey& key) override { log_.push_back(line(nullptr, "/element", int{key[12]})); }
    void systemMetadata(const MXFSystemMetadataPack& p) override {
        log_.push_back(line(nullptr, "system", p.continuityCount));
    }
    void pdProxyMetadata(const MXFPDProxyMetadata&, const MXFGCItems&) override { log_.emplace_back("proxy"); }
    bool startElement(const KLVKey&, std::uint64_t length, std::uint8_t*&, std::uint64_t&) override {
        log_.push_back(line(nullptr, "wanted", length));
        return true;
    }
    void pictureElement(const KLVKey&, const std::uint8_t*, std::uint64_t size, std::uint64_t) override {
        log_.push_back(line(nullptr, "picture", size));
    }
    void soundElement(const KLVKey&, const std::uint8_t*, std::uint64_t size, std::uint64_t) override {
        log_.push_back(line(nullptr, "sound", size));
    }
    void setLengthForm(std::uint8_t form) override { log_.push_back(line(nullptr, "form", int{form})); }

private:
    Log& log_;
};

std::shared_ptr<BRYXReader> readerOf(const std::string& octets, BRYXValidationMode::Enum mode) {
    return createBRYXReader(std::make_shared<std::istringstream>(octets), mode);
}

void setAll(BRYXReader& reader, const std::shared_ptr<Everything>& handler) {
    reader.setStructureHandler(handler);
    reader.setMetadataHandler(handler);
    reader.setIndexHandler(handler);
    reader.setGCStructureHandler(handler);
    reader.setSDTICPSystemHandler(handler);
    reader.setPDProxySystemHandler(handler);
    reader.setEssenceHandler(handler);
}

/// A file with two faults that only validation tells: one in a partition pack, and one in the header metadata of both of
/// its partitions that have some.
std::string faulty() {
    GoodClip clip;
    clip.setPack(1, "kagSize", std::uint32_t{1});
    clip.set<TimelineTrack>(0, "trackID", std::uint32_t{0});
    return clip.octets;
}

bool isFinding(const std::string& line) {
    return line.find("warning ") == 0 || line.find("error ") == 0;
}

} // namespace

TEST(BRYXReader, TellsTheSameWhetherItChecksOrNot) {
    const std::string octets = faulty();
    const auto told = [&](BRYXValidationMode::Enum mode, bool hasErrorHandler) {
        Log log;
        const auto everything = std::make_shared<Everything>(log);
        const auto reader = readerOf(octets, mode);
        setAll(*reader, everything);
        if (hasErrorHandler) {
            reader->setErrorHandler(everything);
        }
        reader->read();
        return log;
    };
    Log plain = told(BRYXValidationMode::None, true);
    Log checked = told(BRYXValidationMode::Strict, true);
    EXPECT_EQ(std::count_if(plain.begin(), plain.end(), isFinding), 0);
    EXPECT_EQ(std::count_if(checked.begin(), checked.end(), isFinding), 3);
    checked.erase(std::remove_if(checked.begin(), checked.end(), isFinding), checked.end());
    EXPECT_TRUE(plain == checked);
    EXPECT_GT(plain.size(), 150U);
    // Without an error handler nothing is checked.
    EXPECT_TRUE(told(BRYXValidationMode::Strict, false) == told(BRYXValidationMode::None, false));
}

TEST(BRYXReader, ChecksWhatHasAHandler) {
    const std::string octets = faulty();
    const auto findings = [&](const std::function<void(BRYXReader&, const std::shared_ptr<Everything>&)>& set) {
        Log log;
        const auto everything = std::make_shared<Everything>(log);
        const auto reader = readerOf(octets, BRYXValidationMode::Strict);
        reader->setErrorHandler(everything);
        set(*reader, everything);
        reader->read();
        return std::count_if(log.begin(), log.end(), isFinding);
    };
    EXPECT_EQ(findings([](BRYXReader& r, const auto& h) {
                  r.setEssenceHandler(h);
                  r.setGCStructureHandler(h);
                  r.setPDProxySystemHandler(h);
              }),
              0);
    EXPECT_EQ(findings([](BRYXReader& r, const auto& h) { r.setStructureHandler(h); }), 1);
    EXPECT_EQ(findings([](BRYXReader& r, const auto& h) { r.setMetadataHandler(h); }), 2);
    EXPECT_EQ(findings([](BRYXReader& r, const auto& h) {
                  r.setMetadataHandler(h);
                  r.setMetadataHandler(nullptr);
                  r.setMetadataFactory(createBRYXDefaultMetadataFactory());
              }),
              0);
}

TEST(BRYXReader, ReadsFromWhereTheStreamStands) {
    const GoodClip clip;
    const auto stream = std::make_shared<std::istringstream>("xyz" + clip.octets);
    stream->seekg(3);
    Log log;
    const auto everything = std::make_shared<Everything>(log);
    const auto reader = createBRYXReader(stream, BRYXValidationMode::Strict);
    setAll(*reader, everything);
    reader->setErrorHandler(everything);
    reader->read();
    EXPECT_EQ(std::count_if(log.begin(), log.end(), isFinding), 0);
    EXPECT_GT(log.size(), 150U);
    log.clear();
    reader->read(); // at the end by now
    EXPECT_TRUE(log.empty());
    everything->warning({}, "late");
    EXPECT_LOG(log, Log{"warning late @" + std::to_string(clip.octets.size() + 3)});
    stream->seekg(3);
    log.clear();
    reader->read();
    EXPECT_GT(log.size(), 150U);
    EXPECT_EQ(failure([] { createBRYXReader(nullptr, BRYXValidationMode::None); }), "stream is present");
}

TEST(BRYXReader, StaysUsableWhenAHandlerThrows) {
    struct Thrower : DullErrorHandler {
        std::set<std::string> throwsAt;
        const Locator* locator = nullptr;
        void setLocator(const Locator& l) override { locator = &l; }
        void startStream() override { at("start"); }
        void endStream() override { at("end"); }
        void warning(const util::uuid&, const std::string&) override { at("finding"); }
        void error(const util::uuid&, const std::string&) override { at("finding"); }
        void at(const std::string& where) const {
            if (throwsAt.count(where) != 0) {
                throw std::runtime_error(where);
            }
        }
    };
    const std::string octets = faulty();
    const auto stream = std::make_shared<std::istringstream>(octets);
    const auto thrower = std::make_shared<Thrower>();
    const auto reader = createBRYXReader(stream, BRYXValidationMode::Strict);
    reader->setErrorHandler(thrower);
    reader->setMetadataHandler(std::make_shared<DullMXFMetadataHandler>());
    for (const char* const where : {"start", "finding", "end"}) {
        thrower->throwsAt = {where};
        stream->clear();
        stream->seekg(0);
        EXPECT_THROW(reader->read(), std::runtime_error);
        EXPECT_LT(std::streamoff{thrower->locator->streampos()}, std::streamoff(octets.size()));
    }
    Log log;
    const auto everything = std::make_shared<Everything>(log);
    reader->setErrorHandler(everything);
    stream->clear();
    stream->seekg(0);
    reader->read();
    EXPECT_EQ(std::count_if(log.begin(), log.end(), isFinding), 2);
}

TEST(BRYXReader, LivesAsLongAsItsReading) {
    struct Dropper : DullMXFStructureHandler, DullErrorHandler {
        std::function<void()> drop;
        std::weak_ptr<std::istream> stream;
        int calls = 0;
        void startPartition(const KLVKey&, const MXFPartitionPack&, std::uint64_t) override { dropped(); }
        void randomIndex(const MXFRandomIndex&) override { dropped(); }
        void startStream() override { dropped(); }
        void dropped() {
            drop();
            ++calls;
            EXPECT_FALSE(stream.expired());
        }
    };
    const GoodClip clip;
    const auto check = [&](auto create, auto read) {
        auto stream = std::make_shared<std::istringstream>("run-in" + clip.octets);
        auto reader = create(stream);
        const std::weak_ptr<std::istream> left = stream;
        stream.reset();
        auto dropper = std::make_shared<Dropper>();
        const std::weak_ptr<Dropper> handler = dropper;
        dropper->stream = left;
        // The last references to the reader and, but for the reader's own, to the handler.
        dropper->drop = [&] {
            if (reader != nullptr) {
                reader->setStructureHandler(nullptr);
                reader->setErrorHandler(nullptr);
            }
            dropper.reset();
            reader.reset();
            EXPECT_FALSE(handler.expired());
        };
        reader->setStructureHandler(dropper);
        reader->setErrorHandler(dropper);
        auto& running = *reader;
        read(running);
        EXPECT_TRUE(left.expired());
        EXPECT_TRUE(handler.expired());
    };
    const auto whole = [](auto stream) { return createBRYXReader(stream, BRYXValidationMode::Strict); };
    check(whole, [](BRYXReader& reader) { reader.read(); });
    const auto partial = [](auto stream) { return createBRYXPartialReader(stream); };
    check(partial, [](BRYXPartialReader& reader) { EXPECT_EQ(reader.skipRunIn(), 6U); });
    check(partial, [](BRYXPartialReader& reader) { EXPECT_TRUE(reader.readPartition(6)); });
    check(partial, [](BRYXPartialReader& reader) { EXPECT_TRUE(reader.readRandomIndexPack()); });
}

TEST(MXFReader, ItsHandlersTakeAnotherFileAfterOneThatBreaksOff) {
    const GoodClip clip;
    Log log;
    Everything everything(log);
    BRYXMetadataFactory factory;
    BRYXMetadataParser metadata(factory, everything);
    metadata.setErrorHandler(&everything);
    MXFIndexParser index(everything);
    index.setErrorHandler(&everything);
    BRYXSystemParser system;
    system.setSDTICPSystemHandler(&everything);
    system.setErrorHandler(&everything);
    BRYXEssenceSplitter essence;
    essence.setStructureHandler(&everything);
    essence.setSystemHandler(&system);
    essence.setEssenceHandler(&everything);
    essence.setErrorHandler(&everything);
    MXFReader reader;
    reader.setStructureHandler(&everything);
    reader.setHeaderMetadataHandler(&metadata.handler());
    reader.setIndexHandler(&index);
    reader.setBodyHandler(&essence);
    reader.setErrorHandler(&everything);
    int broken = 0;
    const auto read = [&](const std::string& octets) {
        log.clear();
        std::istringstream stream(octets);
        try {
            reader.read(stream);
        } catch (const klvutil::parse_error&) {
            ++broken;
        }
        return joined(log);
    };
    const std::string whole = read(clip.octets);
    for (std::size_t size = 1; size < clip.octets.size(); size += clip.octets.size() / 150) {
        read(clip.octets.substr(0, size));
        std::string next;
        ASSERT_EQ(failure([&] { next = read(clip.octets); }), "none") << size;
        ASSERT_TRUE(next == whole) << size;
    }
    EXPECT_GT(broken, 50);
}

TEST(BRYXReader, PassesGenericStreamsAndClassifiedEssenceOn) {
    struct Sound : BRYXGCEssenceKeyClassifier {
        MXFGCEssenceKind classify(const KLVKey&) const override { return MXFGCEssenceKind::Sound; }
    };
    ClipOptions options;
    options.hasGenericStream = true;
    Log log;
    const auto events = std::make_shared<EventRecorder>(log);
    const auto everything = std::make_shared<Everything>(log);
    const auto reader = readerOf(GoodClip(options).octets, BRYXValidationMode::None);
    reader->setGenericStreamHandler(events);
    reader->setEssenceKeyClassifier(std::make_shared<Sound>());
    reader->setEssenceHandler(everything);
    reader->read();
    EXPECT_EQ(events->values.substr(0, 3), "abc"); // and fill
    EXPECT_NE(std::find(log.begin(), log.end(), "sound 700"), log.end());
}

TEST(BRYXPartialReader, ReadsSinglePartitions) {
    const GoodClip clip;
    Log log;
    const auto everything = std::make_shared<Everything>(log);
    const auto reader = createBRYXPartialReader(std::make_shared<std::istringstream>("run-in" + clip.octets));
    EXPECT_EQ(failure([&] { reader->readRandomIndexPack(); }), "has structure handler");
    reader->setStructureHandler(everything);
    reader->setErrorHandler(everything);
    EXPECT_EQ(reader->skipRunIn(), 6U);
    EXPECT_TRUE(reader->readRandomIndexPack());
    EXPECT_NE(std::find(log.begin(), log.end(), "randomIndex 4"), log.end());
    const std::uint64_t footer = 6 + clip.packs().back().position;
    log.clear();
    EXPECT_TRUE(reader->readPartition(footer));
    EXPECT_EQ(std::count(log.begin(), log.end(), "startMetadata"), 0);
    reader->setMetadataHandler(everything);
    reader->setIndexHandler(everything);
    for (int i = 0; i < 2; ++i) {
        log.clear();
        EXPECT_TRUE(reader->readPartition(footer));
        EXPECT_EQ(std::count(log.begin(), log.end(), "model Preface 1"), 1);
        EXPECT_EQ(std::count(log.begin(), log.end(), "segment 0 5"), 1);
    }
    EXPECT_FALSE(reader->readPartition(6 + clip.octets.size()));
    EXPECT_EQ(failure([] { createBRYXPartialReader(nullptr); }), "stream is present");
}

TEST(BRYXPackageMetadata, BothWays) {
    const UMID umid{{6, 10, 43, 52}};
    const std::wstring text = L"Caf\u00e9 \U0001F3AC";
    const auto wide = createBRYXPackageKLVMetadata(text);
    const auto items = createBRYXPackageMetadata(umid, wide);
    EXPECT_EQ(items.size(), 2U);
    EXPECT_EQ(parseBRYXPackageMetadata(items), std::pair(umid, wide));
    EXPECT_EQ(parseBRYXPackageKLVMetadata(wide), text);
    EXPECT_EQ(parseBRYXPackageKLVMetadata(createBRYXPackageKLVMetadata(util::utf8::fromWide(text))), text);
    EXPECT_EQ(createBRYXPackageMetadata(umid, {}).size(), 1U);
    EXPECT_EQ(parseBRYXPackageMetadata({}).first, UMID{});
    EXPECT_THROW(parseBRYXPackageMetadata({{0x83, {1, 2, 3}}}), std::length_error);
    EXPECT_EQ(parseBRYXPackageKLVMetadata({}), L"");
    auto other = octets::klv(keys::item, "x");
    EXPECT_EQ(parseBRYXPackageKLVMetadata({other.begin(), other.end()}), L"");
    other.pop_back();
    EXPECT_THROW(parseBRYXPackageKLVMetadata({other.begin(), other.end()}), klvutil::parse_error);
}

/// Reads the input through the public reader in each mode. A stricter mode must report what a more lenient one does, in the
/// same order, no mode may change what the handlers get, and every position must be in the file.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "klv/parse_error.h"
#include "sdk/BRYX.h"

namespace {

struct Report {
    util::uuid id;
    std::streamoff position;

    friend bool operator==(const Report& a, const Report& b) { return a.id == b.id && a.position == b.position; }
};

/// Keeps what is reported, and sums up what the handlers get.
class Listener final : public DullErrorHandler,
                       public DullMXFStructureHandler,
                       public DullMXFMetadataModelHandler,
                       public DullMXFIndexHandler,
                       public DullMXFGCStructureHandler,
                       public DullMXFSDTICPSystemHandler,
                       public MXFPDProxySystemHandler,
                       public DullMXFGCEssenceHandler {
public:
    std::vector<Report> reports;
    std::uint64_t sum = 0;

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override {}
    void endStream() override {}
    void warning(const util::uuid& id, const std::string& /*message*/) override { add(id); }
    void error(const util::uuid& id, const std::string& /*message*/) override { add(id); }
    void fatalError(const util::uuid& id, const std::string& /*message*/) override { add(id); }

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        got(key[14] + pack.thisPartition + headerStart);
    }
    void model(const Model& model) override { got(model.size()); }
    void indexTableSegment(const MXFIndexTableSegment& segment) override { got(segment.indexEntryArray.size()); }
    void startStream(std::uint64_t kagSize) override { got(kagSize); }
    void startContentPackage() override { got(1); }
    void startElement(const KLVKey& key) override { got(key[15]); }
    bool startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        got(length);
        return true;
    }
    void systemMetadata(const MXFSystemMetadataPack& pack) override { got(pack.continuityCount); }
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& /*items*/) override {
        got(metadata.frameCount);
    }

private:
    void add(const util::uuid& id) { reports.push_back({id, locator_->streampos()}); }
    void got(std::uint64_t value) { sum = sum * 31 + value; }

    const Locator* locator_ = nullptr;
};

std::shared_ptr<Listener> read(const std::string& file, BRYXValidationMode::Enum mode) {
    const auto listener = std::make_shared<Listener>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(file), mode);
    reader->setStructureHandler(listener);
    reader->setMetadataHandler(listener);
    reader->setIndexHandler(listener);
    reader->setGCStructureHandler(listener);
    reader->setSDTICPSystemHandler(listener);
    reader->setPDProxySystemHandler(listener);
    reader->setEssenceHandler(listener);
    reader->setErrorHandler(listener);
    try {
        reader->read();
    } catch (const klvutil::parse_error&) {
        listener->sum += 1;
    }
    return listener;
}

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file(reinterpret_cast<const char*>(data), size);
    std::shared_ptr<Listener> before;
    for (const auto mode : {BRYXValidationMode::None, BRYXValidationMode::Lenient, BRYXValidationMode::Standard,
                            BRYXValidationMode::Strict}) {
        const auto listener = read(file, mode);
        for (const Report& report : listener->reports) {
            require(report.position >= 0 && report.position <= static_cast<std::streamoff>(size),
                    "a position is not in the file");
        }
        if (before != nullptr) {
            require(listener->sum == before->sum, "validation changes what handlers get");
            auto next = listener->reports.begin();
            for (const Report& report : before->reports) {
                next = std::find(next, listener->reports.end(), report);
                require(next != listener->reports.end(), "a stricter mode does not report what a lenient one does");
                ++next;
            }
        }
        before = listener;
    }
    return 0;
}

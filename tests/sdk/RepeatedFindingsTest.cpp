#include <functional>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/DullErrorHandler.h"
#include "klv/parse_error.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/DullMXFSDTICPSystemHandler.h"
#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/index/MXFIndexHandler.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"
#include "mxf/metadata/structural/ContentStorage.h"
#include "mxf/structure/MXFPrimer.h"
#include "sdk/BRYXReader.h"
#include "support/Octets.h"

namespace {

/// How many findings there are of each kind.
class Counter final : public DullErrorHandler {
public:
    std::map<std::string, int> counts;

    void warning(const util::uuid& /*id*/, const std::string& message) override {
        ++counts[message.substr(0, message.find(" - "))];
    }
    void error(const util::uuid& id, const std::string& message) override { warning(id, message); }
};

struct Metadata final : MXFMetadataHandler, MXFMetadataModelHandler {
    void startMetadata() override {}
    void endMetadata() override {}
    void primer(const Primer& /*primer*/) override {}
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& /*set*/) override {}
    void model(const Model& /*model*/) override {}
};

struct Index final : MXFIndexHandler {
    void startIndex() override {}
    void endIndex() override {}
    void indexTableSegment(const MXFIndexTableSegment& /*segment*/) override {}
};

struct Proxies final : MXFPDProxySystemHandler {
    void pdProxyMetadata(const MXFPDProxyMetadata& /*metadata*/, const MXFGCItems& /*items*/) override {}
};

/// What the public reader finds in a file.
std::map<std::string, int> found(const std::string& header, const std::string& index = {}, const std::string& body = {},
                                 const std::string& fillAfterPack = {},
                                 BRYXValidationMode::Enum mode = BRYXValidationMode::None) {
    FileBuilder file;
    file.fillAfterPack = fillAfterPack;
    file.partition(MXFPartitionKind::Header, header, index, body).partition(MXFPartitionKind::Footer);
    const auto counter = std::make_shared<Counter>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(file.randomIndexPack().file), mode);
    reader->setMetadataHandler(std::make_shared<Metadata>());
    reader->setIndexHandler(std::make_shared<Index>());
    reader->setGCStructureHandler(std::make_shared<DullMXFGCStructureHandler>());
    reader->setSDTICPSystemHandler(std::make_shared<DullMXFSDTICPSystemHandler>());
    reader->setPDProxySystemHandler(std::make_shared<Proxies>());
    reader->setErrorHandler(counter);
    reader->read();
    return counter->counts;
}

std::string repeated(int count, const std::function<std::string(int)>& part) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += part(i);
    }
    return result;
}

std::string number(int value) {
    return octets::of({value >> 8 & 0xFF, value & 0xFF});
}

std::string primerPack(int count, const std::function<std::string(int)>& entry) {
    return octets::klv(mxfutil::primerPackKey,
                       octets::of({0, 0}) + number(count) + octets::of({0, 0, 0, 18}) + repeated(count, entry));
}

} // namespace

/// What damage repeats within a thing is reported once for the thing, and not for more than a thousand things of a region.
TEST(RepeatedFindings, ComeOnceForEachThing) {
    constexpr int many = 3000;
    const auto set = [](const std::string& items) { return octets::klv(ContentStorage::classKey, items); };
    const auto uid = [](int n) { return octets::of({0x3C, 0x0A, 0, 16}) + std::string(14, 'u') + number(n); };
    const std::string primer = primerPack(0, {});

    auto counts = found(primer +
                        set(uid(0) + repeated(many,
                                              [](int) {
                                                  return octets::of({0x80, 1, 0, 0});
                                              })) +
                        set(uid(1) + repeated(many, [](int n) { return number(0x8002 + n % 2) + number(0); })));
    EXPECT_EQ(counts["tag missing in primer"], 4); // with that of the instance UID
    counts = found(primer + set(uid(0) + repeated(many, [](int) { return octets::of({0x3B, 2, 0, 0}); })));
    EXPECT_EQ(counts["unexpected repeated property"], 1);
    counts = found(primer + repeated(many, [&](int n) { return set(uid(n) + number(0x8000 + n) + number(0)); }));
    EXPECT_EQ(counts["tag missing in primer"], 1000);

    counts = found(primerPack(many, [](int) { return number(0) + octets::key(keys::item); }));
    EXPECT_EQ(counts["invalid primer value"], 1);
    counts = found(primerPack(many, [](int) { return number(0x8000) + octets::key(keys::item); }));
    EXPECT_EQ(counts["repeated primer tag"], 1);
    counts = found(
        repeated(many, [](int) { return primerPack(1, [](int) { return number(0) + octets::key(keys::item); }); }));
    EXPECT_EQ(counts["invalid primer value"], 1);

    counts = found(primer + repeated(many, [&](int n) { return set(uid(n % 3)); }));
    EXPECT_EQ(counts["duplicate MetadataRoot.instanceUID"], 3);
    const auto setWithKey = [&](int n) {
        KLVKey key = keys::localSet;
        key[14] = static_cast<std::uint8_t>(n >> 8);
        key[15] = static_cast<std::uint8_t>(n);
        return octets::klv(key, {});
    };
    counts = found(primer + repeated(many, setWithKey));
    EXPECT_EQ(counts["unrecognized (dark) metadata"], 1000);

    const std::string segment = octets::key(klvutil::key("060e2b34.02530101.0d010201.01100100"));
    const std::string items = repeated(many, [](int) { return octets::of({0x7F, 1, 0, 0}); });
    counts = found({}, repeated(2, [&](int) { return segment + octets::length(items.size()) + items; }));
    EXPECT_EQ(counts["unsupported tag in index segment"], 1);

    const KLVKey system = klvutil::key("060e2b34.02430101.0d010301.04010201");
    const std::string tooMany = octets::klv(system, repeated(70000, [](int) { return octets::of({1, 0, 0}); }));
    counts = found({}, {}, tooMany + tooMany);
    EXPECT_EQ(counts["too many items in GC system element"], 2);

    counts = found({}, {}, {}, repeated(many, [](int) { return octets::klv(klvutil::fillKey, {}); }));
    EXPECT_EQ(counts["adjacent fill items should be concatenated"], 1000);

    // Elements, and segments, that are all wrong in themselves.
    counts = found({}, {}, repeated(many, [&](int) { return octets::klv(system, octets::of({1, 0, 0, 1, 0, 0})); }));
    EXPECT_EQ(counts["missing SDTI-CP system metadata"], 1);
    EXPECT_EQ(counts["incorrect SDTI-CP package metadata block count"], 1000);
    EXPECT_EQ(counts["unexpected extra SDTI-CP package metadata"], 1000);
    const auto proxies = [](const std::string& value) {
        return repeated(many, [&](int) { return octets::klv(mxfutil::pdProxySetKey, value); });
    };
    EXPECT_EQ(found({}, {}, proxies({}))["missing PDProxy frameCount"], 500);
    counts = found({}, repeated(many, [&](int) { return segment + octets::length(0); }));
    EXPECT_EQ(counts["missing indexEditRate"], 200); // and four others that are missing

    // One system item that differs makes all others differ from it; and all may do what none should.
    const auto pack = [](int n) {
        std::string value(57, '\0');
        value[7] = static_cast<char>(n == 0 ? 1 : 2); // label
        value[1] = static_cast<char>(n == 0 ? 4 : 6); // rate
        return octets::klv(mxfutil::sdtiCPSystemMetadataKey, value);
    };
    counts = found({}, {}, repeated(many, pack), {}, BRYXValidationMode::Strict);
    EXPECT_EQ(counts["label of system item differs from that of the first one"], 1);
    EXPECT_EQ(counts["rate of system item differs from that of the first one"], 1);
    EXPECT_EQ(counts["discontinuous continuityCount"], 1);
    const auto noTimecode = [](int n) {
        std::string value(57, '\0');
        value[1] = 4;
        value[6] = static_cast<char>(n % 2 * 2);
        value[40] = static_cast<char>(0x81); // a user stamp that is a timecode
        value[41] = static_cast<char>(0xFF);
        return octets::klv(mxfutil::sdtiCPSystemMetadataKey, value);
    };
    counts = found({}, {}, repeated(many, noTimecode), {}, BRYXValidationMode::Strict);
    EXPECT_EQ(counts["invalid timecode in system item"], 1000);
    EXPECT_EQ(counts["discontinuous continuityCount"], 1000);
}

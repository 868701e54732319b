#include <sstream>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "klv/KLVMonitor.h"
#include "mxf/metadata/model/MXFLabelNames.h"
#include "mxf/structure/MXFPrimedSetParser.h"
#include "mxf/structure/MXFStaticTags.h"
#include "support/ExpectLog.h"
#include "support/Octets.h"
#include "support/Recorders.h"

namespace {

constexpr KLVKey lastModifiedDate{{0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 2, 7, 2, 1, 0x10, 2, 4, 0, 0}}; // 0x3B02
constexpr KLVKey privateLabel = keys::make(1, 1, 9);

MXFPrimer readPrimer(const std::vector<MXFPrimerEntry>& entries, Log& log, const MXFPrimer* previous = nullptr,
                     std::uint32_t stride = 18) {
    std::string value = octets::of({0, 0, 0, static_cast<int>(entries.size()), 0, 0, 0, static_cast<int>(stride)});
    for (const MXFPrimerEntry& entry : entries) {
        std::string octets = octets::of({entry.tag >> 8, entry.tag & 0xFF}) + octets::key(entry.label);
        octets.resize(stride, 'x');
        value += octets;
    }
    FindingRecorder errors(log);
    return mxfutil::readPrimerPack(reinterpret_cast<const std::uint8_t*>(value.data()), value.size(), previous,
                                   &errors);
}

} // namespace

TEST(MXFStaticTags, LeadBothWays) {
    ASSERT_NE(mxfutil::staticLabel(0x3B02), nullptr);
    EXPECT_EQ(*mxfutil::staticLabel(0x3B02), lastModifiedDate);
    KLVKey otherVersion = lastModifiedDate;
    otherVersion[7] = 9;
    EXPECT_EQ(mxfutil::staticTag(otherVersion), 0x3B02);
    EXPECT_EQ(mxfutil::staticTag(privateLabel), 0);
    EXPECT_EQ(mxfutil::staticLabel(0x3FFF), nullptr);
    int count = 0;
    for (std::uint16_t tag = 1; tag < mxfutil::firstDynamicTag; ++tag) {
        if (const KLVKey* label = mxfutil::staticLabel(tag)) {
            EXPECT_EQ(mxfutil::staticTag(*label), tag);
            ++count;
        }
    }
    EXPECT_EQ(count, 428);
}

TEST(MXFLabelNames, AreFoundFromEndToEnd) {
    const auto name = [](const KLVKey& label) {
        const char* const found = mxfutil::labelName(label);
        return std::string(found == nullptr ? "none" : found);
    };
    EXPECT_EQ(name(klvutil::key("060e2b34.04010101.01010101.01010000")), "SDTICPMPEG2BaselineTemplate");
    EXPECT_EQ(name(klvutil::key("060e2b34.04010101.0e090607.01010103")), "FrameWrappedISXDContainer");
    EXPECT_EQ(name(keys::op1a), "MXFOP1aSingleItemSinglePackageMultiTrackStreamInternal");
    EXPECT_EQ(name(klvutil::key("060e2b34.0401017f.01030201.01000000")), "SMPTE12MTimecodeTrackInactiveUserBits");
    EXPECT_EQ(name(klvutil::key("060e2b34.04010101.ffffffff.ffffffff")), "none");
    EXPECT_EQ(name(klvutil::key("060e2b34.01010101.01030201.01000000")), "none"); // the key of an item
}

TEST(MXFPrimer, ChecksItsEntries) {
    Log log;
    KLVKey otherVersion = lastModifiedDate;
    otherVersion[7] = 9;
    const MXFPrimer first = readPrimer({{0x3B02, otherVersion}, {0x8000, privateLabel}}, log, nullptr, 20);
    EXPECT_EQ(first, (MXFPrimer{{0x3B02, otherVersion}, {0x8000, privateLabel}}));
    EXPECT_LOG(log, Log{});
    readPrimer({{0x3B02, privateLabel}, {0x8001, lastModifiedDate}, {0x8000, keys::item}}, log, &first);
    const std::string label = " - 0x3b02 " + toString(privateLabel);
    EXPECT_LOG(log, (Log{"error non-standard primer key" + label, "error inconsistent primer key" + label,
                         "warning inconsistent primer tag" + label,
                         "warning non-standard primer tag - 0x8001 " + toString(lastModifiedDate),
                         "warning inconsistent primer tag - 0x8001 " + toString(lastModifiedDate),
                         "warning inconsistent primer key - 0x8000 " + toString(keys::item)}));
    log.clear();
    EXPECT_EQ(readPrimer({{0x8000, keys::item}, {0x8000, privateLabel}, {0, keys::item}}, log).at(0x8000), keys::item);
    EXPECT_LOG(log, "error repeated primer tag - 0x8000 " + toString(privateLabel) +
                        "; error invalid primer value - 0x0000 " + toString(keys::item));
    log.clear();
    readPrimer({{0x8000, keys::item}}, log, nullptr, 17);
    const std::string claim =
        octets::of({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 18, 0x80, 0}) + octets::key(keys::item) + "x";
    FindingRecorder errors(log);
    const auto* octets = reinterpret_cast<const std::uint8_t*>(claim.data());
    EXPECT_EQ(mxfutil::readPrimerPack(octets, claim.size(), nullptr, &errors).size(), 1U);
    EXPECT_LOG(log, "error invalid primer pack - unexpected size of a batch element; "
                    "error invalid primer pack - too few octets");
    const auto written = mxfutil::writePrimerPack(first);
    log.clear();
    EXPECT_EQ(mxfutil::readPrimerPack(written.data(), written.size(), &first, &errors), first);
    EXPECT_LOG(log, Log{});
}

/// A property can have a static tag in one set, and none in another: the MIME type does in ST 377-1's descriptors of
/// auxiliary data, and not in those of ST 429-5.
TEST(MXFPrimer, AcceptsADynamicTagForWhatHasAStaticOneInOtherSets) {
    const KLVKey mimeType = klvutil::key("060e2b34.01010107.04090201.00000000");
    ASSERT_EQ(mxfutil::staticTag(mimeType), 0x4E11);
    Log log;
    readPrimer({{0x4E11, mimeType}, {0x8000, mimeType}}, log);
    EXPECT_EQ(log, Log{});
    readPrimer({{0x4E10, mimeType}}, log);
    EXPECT_EQ(log, Log{"warning non-standard primer tag - 0x4e10 " + toString(mimeType)});
}

TEST(MXFPrimedSetParser, DecodesTheSetsItWants) {
    class Parser : public MXFPrimedSetParser {
    public:
        explicit Parser(Log& log) : log_(log) {}

    private:
        const MXFPrimer& primer() const override { return primer_; }
        bool wantsSet(const KLVKey& key) override { return key[15] != 1; }
        const KLVKey* unknownTag(std::uint16_t tag) override {
            log_.push_back("unknown " + mxfutil::tagText(tag));
            return mxfutil::staticLabel(tag);
        }
        void primedSet(MXFPrimedSet& set) override {
            log_.push_back(line(nullptr, "set", set.position, set.length));
            for (const auto& [label, value] : set.properties) {
                log_.push_back(toString(label).substr(40) + "=" + std::string(value.begin(), value.end()).substr(0, 9));
            }
        }

        Log& log_;
        MXFPrimer primer_{{0x8000, keys::item}, {0x8001, keys::make(1, 1, 5)}};
    };
    const std::string items =
        octets::of({0x80, 0, 0, 2, 'a', 'b', 0x80, 0, 0, 1, 'c', 0x3B, 2, 0, 1, 'd', 0x7F, 0, 0, 1, 'e'});
    const std::string large = octets::of({0x80, 1}) + octets::length(100000) + std::string(100000, 'L');
    std::istringstream stream(octets::klv(keys::localSet, items) + octets::klv(keys::make(2, 0x53, 1), items) +
                              octets::klv(keys::make(2, 0x13), large) + octets::klv(keys::make(2, 0x43), ""));
    Log log;
    Log forwarded;
    EventRecorder next(forwarded);
    next.wants = false;
    FindingRecorder errors(log);
    Parser parser(log);
    parser.setHandler(&next);
    parser.setErrorHandler(&errors);
    GenericKLVReader reader;
    reader.setErrorHandler(&errors);
    reader.setHandler(&parser);
    reader.parse(stream, 0);
    EXPECT_LOG(log,
               "error unexpected repeated property - 0x8000 @0; unknown 0x3b02; unknown 0x7f00; set 0 41; 02040000=d; "
               "00000001=ab; warning non-standard local item length type - " +
                   toString(keys::make(2, 0x13)) + " @82; set 82 100026; 00000005=LLLLLLLLL");
    EXPECT_EQ(forwarded.at(2), "localSet 00000001 21 1 1 @41");
    EXPECT_EQ(forwarded.at(forwarded.size() - 3), "localSet 00000000 0 0 1 @100108");
}

#include <functional>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "klv/parse_error.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemCoder.h"
#include "mxf/essence/MXFSDTICPSystemParser.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/Octets.h"
#include "support/Recorders.h"

namespace {

std::string text(const MXFGCItems& items) {
    std::string result;
    for (const MXFGCItem& item : items) {
        result += " " + std::to_string(item.tag) + "=" + std::string(item.data, item.data + item.size);
    }
    return result;
}

class Receiver : public MXFSDTICPSystemHandler, public MXFPDProxySystemHandler {
public:
    Log log;
    std::vector<MXFSystemMetadataPack> packs;
    MXFPDProxyMetadata proxy;

    void systemMetadata(const MXFSystemMetadataPack& pack) override {
        log.push_back("pack " + std::to_string(pack.continuityCount));
        packs.push_back(pack);
    }
    void packageMetadata(const MXFGCItems& items) override { log.push_back("package" + text(items)); }
    void pictureMetadata(const MXFGCItems& items) override { log.push_back("picture" + text(items)); }
    void soundMetadata(const MXFGCItems& items) override { log.push_back("sound" + text(items)); }
    void dataMetadata(const MXFGCItems& items) override { log.push_back("data" + text(items)); }
    void controlData(const std::uint8_t* data, std::size_t size) override {
        log.push_back("control " + (data == nullptr ? "nothing" : std::string(data, data + size)));
    }
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& items) override {
        log.push_back("proxy of " + std::to_string(items.size()));
        proxy = metadata;
    }
};

/// What the parsers make of the elements in @p body.
template <class Parser>
std::string parsed(const std::string& body, Receiver& receiver) {
    FindingRecorder errors(receiver.log);
    Parser parser(&receiver);
    parser.setErrorHandler(&errors);
    struct : DullMXFGCStructureHandler {
        std::function<void()> atEnd = [] {};
        void endStream() override { atEnd(); }
    } structure;
    if constexpr (std::is_same_v<Parser, MXFSDTICPSystemParser>) {
        structure.atEnd = [&] { parser.endSystemItems(); };
    }
    MXFGCSplitter splitter(&structure, &parser, nullptr);
    splitter.setErrorHandler(&errors);
    std::istringstream stream(body);
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    reader.setErrorHandler(&errors);
    reader.parse(stream, 0);
    std::string told;
    for (const std::string& entry : receiver.log) { // positions aside
        told += (told.empty() ? "" : "; ") + entry.substr(0, entry.rfind(" @"));
    }
    return told;
}

std::string sdtiCP(const std::string& body) {
    Receiver receiver;
    return parsed<MXFSDTICPSystemParser>(body, receiver);
}

std::string pack(std::uint8_t bitmap = 0, const std::string& octets = std::string(56, '\0')) {
    return octets::klv(mxfutil::sdtiCPSystemMetadataKey, static_cast<char>(bitmap) + octets);
}

/// An element with @p count in its key, and items of one octet with the tags and values in @p items.
std::string set(std::uint8_t kind, std::uint8_t count, const std::string& items) {
    const auto element = static_cast<mxfutil::SDTICPElement>(kind);
    const bool isControl = element == mxfutil::SDTICPElement::Control;
    std::string value;
    for (std::size_t i = 0; i < items.size(); i += 2) {
        value += items[i] + (isControl ? std::string(2, '\0') : std::string()) + octets::of({0, 1}) + items[i + 1];
    }
    return octets::klv(mxfutil::sdtiCPElementKey(element, count), value);
}

} // namespace

TEST(SystemItems, AreDecoded) {
    // The pack of a file from a recorder: 50 Mbit/s MPEG at 25 packages a second.
    const std::string octets = octets::of({0x5C, 0x04, 0x00, 0x12, 0x34, 0xEC, 0xB6, 0x06, 0x0E, 0x2B, 0x34, 0x04,
                                           0x01, 0x01, 0x03, 0x0D, 0x01, 0x03, 0x01, 0x02, 0x7F, 0x01, 0x00}) +
                               std::string(17, '\0') + octets::of({0x81, 0x53, 0x30, 0x58, 0xA3}) +
                               std::string(12, '\0');
    Receiver receiver;
    EXPECT_EQ(parsed<MXFSDTICPSystemParser>(pack(0x5C, octets.substr(1)) + set(2, 1, "\x83U"), receiver),
              "pack 60598; package 131=U");
    const MXFSystemMetadataPack& found = receiver.packs.at(0);
    EXPECT_EQ(found.bitmap, MXFSystemBitmap::label | MXFSystemBitmap::userStamp | MXFSystemBitmap::pictureItem |
                                MXFSystemBitmap::soundItem);
    EXPECT_EQ(mxfutil::packageRate(found.rate).value(), (Rational{25, 1}));
    EXPECT_EQ(found.channelHandle, 0x1234);
    EXPECT_EQ(toString(found.label), "urn:smpte:ul:060e2b34.04010103.0d010301.027f0100");
    EXPECT_FALSE(mxfutil::stampTimecode(found, found.creationStamp));
    EXPECT_EQ(toString(mxfutil::stampTimecode(found, found.userStamp).value()), "23:58:30;13");
    EXPECT_EQ(klvutil::writeValue(found), std::vector<std::uint8_t>(octets.begin(), octets.end()));
}

TEST(SystemItems, CountTimecodesAndRates) {
    for (const auto& [rate, code] : {std::pair<Rational, int>{{24000, 1001}, 3},
                                     {{25, 1}, 4},
                                     {{30, 1}, 6},
                                     {{60000, 1001}, 13},
                                     {{240, 2}, 24},
                                     {{2, 1}, -1},
                                     {{0, 0}, -1},
                                     {{-25, -1}, 4}}) {
        EXPECT_EQ(mxfutil::packageRateCode(rate).value_or(255), code == -1 ? 255 : code) << toString(rate);
    }
    EXPECT_FALSE(mxfutil::packageRate(1));
    EXPECT_FALSE(mxfutil::packageRate(26));
    // The second frame of a pair is told by the field mark, which stands elsewhere at 50.
    const Timecode last{23, 59, 59, 59, true};
    for (const auto& [framesPerSecond, marked] : {std::pair<unsigned, int>{60, 1}, {50, 3}, {48, 1}}) {
        const Timecode odd{1, 2, 3, 47, false};
        const MXFTimecodeStamp stamp(odd, framesPerSecond);
        EXPECT_EQ(stamp.octets[0], 0x23);
        EXPECT_NE(stamp.octets[static_cast<std::size_t>(marked)] & 0x80, 0);
        EXPECT_EQ(stamp.timecode(framesPerSecond).value(), odd);
    }
    EXPECT_EQ(MXFTimecodeStamp(last, 60).timecode(60).value(), last);
    EXPECT_EQ(toString(MXFTimecodeStamp(last, 60).timecode().value()), "23:59:59;29");
    for (const std::size_t octet : {0U, 1U, 2U, 3U}) {
        MXFTimecodeStamp broken(Timecode{1, 2, 3, 4, false});
        broken.octets[octet] |= 0x0F;
        EXPECT_FALSE(broken.timecode());
        broken.octets[octet] = octet == 3 ? 0x24 : 0x60;
        EXPECT_EQ(broken.timecode().has_value(), octet == 0) << octet; // 20 frames, with a flag
    }
}

TEST(SystemItems, AreChecked) {
    const std::string control = "error unexpected SDTI-CP control data";
    EXPECT_LOG(sdtiCP(pack() + set(2, 2, "aAbB") + set(3, 1, "cC") + set(4, 1, "dD") + set(5, 1, "eE") + pack(1) +
                      set(6, 1, "fF") + pack()),
               "pack 0; package 97=A 98=B; picture 99=C; sound 100=D; data 101=E; pack 0; control F; pack 0");
    EXPECT_LOG(sdtiCP(set(3, 1, "aA") + set(4, 1, "bB") + pack()),
               "error missing SDTI-CP system metadata; picture 97=A; sound 98=B; pack 0");
    EXPECT_LOG(sdtiCP(pack() + set(2, 1, "aA") + set(2, 3, "bBcC") + set(4, 2, "") + pack() + set(2, 0, "")),
               "pack 0; package 97=A; error unexpected extra SDTI-CP package metadata; "
               "error incorrect SDTI-CP package metadata block count; package 98=B 99=C; "
               "error incorrect SDTI-CP sound metadata block count; sound; pack 0; package");
    EXPECT_LOG(sdtiCP(pack() + set(6, 1, "aA") + pack(1) + set(6, 2, "aAbB") + pack(1) + set(6, 0, "")),
               "pack 0; " + control +
                   "; control A; pack 0; error incorrect SDTI-CP control data block count; control A; "
                   "pack 0; error incorrect SDTI-CP control data block count; control nothing");
    EXPECT_LOG(sdtiCP(pack(1) + pack(1)), "pack 0; error missing SDTI-CP control data; pack 0; "
                                          "error missing SDTI-CP control data");
    // What is no element of the scheme is told of once, and goes no further.
    const std::string unknownKind = set(9, 1, "aA");
    const KLVKey otherScheme = mxfutil::pdProxySetKey;
    std::string log = "pack 0";
    for (const KLVKey& key : {mxfutil::sdtiCPElementKey(static_cast<mxfutil::SDTICPElement>(9), 1), otherScheme}) {
        log += "; error invalid SDTI-CP system element - " + toString(key);
    }
    const std::string others = unknownKind + octets::klv(otherScheme, "");
    EXPECT_LOG(sdtiCP(pack() + others + others), log);
    // Damage: sizes that a pack or an item cannot have.
    EXPECT_LOG(sdtiCP(pack(0, "short") + set(2, 0, "")), "error invalid SDTI-CP system metadata size - 6; package");
    KLVKey key = mxfutil::sdtiCPElementKey(mxfutil::SDTICPElement::Package, 1);
    EXPECT_THROW(sdtiCP(pack() + octets::klv(key, octets::of({'a', 0xFF, 0xFF, 'A'}))), klvutil::parse_error);

    // The same elements in the form of packs; and what nobody wants.
    Receiver receiver;
    MXFSDTICPSystemParser parser;
    EXPECT_FALSE(parser.wantsSystemElement(key));
    parser.setSystemHandler(&receiver);
    EXPECT_TRUE(parser.wantsSystemElement(key));
    parser.variableLengthPack(key, {{0, reinterpret_cast<const std::uint8_t*>("A"), 1}});
    EXPECT_LOG(receiver.log, "package 0=A");
    EXPECT_EQ(failure([&] { parser.fixedLengthPack(key, nullptr, 0); }), "valid SDTI-CP fixed length pack");
    EXPECT_EQ(failure([&] { parser.variableLengthPack(otherScheme, {}); }), "valid SDTI-CP variable length pack");
}

TEST(SystemItems, AreCoded) {
    // Coded and parsed again, they are what they were.
    Receiver receiver;
    MXFSDTICPSystemParser parser(&receiver);
    Log log;
    FindingRecorder errors(log);
    parser.setErrorHandler(&errors);
    MXFSDTICPSystemCoder coder(parser);
    const auto* const octets = reinterpret_cast<const std::uint8_t*>("ABC");
    MXFSystemMetadataPack system;
    system.bitmap = MXFSystemBitmap::controlData;
    system.continuityCount = 7;
    coder.systemMetadata(system);
    coder.packageMetadata({{0x83, octets, 2}, {0x88, octets, 0}});
    coder.pictureMetadata({{1, octets, 1}});
    coder.soundMetadata({});
    coder.dataMetadata({{2, octets, 1}});
    coder.controlData(octets, 3);
    EXPECT_LOG(receiver.log, "pack 7; package 131=AB 136=; picture 1=A; sound; data 2=A; control ABC");
    EXPECT_LOG(log, "");
    EXPECT_EQ(failure([&] { coder.soundMetadata({{256, octets, 1}}); }), "valid SDTI-CP tag");
    EXPECT_EQ(failure([&] { coder.soundMetadata({{1, octets, 65536}}); }), "property fits item length");
}

TEST(SystemItems, OfProxiesAreDecoded) {
    const auto item = [](int tag, const std::string& value) {
        return octets::of({1, tag, 0, static_cast<int>(value.size())}) + value;
    };
    const auto proxy = [](const std::string& items, Receiver& receiver) {
        return parsed<MXFPDProxySystemParser>(octets::klv(mxfutil::pdProxySetKey, items), receiver);
    };
    const std::string two = octets::of({0, 0, 0, 2, 0, 0, 0, 8, 0x24, 3, 2, 1, 0, 0, 0, 0, 0, 4, 2, 1, 0, 0, 0, 0});
    Receiver receiver;
    EXPECT_EQ(proxy(item(1, octets::of({0, 0, 0, 2})) + item(2, two) + item(9, "x"), receiver), "proxy of 3");
    EXPECT_EQ(receiver.proxy.frameCount, 2U);
    EXPECT_EQ(toString(receiver.proxy.timecodes.at(1).timecode().value()), "01:02:04:00");
    const auto log = [&](const std::string& items) {
        Receiver other;
        return proxy(items, other);
    };
    EXPECT_EQ(log(item(1, octets::of({0, 0, 0, 3})) + item(2, two)),
              "error inconsistent frameCount and timecodes; proxy of 2");
    EXPECT_EQ(log(item(2, octets::of({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 8}))),
              "error missing PDProxy frameCount; error invalid PDProxy timecodes value - too few octets; proxy of 1");
    EXPECT_EQ(log(item(1, "long!")).substr(0, 63), "error invalid PDProxy frameCount value - too many octets; error");

    MXFPDProxySystemParser parser;
    EXPECT_FALSE(parser.wantsSystemElement(mxfutil::pdProxySetKey));
    parser.setSystemHandler(&receiver);
    EXPECT_FALSE(parser.wantsSystemElement(mxfutil::sdtiCPSystemMetadataKey));
    EXPECT_EQ(failure([&] { parser.localSet(mxfutil::sdtiCPSystemMetadataKey, {}); }), "valid PDProxy local set");
}

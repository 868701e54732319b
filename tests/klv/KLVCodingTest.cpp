#include "klv/KLVCoding.h"

#include <map>
#include <set>
#include <sstream>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "klv/KLVFindings.h"
#include "klv/KLVValueTypes.h"
#include "klv/ValueCoding.h"
#include "mxf/engines/MXFEngineFindings.h"
#include "mxf/essence/MXFGCFindings.h"
#include "mxf/essence/MXFSystemFindings.h"
#include "mxf/index/MXFIndexFindings.h"
#include "mxf/metadata/factories/MXFMetadataFindings.h"
#include "mxf/structure/MXFPrimerFindings.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "support/Octets.h"
#include "util/assertion_failure.h"
#include "util/hex.h"
#include "util/utf8.h"
#include "validation/BRYXChecks.h"

TEST(KLVKey, VersionOctetTakesNoPart) {
    KLVKey a = keys::item;
    KLVKey b = a;
    b[7] = 0x0E;
    EXPECT_EQ(a, b);
    std::map<KLVKey, int> map{{a, 1}};
    EXPECT_FALSE(map.emplace(b, 2).second);
    EXPECT_EQ(map.at(b), 1);

    for (const std::size_t octet : {6U, 8U, 15U}) {
        KLVKey low = a;
        KLVKey high = a;
        low[octet] = 0x7F;
        high[octet] = 0x80;
        EXPECT_LT(low, high) << octet;
        EXPECT_FALSE(high < low) << octet;
        EXPECT_NE(low, high) << octet;
    }
    EXPECT_EQ(toString(keys::op1a), "urn:smpte:ul:060e2b34.04010101.0d010201.01010900");
}

TEST(KLVCoding, ClassifiesByOctets4And5) {
    const auto coding = [](int category, int structure) {
        return "-IULVFWX"[static_cast<int>(
            klvutil::classify(keys::make(static_cast<std::uint8_t>(category), static_cast<std::uint8_t>(structure))))];
    };
    std::string structures;
    for (const int structure : {0, 1, 2, 3, 4, 5, 6, 7, 0x13, 0x43, 0x53, 0x63, 0x7F}) {
        structures += coding(2, structure);
    }
    EXPECT_EQ(structures, "-U-LVF--LLLL-");
    EXPECT_EQ((std::string{coding(0, 1), coding(1, 1), coding(3, 1), coding(4, 1), coding(5, 1)}), "-IWX-");
    KLVKey key = keys::item;
    key[3] = 0x35;
    EXPECT_EQ(klvutil::classify(key), KLVCoding::None);
}

TEST(KLVCoding, BERLengthForms) {
    std::uint8_t field[9];
    EXPECT_EQ(klvutil::berLengthFieldSize(1), 1);
    EXPECT_EQ(klvutil::berLengthFieldSize(0x83), 4);
    EXPECT_EQ(klvutil::berLengthFieldSize(0x88), 9);
    for (const int form : {0, 2, 0x7F, 0x80, 0x89, 0xFF}) {
        EXPECT_THROW(klvutil::berLengthFieldSize(static_cast<std::uint8_t>(form)), util::assertion_failure) << form;
    }
    EXPECT_EQ(octets::length(0x123456, 0x83), octets::of({0x83, 0x12, 0x34, 0x56}));
    EXPECT_EQ(octets::length(~0ULL, 0x88), octets::of({0x88, 255, 255, 255, 255, 255, 255, 255, 255}));
    EXPECT_THROW(klvutil::storeBERLength(field, 0x83, 0x1000000), util::assertion_failure);
    EXPECT_THROW(klvutil::storeBERLength(field, 1, 0x80), util::assertion_failure);
}

TEST(KLVCoding, LocalFieldsAndTheirShift) {
    const auto write = [](KLVFieldForm form, std::uint32_t value) {
        std::ostringstream stream;
        klvutil::writeField(stream, form, value);
        return stream.str();
    };
    EXPECT_EQ(write(KLVFieldForm::OneOctet, 255), octets::of({255}));
    EXPECT_EQ(write(KLVFieldForm::TwoOctets, 65535), octets::of({255, 255}));
    EXPECT_EQ(write(KLVFieldForm::FourOctets, 0), octets::of({0, 0, 0, 0}));
    EXPECT_THROW(write(KLVFieldForm::BER, 0), util::assertion_failure);
    for (const auto& [form, value] :
         {std::pair{KLVFieldForm::OneOctet, 256U}, {KLVFieldForm::TwoOctets, 65536U}, {KLVFieldForm::FourOctets, 1U}}) {
        try {
            write(form, value);
            FAIL() << value;
        } catch (const util::assertion_failure& failure) {
            EXPECT_STREQ(failure.what(), "assertion failure: enough octets");
        }
    }
}

TEST(ValueTypes, TextAndCalendarForms) {
    const MXFTimestamp timestamp{2014, 3, 7, 10, 20, 30, 50};
    EXPECT_EQ(toString(timestamp), "2014-03-07T10:20:30.200Z");
    const std::tm time = klvutil::toCalendarTime(timestamp);
    EXPECT_EQ(time.tm_year, 114);
    EXPECT_EQ(time.tm_mon, 2);
    EXPECT_EQ(time.tm_mday, 7);
    EXPECT_EQ(time.tm_hour * 10000 + time.tm_min * 100 + time.tm_sec, 102030);

    EXPECT_EQ(octets::of(klvutil::writeValue(timestamp)), octets::of({0x07, 0xDE, 3, 7, 10, 20, 30, 50}));
    EXPECT_EQ(klvutil::readValue<MXFTimestamp>(klvutil::writeValue(timestamp)), timestamp);

    EXPECT_EQ(toString(Rational{-25, 1}), "-25/1");
    EXPECT_EQ(
        toString(MXFUID{{0x6b, 0xa7, 0xb8, 0x10, 0x9d, 0xad, 0x11, 0xd1, 0x80, 0xb4, 0, 0xc0, 0x4f, 0xd4, 0x30, 0xc8}}),
        "urn:uuid:6ba7b810-9dad-11d1-80b4-00c04fd430c8");

    // Where a label may stand, a UUID has its halves in the other order, and so its first bit set.
    KLVKey uuid{{0x80, 0xb4, 0, 0xc0, 0x4f, 0xd4, 0x30, 0xc8, 0x6b, 0xa7, 0xb8, 0x10, 0x9d, 0xad, 0x11, 0xd1}};
    EXPECT_EQ(toString(uuid), "urn:uuid:6ba7b810-9dad-11d1-80b4-00c04fd430c8");
    uuid[0] = 0x7F;
    EXPECT_EQ(toString(uuid), "urn:smpte:ul:7fb400c0.4fd430c8.6ba7b810.9dad11d1");
}

TEST(ValueCoding, ValuesOfAllTypesBothWays) {
    const auto coded = [](const auto& value, const std::string& octets) {
        using T = std::decay_t<decltype(value)>;
        EXPECT_EQ(octets::of(klvutil::writeValue(value)), octets);
        std::vector<std::uint8_t> wire(octets.begin(), octets.end());
        EXPECT_EQ(klvutil::readValue<T>(wire), value);
        if constexpr (!std::is_same_v<T, std::string> && !std::is_same_v<T, std::vector<std::uint8_t>>) {
            wire.push_back(1);
            EXPECT_THROW(klvutil::readValue<T>(wire), std::length_error);
        }
    };
    coded(std::int16_t{-2}, octets::of({0xFF, 0xFE}));
    coded(std::int64_t{-1}, std::string(8, '\xFF'));
    coded(true, octets::of({1}));
    coded(Rational{25, 1}, octets::of({0, 0, 0, 25, 0, 0, 0, 1}));
    coded(MXFProductVersion{4, 15, 0, 143, MXFProductVersion::Release::Released},
          octets::of({0, 4, 0, 15, 0, 0, 0, 143, 0, 1}));
    coded(std::string("en-GB"), "en-GB");
    coded(std::wstring(L"A\U0001F3AC"), octets::of({0, 'A', 0xD8, 0x3C, 0xDF, 0xAC}));
    coded(std::vector<std::uint8_t>{1, 2, 3}, octets::of({1, 2, 3}));
    coded(std::vector<std::uint32_t>{7, 8}, octets::of({0, 0, 0, 2, 0, 0, 0, 4, 0, 0, 0, 7, 0, 0, 0, 8}));
    coded(std::vector<KLVKey>{}, octets::of({0, 0, 0, 0, 0, 0, 0, 16}));
    EXPECT_EQ(klvutil::readValue<std::wstring>({0, 'a', 0, 0, 0, 'b'}), L"a");
    EXPECT_EQ(klvutil::readValue<std::string>({'a', 0, 'b'}), "a");
    EXPECT_EQ(klvutil::readValue<std::vector<KLVKey>>({0, 0, 0, 0, 0, 0, 0, 0}).size(), 0U);
    EXPECT_THROW(klvutil::readValue<std::wstring>({0xD8, 0}), util::utf8::invalid_utf16);
    EXPECT_THROW(klvutil::readValue<std::vector<std::uint32_t>>({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 4, 1}),
                 std::length_error);
    EXPECT_THROW(klvutil::readValue<std::vector<std::uint32_t>>({0, 0, 0, 1, 0, 0, 0, 2, 1, 2}), std::length_error);
}

TEST(Hex, GroupsEndWithTheOctets) {
    const std::uint8_t octets[] = {0x01, 0x02, 0x03, 0x04, 0xA5, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(util::hexGroups(octets, 5), "01020304.a5");
    EXPECT_EQ(util::hexGroups(octets, 3), "010203");
    EXPECT_EQ(util::hexGroups(octets, 0), "");
}

template <class Finding, class... Texts>
using Description = decltype(klvutil::describe(std::declval<const Finding&>(), std::declval<Texts>()...));

template <class AlwaysVoid, class Finding, class... Texts>
struct IsDescribedWith : std::false_type {};
template <class Finding, class... Texts>
struct IsDescribedWith<std::void_t<Description<Finding, Texts...>>, Finding, Texts...> : std::true_type {};

// A text that is left without its subject, or a subject for which the text has no place, does not compile.
TEST(Findings, HaveASubjectWhereTheTextNamesOne) {
    using Plain = decltype(klvutil::findings::invalidKey);
    using OfSubject = decltype(mxfutil::findings::invalidProperty);
    EXPECT_FALSE((IsDescribedWith<void, Plain, std::string, std::string>::value));
    EXPECT_TRUE((IsDescribedWith<void, Plain, std::string>::value));
    EXPECT_FALSE((IsDescribedWith<void, OfSubject>::value));
    EXPECT_TRUE((IsDescribedWith<void, OfSubject, std::string, std::string>::value));
    EXPECT_EQ(klvutil::describe(klvutil::findings::invalidKey, "why"), "invalid SMPTE key - why");
    EXPECT_EQ(klvutil::describe(mxfutil::findings::invalidProperty, "100%", "why"), "invalid 100% value - why");
}

TEST(Findings, IdentifiersAreDistinctSaveWhereShared) {
    using namespace klvutil::findings;
    using namespace mxfutil::findings;
    std::multimap<util::uuid, std::string> byId;
    std::set<util::uuid> shared{invalidKey.id, unsuccessfulRead.id, unexpectedRandomIndex.id};
#define ADD(name, base, index, level, message) byId.emplace(name.id, message);
    BRYX_KLV_FINDINGS(ADD)
    BRYX_STRUCTURE_FINDINGS(ADD)
    BRYX_PRIMER_FINDINGS(ADD)
    BRYX_INDEX_FINDINGS(ADD)
    BRYX_GC_FINDINGS(ADD)
    BRYX_SYSTEM_FINDINGS(ADD)
    BRYX_METADATA_FINDINGS(ADD)
    BRYX_ENGINE_FINDINGS(ADD)
#undef ADD
    for (const BRYXCheckGroup& group : getBRYXChecks()) {
        for (const BRYXCheck* check : group.checks) {
            byId.emplace(check->finding.id, check->finding.message);
        }
    }
    for (const auto& [id, message] : byId) {
        EXPECT_EQ(byId.count(id) > 1, shared.count(id) == 1) << message;
    }
    EXPECT_EQ(invalidKey.id, unimplementedCoding.id);
    EXPECT_NE(invalidKey.id, streamNotGood.id);
    EXPECT_EQ(partitionAfterRandomIndex.id, unexpectedRandomIndex.id);
}

#include <algorithm>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "mxf/engines/MXFPartialReader.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexCoder.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/KLVOctets.h"
#include "support/PackagePlaces.h"
#include "support/Recorders.h"
#include "support/Samples.h"

namespace {

/// Logs segments as their properties in hexadecimal digits.
class SegmentRecorder : public MXFIndexHandler {
public:
    explicit SegmentRecorder(Log& log) : log_(log) {}
    std::vector<MXFIndexTableSegment> segments;

    void startIndex() override { log_.emplace_back("start"); }
    void endIndex() override { log_.emplace_back("end"); }
    void indexTableSegment(const MXFIndexTableSegment& segment) override {
        segments.push_back(segment);
        log_.emplace_back("segment");
    }

private:
    Log& log_;
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

/// What reading @p region calls and finds.
std::string read(const std::string& region, std::vector<MXFIndexTableSegment>* segments = nullptr) {
    Log log;
    FindingRecorder errors(log);
    SegmentRecorder recorder(log);
    MXFIndexParser parser(recorder);
    parser.setErrorHandler(&errors);
    std::istringstream stream(region);
    GenericKLVReader reader;
    reader.setHandler(&parser);
    reader.parse(stream, 0);
    if (segments != nullptr) {
        *segments = recorder.segments;
    }
    return joined(log);
}

/// A segment with an index entry for each edit unit.
MXFIndexTableSegment variable(std::size_t entries) {
    MXFIndexTableSegment segment;
    segment.instanceUID.octets[15] = 1;
    segment.indexEditRate = {25, 1};
    segment.indexStartPosition = 100;
    segment.indexDuration = static_cast<std::int64_t>(entries);
    segment.bodySID = 1;
    segment.indexSID = 2;
    segment.sliceCount = 2;
    segment.posTableCount = 1;
    segment.deltaEntryArray = {{-1, 0, 0}, {0, 1, 7}, {1, 2, 0x01020304}};
    for (std::size_t i = 0; i < entries; ++i) {
        segment.indexEntryArray.push_back({-2, -3, MXFIndexEntryFlags::randomAccess, 1ULL << 40U, {5, 6}, {{1, 2}}});
    }
    return segment;
}

MXFIndexTableSegment constant(std::uint32_t octets, std::int64_t start, std::int64_t duration) {
    MXFIndexTableSegment segment = variable(0);
    segment.sliceCount = segment.posTableCount = 0;
    segment.deltaEntryArray.clear();
    segment.editUnitByteCount = octets;
    segment.indexStartPosition = start;
    segment.indexDuration = duration;
    return segment;
}

} // namespace

TEST(Index, ReadsWhatItWrites) {
    MXFIndexTableSegment all = variable(3);
    all.extStartOffset = 1;
    all.vbeByteCount = 2;
    all.singleIndexLocation = false;
    all.singleEssenceLocation = true;
    all.forwardIndexDirection = true;
    const std::string octets = coded({all, constant(4096, 0, 0)});
    std::vector<MXFIndexTableSegment> segments;
    EXPECT_LOG(read(octets, &segments), "start; segment; segment; end");
    EXPECT_EQ(coded(segments), octets);
    ASSERT_EQ(segments.size(), 2U);
    const MXFIndexEntry& entry = segments[0].indexEntryArray.at(2);
    EXPECT_EQ(entry.temporalOffset, -2);
    EXPECT_EQ(entry.keyFrameOffset, -3);
    EXPECT_EQ(entry.streamOffset, 1ULL << 40U);
    EXPECT_EQ(entry.sliceOffsets, (std::vector<std::uint32_t>{5, 6}));
    EXPECT_EQ(entry.posTable, std::vector<Rational>{(Rational{1, 2})});
    EXPECT_EQ(segments[0].deltaEntryArray.at(2).elementDelta, 0x01020304U);
    EXPECT_EQ(segments[0].deltaEntryArray.at(0).posTableIndex, -1);
    EXPECT_FALSE(segments[0].singleIndexLocation.value());
    EXPECT_FALSE(segments[1].vbeByteCount);

    MXFIndexTableSegment anonymous = constant(1, 0, 1);
    anonymous.instanceUID = {};
    read(coded({anonymous}), &segments);
    EXPECT_NE(segments.at(0).instanceUID, MXFUID());

    KLVOctets next;
    MXFIndexCoder coder(next);
    EXPECT_EQ(failure([&] { coder.indexTableSegment(all); }), "before index table segment");
    coder.startIndex();
    EXPECT_EQ(failure([&] { coder.startIndex(); }), "before start");
    all.posTableCount = 2;
    EXPECT_EQ(failure([&] { coder.indexTableSegment(all); }), "valid posTables");
    all.sliceCount = 3;
    EXPECT_EQ(failure([&] { coder.indexTableSegment(all); }), "valid sliceOffsets");
    const std::size_t most = mxfutil::maxIndexEntries(2, 1);
    coder.indexTableSegment(variable(most));
    EXPECT_EQ(failure([&] { coder.indexTableSegment(variable(most + 1)); }), "property fits item length");
}

TEST(Index, ChecksSegments) {
    const auto found = [](const MXFIndexTableSegment& segment) {
        const std::string log = read(coded({segment}));
        return log.substr(7, log.size() - 7 - std::string("segment; end").size());
    };
    EXPECT_EQ(found(constant(4096, 0, 0)), "");
    EXPECT_EQ(found(constant(4096, 10, 0)), "warning inconsistent editUnitByteCount and indexStartPosition; ");
    MXFIndexTableSegment segment = variable(24);
    EXPECT_EQ(found(segment), "");
    segment.indexDuration = 25;
    EXPECT_EQ(found(segment), "warning inconsistent indexDuration and indexEntryArray; ");
    segment.indexDuration = -1;
    EXPECT_EQ(found(segment), "warning inconsistent indexDuration and indexEntryArray; ");
    segment.indexDuration = 24;
    segment.editUnitByteCount = 1;
    segment.indexStartPosition = 0;
    EXPECT_EQ(found(segment), "warning inconsistent editUnitByteCount and indexEntryArray; ");
    segment = variable(1);
    segment.deltaEntryArray[2] = {2, 3, 0};
    EXPECT_EQ(found(segment), "warning inconsistent sliceCount and deltaEntryArray; "
                              "warning inconsistent posTableCount and deltaEntryArray; ");
    EXPECT_EQ(found(constant(0, 0, 0)), "warning inconsistent indexDuration and editUnitByteCount; "
                                        "warning inconsistent editUnitByteCount and indexEntryArray; ");
}

TEST(Index, StaysCalmWithDamage) {
    const auto set = [](const std::string& items, std::uint8_t form = 0x53) {
        KLVKey key = mxfutil::indexTableSegmentKey;
        key[5] = form;
        return octets::klv(key, items);
    };
    const std::string missing =
        "error missing instanceUID; error missing indexEditRate; error missing indexStartPosition; ";
    EXPECT_LOG(read(set(octets::of({0x3F, 0xFF, 0, 1, 7}))),
               "start; error unsupported tag in index segment - 0x3fff; " + missing +
                   "error missing indexDuration; error missing bodySID; "
                   "warning inconsistent indexDuration and editUnitByteCount; "
                   "warning inconsistent editUnitByteCount and indexEntryArray; segment; end");
    const auto arrays = [&](const std::string& value) {
        const std::string length = octets::of({0, static_cast<int>(value.size())});
        const std::string log = read(set(octets::of({0x3F, 9}) + length + value + octets::of({0x3F, 10}) + length +
                                         value + octets::of({0x3F, 5, 0, 4, 0, 0, 0, 9})));
        return log.substr(7 + missing.size());
    };
    const std::string rest = "error missing indexDuration; error missing bodySID; ";
    EXPECT_EQ(arrays(octets::of({0, 0, 0, 0, 0, 0, 0, 99})), rest + "segment; end");
    EXPECT_EQ(arrays(octets::of({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 1})),
              "error missing indexDuration; error missing bodySID; "
              "error invalid deltaEntryArray value - unexpected size of an array element; "
              "error invalid indexEntryArray value - unexpected size of an array element; segment; end");
    EXPECT_EQ(arrays("short"), "error missing indexDuration; error missing bodySID; "
                               "error invalid deltaEntryArray value - too few octets; "
                               "error invalid indexEntryArray value - too few octets; segment; end");
    // The form with BER lengths is the same segment.
    const std::string ber = read(set(octets::of({0x3F, 7, 4, 0, 0, 0, 1}), 0x13));
    EXPECT_EQ(ber.find("bodySID"), std::string::npos) << ber;
    EXPECT_NE(ber.find("segment"), std::string::npos) << ber;
}

TEST(Index, PartialReaderDeliversThatOfAPartition) {
    FileBuilder file;
    file.partition(MXFPartitionKind::Header, {}, coded({constant(4096, 0, 10)}), "body");
    std::istringstream stream(file.file);
    Log log;
    SegmentRecorder recorder(log);
    MXFPartialReader reader;
    reader.setInputStream(&stream);
    reader.setIndexHandler(&recorder);
    EXPECT_TRUE(reader.readPartition(0));
    EXPECT_LOG(log, "start; segment; end");
    reader.clearIndexHandler();
    EXPECT_TRUE(reader.readPartition(0));
    EXPECT_EQ(log.size(), 3U);
}

namespace {

/// A segment whose entries lie @p step octets apart.
MXFIndexTableSegment entries(std::int64_t start, std::int64_t count, std::uint64_t offset, std::uint64_t step) {
    MXFIndexTableSegment segment = constant(0, start, count);
    segment.deltaEntryArray.clear();
    for (std::int64_t i = 0; i < count; ++i) {
        segment.indexEntryArray.push_back({0, 0, 0, offset + static_cast<std::uint64_t>(i) * step, {}, {}});
    }
    return segment;
}

std::string ranges(const MXFIndexCalculator& index) {
    std::string text;
    for (const auto& range : index.ranges()) {
        text += (text.empty() ? "" : " ") + std::to_string(range.first) + "-" +
                (range.end == MXFIndexCalculator::endless ? "" : std::to_string(range.end));
    }
    return text;
}

} // namespace

TEST(IndexCalculator, AnswersFromAnyMixtureOfSegments) {
    struct Case {
        std::vector<MXFIndexTableSegment> segments;
        const char* ranges;
        std::vector<std::pair<std::int64_t, std::int64_t>> offsets; // by edit unit; -1 for none
    };
    MXFIndexTableSegment withSize = entries(0, 10, 0, 7);
    withSize.vbeByteCount = 9;
    MXFIndexTableSegment surplus = entries(0, 6, 0, 7);
    surplus.indexDuration = 5;
    MXFIndexTableSegment unknownDuration = constant(10, 0, -1);
    MXFIndexTableSegment otherTable = entries(0, 10, 500, 9);
    otherTable.bodySID = 7;
    const std::vector<Case> cases{
        {{constant(10, 0, 0)}, "0-", {{0, 0}, {1LL << 40, 10LL << 40}, {1LL << 61, -1}}},
        {{constant(10, 0, 5)}, "0-5", {{4, 40}, {5, -1}, {-1, -1}}},
        {{constant(10, 5, 5), constant(10, 0, 5)}, "0-10", {{4, 40}, {5, 50}, {9, 90}}},
        {{constant(10, 0, 5), constant(20, 5, 0)}, "0-", {{5, 50}, {6, 70}}},
        {{entries(10, 10, 1000, 7), entries(0, 10, 5, 3)}, "0-20", {{0, 5}, {9, 32}, {10, 1000}, {19, 1063}}},
        {{entries(0, 10, 0, 7), entries(5, 10, 500, 1)}, "0-15", {{9, 63}, {10, 505}}},
        {{withSize, constant(5, 10, 2)}, "0-12", {{9, 63}, {10, 72}, {11, 77}}},
        {{entries(0, 10, 0, 7), constant(5, 10, 2)}, "0-10", {{10, -1}}}, // nobody knows where it begins
        {{constant(5, 8, 2), withSize}, "0-10", {{8, 56}, {9, 63}}},
        {{constant(7, 3, 2), entries(0, 6, 0, 7)}, "0-6", {{3, 21}}},
        {{entries(0, 10, 0, 7), constant(5, 12, 2)}, "0-10", {{12, -1}}},
        {{constant(10, 0, 5), constant(20, 7, 2)}, "0-5", {{7, -1}}},
        {{surplus, entries(5, 5, 1000, 7)}, "0-10", {{4, 28}, {5, 1000}}},
        {{unknownDuration}, "0-", {{7, 70}}},
        {{entries(0, 5, 0, 7), otherTable}, "0-5", {{5, -1}}},
        {{constant(10, 100, 5)}, "100-105", {{100, 1000}}},
        {{entries(2, 2, 50, 1), constant(10, 0, 6)}, "0-4", {{1, 10}, {2, 50}, {4, -1}}},
        {{constant(0xFFFFFFFF, std::numeric_limits<std::int64_t>::max() - 1, 5)}, "", {}},
        {{entries(std::numeric_limits<std::int64_t>::max() - 2, 2, 0, 1)}, "", {}},
        {{entries(0, 1, ~0ULL, 0), constant(0, 0, 0), constant(1, -5, 5)}, "", {{0, -1}}},
    };
    for (const Case& c : cases) {
        MXFIndexCalculator index;
        index.setSegments(c.segments);
        EXPECT_EQ(ranges(index), c.ranges);
        for (const auto& [editUnit, offset] : c.offsets) {
            EXPECT_EQ(index.contains(editUnit), offset >= 0) << c.ranges << ' ' << editUnit;
            if (offset >= 0) {
                EXPECT_EQ(index.streamOffset(editUnit), static_cast<std::uint64_t>(offset)) << c.ranges;
                EXPECT_EQ(index.editUnitAt(static_cast<std::uint64_t>(offset)).value_or(-1), editUnit) << c.ranges;
            } else {
                EXPECT_EQ(failure([&, unit = editUnit] { index.streamOffset(unit); }), "found edit unit in index");
            }
        }
    }
    EXPECT_EQ(failure([] { MXFIndexCalculator().streamOffset(0); }), "index segments set");
}

TEST(IndexCalculator, KnowsElementsOrderAndSizes) {
    // I B B P in display order; stored as I P B B, two elements and a slice.
    MXFIndexTableSegment segment = constant(0, 0, 4);
    segment.sliceCount = 1;
    segment.deltaEntryArray = {{-1, 0, 0}, {0, 1, 0}, {0, 1, 100}};
    segment.indexEntryArray = {{0, 0, MXFIndexEntryFlags::randomAccess, 0, {900}, {}},
                               {1, -1, 0, 1100, {300}, {}},
                               {1, -2, 0, 1600, {50}, {}},
                               {-2, -3, 0, 1850, {50}, {}}};
    MXFIndexCalculator index;
    index.setSegments({segment});
    EXPECT_EQ(index.elementCount(0), 3U);
    EXPECT_EQ(index.elementOffset(1, 0).value(), 1100U);
    EXPECT_EQ(index.elementOffset(1, 1).value(), 1400U);
    EXPECT_EQ(index.elementOffset(1, 2).value(), 1500U);
    EXPECT_EQ(failure([&] { index.elementOffset(1, 3); }), "valid element index");
    EXPECT_TRUE(index.isReordered(0, 0));
    EXPECT_FALSE(index.isReordered(0, 1));
    EXPECT_EQ(index.storedPosition(1).value(), 2);
    EXPECT_EQ(index.storedPosition(3).value(), 1);
    EXPECT_EQ(index.keyFrame(3).value(), 0);
    EXPECT_EQ(index.flags(0), MXFIndexEntryFlags::randomAccess);
    EXPECT_EQ(index.size(1).value_or(0), 500U);
    EXPECT_FALSE(index.size(3));
    EXPECT_EQ(index.editUnitAt(1099).value_or(-1), 0);
    EXPECT_EQ(index.editUnitAt(5000).value_or(-1), 3);

    // What leads out of the index, or to no slice, is told as such.
    segment.indexEntryArray[0].temporalOffset = -128;
    segment.indexEntryArray[1].keyFrameOffset = -5;
    segment.indexEntryArray[2].streamOffset = ~0ULL;
    segment.deltaEntryArray[1].slice = 200;
    index.setSegments({segment});
    EXPECT_FALSE(index.storedPosition(0));
    EXPECT_FALSE(index.keyFrame(1));
    EXPECT_FALSE(index.contains(2));
    EXPECT_TRUE(index.contains(3));
    EXPECT_FALSE(index.elementOffset(0, 1));

    // The same segments again, and those of another table, change nothing.
    Log log;
    MXFIndexCalculator::Collector collector;
    MXFIndexTableSegment other = segment;
    other.indexSID = 3;
    for (const auto& given : {segment, other, segment}) {
        collector.indexTableSegment(given);
    }
    ASSERT_EQ(collector.tables().size(), 2U);
    index.setSegments(collector, collector.tables()[0]);
    EXPECT_EQ(ranges(index), "0-4");

    // However many segments there are and however they overlap, it takes no time to speak of.
    std::vector<MXFIndexTableSegment> many;
    for (int i = 0; i < 100000; ++i) {
        many.push_back(constant(1, 3LL * i, 1));
        many.push_back(constant(static_cast<std::uint32_t>(i) + 2, 0, 0));
    }
    index.setSegments(many);
    EXPECT_EQ(ranges(index), "0-");
}

TEST(IndexCalculator, FindsOffsetsHoweverUnevenTheyAre) {
    // Sizes between 1 octet and a quarter of all, in segments between 1 and 200 edit units.
    std::mt19937 random(7);
    std::vector<std::uint64_t> offsets{3};
    std::vector<MXFIndexTableSegment> segments;
    while (offsets.size() < 5000) {
        segments.push_back(entries(static_cast<std::int64_t>(offsets.size()) - 1,
                                   static_cast<std::int64_t>(1 + random() % 200), 0, 0));
        for (MXFIndexEntry& entry : segments.back().indexEntryArray) {
            entry.streamOffset = offsets.back();
            offsets.push_back(offsets.back() + (1U + random() % 3) + (random() % 50 == 0 ? random() % 1000000 : 0));
        }
    }
    segments.back().vbeByteCount = offsets.back() - segments.back().indexEntryArray.back().streamOffset;
    std::shuffle(segments.begin(), segments.end(), random);
    MXFIndexCalculator index;
    index.setSegments(segments);
    for (std::size_t unit = 0; unit + 1 < offsets.size(); ++unit) {
        const auto expected = static_cast<std::int64_t>(unit);
        EXPECT_EQ(index.streamOffset(expected), offsets[unit]);
        EXPECT_EQ(index.editUnitAt(offsets[unit]).value_or(-1), expected);
        EXPECT_EQ(index.editUnitAt(offsets[unit + 1] - 1).value_or(-1), expected);
    }
    EXPECT_FALSE(index.editUnitAt(2));
    EXPECT_FALSE(index.editUnitAt(offsets.back()));
}

TEST(IndexCalculator, LeadsToTheElementsOfEverySample) {
    std::size_t units = 0;
    for (const auto& path : sampleFiles()) {
        std::ifstream file(path, std::ios::binary);
        PackagePlaces body;
        MXFIndexCalculator::Collector collector;
        MXFIndexParser parser(collector);
        MXFReader reader;
        reader.setStructureHandler(&body.partitions);
        reader.setIndexHandler(&parser);
        reader.setBodyHandler(&body);
        reader.read(file);
        for (const MXFIndexCalculator::Table table : collector.tables()) {
            const std::vector<PackagePlaces::Package>& packages = body.packages[table.bodySID];
            MXFIndexCalculator index;
            index.setSegments(collector, table);
            const MXFIndexCalculator::Range range = index.ranges().at(0);
            const std::int64_t last = range.end == MXFIndexCalculator::endless ? 1 : range.end - 1;
            if (packages.size() == 1 && last > 0) {
                // Wrapped as one clip, in whose element the edit units lie. Entries count from its key, as those of frames
                // do; edit units of one size fill its value.
                EXPECT_LE(index.streamOffset(last) + index.size(last).value_or(1), body.lengths[table.bodySID] + 25)
                    << path;
                continue;
            }
            for (std::size_t unit = 0; unit < packages.size(); ++unit) {
                const auto position = static_cast<std::int64_t>(unit);
                const PackagePlaces::Package& package = packages[unit];
                ASSERT_TRUE(index.contains(position)) << path << ' ' << unit;
                EXPECT_EQ(index.streamOffset(position), package.at(0)) << path << ' ' << unit;
                EXPECT_EQ(index.editUnitAt(package.back()).value_or(-1), position) << path << ' ' << unit;
                for (std::size_t element = 0; element < index.elementCount(position); ++element) {
                    const std::uint64_t offset = index.elementOffset(position, element).value_or(~0ULL);
                    EXPECT_EQ(std::count(package.begin(), package.end(), offset), 1) << path << ' ' << unit;
                }
                ++units;
            }
        }
    }
    EXPECT_TRUE(sampleFiles().empty() || units > 0);
    RecordProperty("editUnits", static_cast<int>(units));
}

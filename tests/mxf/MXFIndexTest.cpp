#include <sstream>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "mxf/engines/MXFPartialReader.h"
#include "mxf/structure/MXFIndexCoder.h"
#include "mxf/structure/MXFIndexParser.h"
#include "support/Failure.h"
#include "support/KLVOctets.h"
#include "support/Recorders.h"

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
    EXPECT_EQ(read(octets, &segments), "start; segment; segment; end");
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
    EXPECT_EQ(read(set(octets::of({0x3F, 0xFF, 0, 1, 7}))),
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
    EXPECT_EQ(joined(log), "start; segment; end");
    reader.clearIndexHandler();
    EXPECT_TRUE(reader.readPartition(0));
    EXPECT_EQ(log.size(), 3U);
}

#include <algorithm>

#include <gtest/gtest.h>

#include "klv/parse_error.h"
#include "mxf/index/MXFIndexCoder.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
#include "support/KLVOctets.h"
#include "validation/Faults.h"

// What is lawful, or in daily use, passes without a word; what is wrong is told once, as what it is.

namespace {

using Texts = std::vector<std::string>;

/// What is reported, without its position, with its level before it.
Texts texts(const Findings& findings) {
    Texts all;
    for (const auto& finding : findings.all) {
        all.push_back((finding.level == klvutil::FindingLevel::warning ? "warning " : "error ") + finding.message);
    }
    return all;
}

Texts strict(const std::string& octets) {
    return texts(validate(octets, BRYXValidationMode::Strict));
}

/// Those that have @p word in them.
Texts about(const std::string& word, Texts all) {
    all.erase(std::remove_if(all.begin(), all.end(), [&](const auto& t) { return t.find(word) == std::string::npos; }),
              all.end());
    return all;
}

/// A file with @p segments in its footer partition.
std::string fileOf(const std::vector<MXFIndexTableSegment>& segments) {
    KLVOctets index;
    MXFIndexCoder coder(index);
    coder.startIndex();
    for (const MXFIndexTableSegment& segment : segments) {
        coder.indexTableSegment(segment);
    }
    FileBuilder file;
    file.partition(MXFPartitionKind::Header).partition(MXFPartitionKind::Footer, {}, index.octets);
    return file.file;
}

MXFIndexTableSegment indexSegment(std::int64_t start, std::int64_t duration) {
    MXFIndexTableSegment segment;
    segment.indexEditRate = {25, 1};
    segment.indexStartPosition = start;
    segment.indexDuration = duration;
    segment.indexSID = 2;
    segment.bodySID = 1;
    for (std::int64_t unit = 0; unit < duration; ++unit) {
        segment.indexEntryArray.push_back({0, 0, 0x80, static_cast<std::uint64_t>(start + unit), {}, {}});
    }
    return segment;
}

} // namespace

TEST(BRYXVerdict, ARateThatCannotBeIsToldOnceATable) {
    std::vector<MXFIndexTableSegment> segments{indexSegment(0, 2), indexSegment(2, 2), indexSegment(4, 2)};
    for (MXFIndexTableSegment& segment : segments) {
        segment.indexEditRate = {0, 0};
    }
    EXPECT_EQ(about("indexEditRate", strict(fileOf(segments))), Texts{"error invalid indexEditRate value - 0/0"});
    segments[1].indexEditRate = {25, 0};
    EXPECT_EQ(about("indexEditRate", strict(fileOf(segments))), Texts{"error invalid indexEditRate value - 0/0"});
    segments[1].indexEditRate = {25, 1};
    EXPECT_EQ(about("indexEditRate", strict(fileOf(segments))),
              (Texts{"error invalid indexEditRate value - 0/0",
                     "error indexEditRate differs from that of the first segment of the table - 25/1"}));
}

TEST(BRYXVerdict, EntriesBeyondTheDurationArePassedOver) {
    std::vector<MXFIndexTableSegment> segments{indexSegment(0, 2), indexSegment(2, 2)};
    const Texts before = strict(fileOf(segments));
    segments[1].indexEntryArray.push_back({100, 100, 0, 0, {}, {}}); // all that is in it is wrong
    Texts with = strict(fileOf(segments));
    EXPECT_EQ(about("inconsistent indexDuration", with),
              Texts{"warning inconsistent indexDuration and indexEntryArray"});
    EXPECT_EQ(with.size(), before.size() + 1) << ::testing::PrintToString(with);
}

TEST(BRYXVerdict, AClipOfDataIsOneUnit) {
    for (const bool isData : {false, true}) {
        ClipOptions options = pictureOnly;
        options.isConstant = options.isClip = true;
        options.hasSystemItems = false;
        options.partitionDuration = 0;
        options.placement = ClipOptions::Placement::Footer;
        GoodClip clip(options);
        ASSERT_EQ(strict(clip.octets), Texts{});
        clip.setSegment(0, 0x3F0D, std::int64_t{1});
        if (isData) {
            clip.put(clip.all(GoodClip::picture).front(), 12, {0x17});
            clip.set<TimelineTrack>(3, "trackNumber", std::uint32_t{0x17010201});
        }
        EXPECT_EQ(strict(clip.octets),
                  isData ? Texts{} : Texts{"warning index table does not cover the tracks - 0 to 1"});
    }
}

TEST(BRYXVerdict, AChannelWithoutAnIDIsNoDuplicate) {
    GoodClip clip;
    clip.forget<AudioChannelLabelSubDescriptor>(0, "channelID");
    clip.forget<AudioChannelLabelSubDescriptor>(1, "channelID");
    const Texts found = strict(clip.octets);
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()),
              std::set<std::string>{"warning missing MCALabelSubDescriptor.channelID"});
}

TEST(BRYXVerdict, VersionsOfPacksAndPrefaceAgree) {
    GoodClip pack;
    pack.setPack(1, "minorVersion", std::uint16_t{2});
    EXPECT_EQ(
        strict(pack.octets),
        (Texts{"warning earlier version - 1.2 (implemented 1.3)",
               "warning majorVersion and minorVersion differ from those of the header partition - 1.2, not 1.3"}));
    GoodClip preface;
    preface.set<Preface>(0, "version", std::uint16_t{0x0102});
    const Texts found = strict(preface.octets);
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()),
              std::set<std::string>{"warning Preface.version differs from that of the partition pack - 1.2, not 1.3"});
}

/// What is written is of version 1.3, whatever the model says that came from an older file.
TEST(BRYXVerdict, TheWriterGivesPrefaceAndPacksOneVersion) {
    const GoodClip clip(with([](ClipOptions& o) { o.change = [](Preface& p) { p.setVersion(0x0102); }; }));
    EXPECT_EQ(strict(clip.octets), Texts{});
    EXPECT_EQ((clip.get<Preface, std::uint16_t>(0, "version")), 0x0103);
}

TEST(BRYXVerdict, SeveralKindsWithoutASystemItemAreInUse) {
    GoodClip clip(with([](ClipOptions& o) { o.hasSystemItems = false; }));
    EXPECT_EQ(texts(validate(clip.octets, BRYXValidationMode::None)), Texts{});
    EXPECT_EQ(texts(validate(clip.octets, BRYXValidationMode::Standard)), Texts{});
    EXPECT_EQ(strict(clip.octets), Texts{"warning content package with essence of several kinds and no system item"});
    GoodClip single(with([](ClipOptions& o) { o.hasSystemItems = o.hasSound = false; }));
    EXPECT_EQ(strict(single.octets), Texts{});
}

/// Wherever a file that was closed ends before its random index, it is missing something that it says it has, which its
/// structure alone tells.
TEST(BRYXVerdict, AClosedFileThatIsCutIsAnError) {
    const GoodClip clip;
    std::vector<std::uint64_t> ends;
    for (const KLVKey& key : {klvutil::fillKey, mxfutil::sdtiCPSystemMetadataKey, GoodClip::picture, GoodClip::sound2,
                              mxfutil::indexTableSegmentKey, keys::primer, EssenceContainerData::classKey}) {
        for (const auto& triplet : clip.all(key)) {
            ends.push_back(triplet.end);
        }
    }
    for (const auto& pack : clip.packs()) {
        ends.push_back(pack.position);
        ends.push_back(pack.end);
    }
    for (const std::uint64_t end : ends) {
        const std::uint64_t randomIndex = clip.all(mxfutil::randomIndexPackKey).front().position;
        if (end == 0 || end >= randomIndex) {
            continue; // a stream without octets is no file, and a random index is optional
        }
        const Findings found = validate(clip.octets.substr(0, end), BRYXValidationMode::Standard, Wanted::Structure);
        EXPECT_TRUE(std::any_of(found.all.begin(), found.all.end(), [](const auto& f) {
            return f.level != klvutil::FindingLevel::warning;
        })) << end;
    }
}

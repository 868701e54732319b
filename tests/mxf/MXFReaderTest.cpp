#include "mxf/engines/MXFReader.h"

#include <sstream>

#include <gtest/gtest.h>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFPartialReader.h"
#include "mxf/engines/MXFSplitter.h"
#include "support/ExpectLog.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "support/Samples.h"
#include "support/Streams.h"
#include "util/assertion_failure.h"

using octets::klv;
using Kind = MXFPartitionKind;
using Status = MXFPartitionStatus;

namespace {

/// Everything that reading @p stream calls, in one log.
struct Reading {
    Log log;
    std::string values;
    bool reported = false; ///< by a finding or an exception with a position

    explicit Reading(std::istream& stream, bool withErrorHandler = true, bool wantsValues = true,
                     const std::function<void(const std::string&)>& onEvent = {}) {
        StructureRecorder structure(log);
        EventRecorder header(log, "H ");
        EventRecorder index(log, "I ");
        EventRecorder body(log, "B ");
        for (EventRecorder* recorder : {&header, &index, &body}) {
            recorder->wants = wantsValues;
            recorder->onEvent = onEvent;
        }
        FindingRecorder errors(log);
        MXFReader reader;
        reader.setStructureHandler(&structure);
        reader.setHeaderMetadataHandler(&header);
        reader.setIndexHandler(&index);
        reader.setBodyHandler(&body);
        if (withErrorHandler) {
            reader.setErrorHandler(&errors);
        }
        try {
            reader.read(stream);
        } catch (const klvutil::parse_error& e) {
            log.push_back(line(nullptr, "parse_error", e.what()) + " @" + std::to_string(std::streamoff{e.position()}));
            reported = true;
        }
        EXPECT_EQ(errors.open, 0);
        values = header.values + '|' + index.values + '|' + body.values;
        for (const std::string& text : log) {
            reported = reported || text.rfind("warning ", 0) == 0 || text.rfind("error ", 0) == 0;
        }
    }
};

Log read(const std::string& data, bool withErrorHandler = true) {
    std::istringstream stream(data);
    return Reading(stream, withErrorHandler).log;
}

/// The findings and the exception of a reading.
Log found(const std::string& data, bool withErrorHandler = true) {
    Log result;
    for (const std::string& text : read(data, withErrorHandler)) {
        for (const char* kind : {"warning ", "error ", "fatal ", "parse_error "}) {
            if (text.rfind(kind, 0) == 0) {
                result.push_back(text);
            }
        }
    }
    return result;
}

const std::string fill = klv(klvutil::fillKey, "...");
const std::string set = klv(keys::localSet, "");
const std::string picture = klv(keys::picture, "PIC");

} // namespace

TEST(MXFReader, RoutesEveryRegion) {
    const FileBuilder built = FileBuilder::whole();
    const Log log = read(built.file);
    EXPECT_LOG(log,
               "startStructure; partition 2 0 149; H startStream 1 @149; H form 131 @149; "
               "H fixedPack 01050100 8 @149; H value 8 @149; H /fixedPack 01050100 @149; "
               "H localSet 00000000 6 1 1 @177; H localItem 15370 2 @177; H value 2 @177; H /localItem 15370 @177; "
               "H /localSet 00000000 @177; H endStream 0 @177; /partition 2; partition 3 203 352; "
               "B startStream 1 @352; B form 131 @352; B item 15010500 3 @352; B value 3 @352; "
               "B /item 15010500 @352; B item 15010500 2 @375; B value 2 @375; B /item 15010500 @375; "
               "B endStream 0 @397; /partition 3; partition 4 397 546; H startStream 1 @546; H form 131 @546; "
               "H fixedPack 01050100 8 @546; H value 8 @546; H /fixedPack 01050100 @546; "
               "H localSet 00000000 6 1 1 @574; H localItem 15370 2 @574; H value 2 @574; H /localItem 15370 @574; "
               "H /localSet 00000000 @574; H endStream 0 @574; I startStream 1 @600; I form 131 @600; "
               "I localSet 00000000 8 1 1 @600; I localItem 16133 4 @600; I value 4 @600; I /localItem 16133 @600; "
               "I /localSet 00000000 @600; I endStream 0 @600; /partition 4; randomIndex 3; endStructure");
}

TEST(MXFReader, RunInsOnEveryKindOfStream) {
    const FileBuilder built = FileBuilder::whole();
    const std::string trailing = "error generalized operational pattern with run-in";
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{65535}}) {
        const std::string data = std::string(length, '\x06') + built.file;
        std::istringstream file(data);
        const Reading whole(file);
        EXPECT_EQ(std::count_if(whole.log.begin(), whole.log.end(),
                                [&](const std::string& text) { return text.rfind(trailing, 0) == 0; }),
                  length == 0 ? 0 : 3);
        EXPECT_EQ(whole.log.front(), length == 0 ? "startStructure" : "runIn " + std::to_string(length));
        EXPECT_EQ(whole.log.back(), "endStructure");
        for (const std::size_t atATime : {std::size_t{1}, std::size_t{4096}}) {
            PipeStream pipe(data, atATime);
            const Reading piped(pipe);
            EXPECT_LOG(piped.log, whole.log);
            EXPECT_EQ(piped.values, whole.values);
            EXPECT_TRUE(pipe.eof());
        }
    }
    EXPECT_LOG(read(std::string(65536, 'x') + built.file),
               (Log{"fatal invalid run-in @65536", "parse_error invalid run-in @65536"}));
}

TEST(MXFReader, APipeShowsThatItHasEnded) {
    const FileBuilder built = FileBuilder::whole();
    for (const std::size_t size : {std::size_t{11}, std::size_t{60}, built.file.size() - 1}) {
        std::istringstream file(built.file.substr(0, size));
        EXPECT_TRUE(Reading(file).reported);
        EXPECT_TRUE(file.eof() && file.fail()) << size;
        PipeStream pipe(built.file.substr(0, size), 1);
        EXPECT_TRUE(Reading(pipe).reported);
        EXPECT_EQ(pipe.rdstate(), file.rdstate()) << size;
    }
    FailingStream failing(built.file);
    EXPECT_TRUE(Reading(failing).reported);
    EXPECT_TRUE(failing.bad());
}

/// Streams that tell but do not seek, whatever they do instead, and streams with an exception mask.
TEST(MXFReader, OddStreams) {
    const std::string whole = "x" + FileBuilder::whole().file;
    for (const std::string& data : {whole, whole.substr(0, 380), whole.substr(0, 9)}) {
        PipeStream pipe(data, 100);
        const Log expected = Reading(pipe).log;
        for (const bool throws : {false, true}) {
            TellingStream telling(data, throws);
            EXPECT_LOG(Reading(telling).log, expected);
        }
        std::istringstream masked(data);
        masked.exceptions(std::ios::failbit | std::ios::badbit | std::ios::eofbit);
        EXPECT_LOG(Reading(masked).log, expected);
        EXPECT_EQ(masked.exceptions(), std::ios::failbit | std::ios::badbit | std::ios::eofbit);
    }
}

TEST(MXFReader, FileInsideAStream) {
    const FileBuilder built = FileBuilder::whole();
    std::istringstream stream("1234567890x" + built.file);
    stream.seekg(10);
    const Reading reading(stream);
    EXPECT_EQ(reading.log.at(0), "runIn 1");
    EXPECT_EQ(reading.log.at(3), "partition 2 0 150");    // the header start counts from the file's first octet
    EXPECT_EQ(reading.log.at(4), "H startStream 1 @160"); // positions are those of the stream
    EXPECT_LOG(Reading(stream).log, Log{});               // at its end already
}

TEST(MXFSplitter, FillAfterAPack) {
    FileBuilder two; // the fill of one partition has nothing to do with that of the next
    two.fillAfterPack = fill;
    const Log noWarning = found(two.partition(Kind::Header).partition(Kind::Footer).file);
    ASSERT_EQ(noWarning.size(), 1U);
    EXPECT_EQ(noWarning[0].substr(0, 26), "error missing random index");
    two = {};
    two.fillAfterPack = fill + fill + fill;
    two.pack.footerPartition = 1;
    const std::string data = two.partition(Kind::Header, {}, {}, picture).file;
    EXPECT_LOG(found(data),
               (Log{"warning adjacent fill items should be concatenated @147",
                    "warning adjacent fill items should be concatenated @170", "error missing footer partition @216"}));
    EXPECT_EQ(read(data).at(3), "partition 2 0 193");
    EXPECT_EQ(read(data).at(4), "B startStream 1 @193"); // no header metadata, no index: straight to the body
}

TEST(MXFSplitter, RegionsThatDoNotFit) {
    const auto file = [](std::uint64_t header, std::uint64_t index, const std::string& content) {
        FileBuilder b;
        b.pack.footerPartition = 1;
        b.partition(Kind::Header);
        b.pack.headerByteCount = header;
        b.pack.indexByteCount = index;
        b.pack.indexSID = index == 0 ? 0 : 2;
        return klv(mxfutil::partitionPackKey(Kind::Header, Status::ClosedComplete),
                   octets::of(mxfutil::writePartitionPack(b.pack))) +
               content;
    };
    const std::string key = " - urn:smpte:ul:060e2b34.02530101.0f000000.00000000 @124";
    const std::string pictureKey = " - urn:smpte:ul:060e2b34.01020101.0d010301.15010500 @124";
    const std::string headerCount = "incorrect headerByteCount";
    const std::string indexCount = "incorrect indexByteCount";
    // A count that ends inside a triplet.
    EXPECT_LOG(found(file(19, 0, set)), (Log{"error " + headerCount + key, "parse_error " + headerCount + key}));
    EXPECT_LOG(found(file(0, 22, picture)),
               (Log{"error " + indexCount + pictureKey, "parse_error " + indexCount + pictureKey}));
    // A stream that ends before the region does. Without an error handler somebody must still hear of it.
    EXPECT_EQ(found(file(21, 0, set)).at(0), "error " + headerCount + " @144");
    EXPECT_EQ(found(file(20, 1, set)).at(0), "error " + indexCount + " @144");
    EXPECT_EQ(found(file(21, 0, "")).at(0), "error " + headerCount + " @124");
    EXPECT_LOG(found(file(21, 0, set), false), Log{"parse_error " + headerCount + " @144"});
    // A pack inside the region ends it, and reading goes on.
    FileBuilder footer;
    const std::string next = footer.partition(Kind::Footer, set).file;
    for (const std::uint64_t count : {std::uint64_t{21}, ~std::uint64_t{0}, (std::uint64_t{1} << 63U) - 1}) {
        for (const bool inHeader : {true, false}) {
            const std::string data = inHeader ? file(count, 5, set + next) : file(20, count, set + next);
            EXPECT_EQ(found(data).at(0), "error " + (inHeader ? headerCount : indexCount) +
                                             " - urn:smpte:ul:060e2b34.02050101.0d010201.01040400 @144");
            const Log log = read(data);
            EXPECT_NE(std::find(log.begin(), log.end(), "partition 4 0 268"), log.end());
            EXPECT_EQ(log.back(), "endStructure");
            EXPECT_EQ(read(data, false).back(), "endStructure");
        }
    }
    // Partition packs hold only what fits.
    const KLVKey headerKey = mxfutil::partitionPackKey(Kind::Header, Status::ClosedComplete);
    EXPECT_EQ(found(klv(headerKey, std::string(87, '\0'))).at(1).substr(0, 34), "parse_error invalid partition pack");
    EXPECT_EQ(found(octets::key(headerKey) + octets::length(1U << 30U, 0x88) + "abc").at(0).substr(0, 28),
              "error invalid partition pack");
}

TEST(MXFSplitter, TripletsThatCannotStand) {
    const std::string header = FileBuilder().partition(Kind::Header, {}, {}, picture).file;
    FileBuilder indexed;
    const std::string afterIndex = indexed.partition(Kind::Header).randomIndexPack().file;
    const auto at = [](const std::string& data) {
        const std::string text = found(data).back();
        return text.substr(0, text.find(" - "));
    };
    const auto first = [](const std::string& data) { // no run-in search, so that the stream may begin with anything
        std::istringstream stream(data);
        MXFReader reader;
        reader.setSkipRunIn(false);
        try {
            reader.read(stream);
        } catch (const klvutil::parse_error& e) {
            return std::string(e.what()).substr(0, std::string(e.what()).find(" - "));
        }
        return std::string("none");
    };
    const std::string unexpected = "parse_error unexpected ";
    for (const auto& [data, kind] :
         std::vector<std::pair<std::string, std::string>>{{picture, "individual item"},
                                                          {fill, "individual item"},
                                                          {set, "local set"},
                                                          {klv(keys::universalSet, ""), "universal set"},
                                                          {klv(keys::variablePack, ""), "variable length pack"},
                                                          {klv(keys::fixedPack, ""), "fixed length pack"},
                                                          {klv(keys::wrapper, ""), "wrapper"},
                                                          {octets::key(keys::label), "label"}}) {
        EXPECT_EQ(at(afterIndex + data), unexpected + kind);
        EXPECT_EQ(first(data), "unexpected " + kind);
    }
    EXPECT_EQ(at(afterIndex + header), unexpected + "fixed length pack");
    // In a body, all kinds are handed on, nested triplets and packs too.
    const std::string content = klv(keys::universalSet, header) + set + klv(keys::variablePack, octets::of({0, 0})) +
                                klv(keys::fixedPack, "p") + klv(keys::wrapper, "w") + octets::key(keys::label) + fill;
    const Log log = found(header + content);
    ASSERT_EQ(log.size(), 1U) << log.at(0);
    EXPECT_EQ(log.at(0).substr(0, 26), "error missing random index");
}

TEST(MXFSplitter, RandomIndexPacks) {
    FileBuilder b;
    b.partition(Kind::Header, set, {}, {}, MXFPartitionStatus::OpenComplete); // a closed one would want a footer
    const std::string key = octets::key(mxfutil::randomIndexPackKey);
    const auto after = [&](const std::string& pack) { return found(b.file + pack); };
    const std::string value = octets::of(mxfutil::writeRandomIndex(b.randomIndex, 0x83));
    EXPECT_LOG(after(klv(mxfutil::randomIndexPackKey, value)), Log{});
    EXPECT_LOG(after(klv(mxfutil::randomIndexPackKey, value, 0x84)),
               Log{"warning incorrect random index pack length @144"});
    EXPECT_EQ(after(klv(mxfutil::randomIndexPackKey, value + "x")).at(0),
              "warning incorrect random index pack length @144");
    b.randomIndex[0].bodySID = 9;
    EXPECT_LOG(after(klv(mxfutil::randomIndexPackKey, octets::of(mxfutil::writeRandomIndex(b.randomIndex, 0x83)))),
               Log{"warning incorrect random index value @144"});
    const Log tooLong = after(key + octets::length(1U << 25U, 0x84) + std::string(1U << 25U, '\0'));
    EXPECT_EQ(tooLong.at(0).substr(0, 31), "error invalid random index pack");
    EXPECT_EQ(after(key + octets::length(1U << 25U, 0x84) + "cut").at(0).substr(0, 31),
              "error invalid random index pack");
    // No entries, no call: then it counts as missing.
    const std::string empty = klv(mxfutil::randomIndexPackKey, octets::of({0, 0, 0, 24}));
    EXPECT_EQ(after(empty).back().substr(0, 26), "error missing random index");
}

TEST(MXFSplitter, GenericStreamBodiesAreSkipped) {
    FileBuilder b;
    b.pack.footerPartition = 1;
    b.partition(Kind::Header, set).partition(Kind::Body, {}, {}, picture, Status::GenericStream);
    const Log log = read(b.file);
    EXPECT_NE(std::find(log.begin(), log.end(), "partition 3 144 268"), log.end());
    EXPECT_TRUE(std::none_of(log.begin(), log.end(), [](const std::string& text) { return text[0] == 'B'; }));
}

/// One splitter for two streams, the first stopped inside the body.
TEST(MXFSplitter, StopsAndTakesTheNextStream) {
    FileBuilder b;
    b.partition(Kind::Header, {}, {}, klv(keys::picture, "A") + klv(keys::picture, "B", 0x84));
    Log log;
    StructureRecorder structure(log);
    EventRecorder body(log, "B ");
    FindingRecorder errors(log);
    DullKLVHandler dull;
    MXFSplitter splitter(&structure, &dull, &dull, &body, true);
    splitter.setErrorHandler(&errors);
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    bool stop = false;
    body.onEvent = [&](const std::string& text) { stop = stop || text.rfind("B /item", 0) == 0; };
    std::istringstream first("run-in" + b.file);
    first.seekg(6);
    splitter.runIn(6);
    EXPECT_THROW(MXFSplitter(&structure, &dull, &dull, nullptr, true), util::assertion_failure);
    reader.parse(first, 6, stop);
    EXPECT_LOG(log, "runIn 6; startStructure; error generalized operational pattern with run-in @6; "
                    "partition 2 0 130; B startStream 1 @130; B form 131 @130; B item 15010500 1 @130; "
                    "B value 1 @130; B /item 15010500 @130; B endStream 1 @151; /partition 2; endStructure");
    EXPECT_EQ(body.locator->streampos(), 151);
    log.clear();
    std::istringstream second(b.file + b.file);
    second.seekg(static_cast<std::streamoff>(b.file.size()));
    reader.parse(second, static_cast<std::streamoff>(b.file.size()));
    EXPECT_EQ(log.at(1), "partition 2 0 124");
    EXPECT_EQ(log.at(7), "B form 132 @312");
}

/// Behind each partition's own content there is damage, or nothing yet. None of it matters, and none of it is reported.
TEST(MXFPartialReader, NeedsNoMoreThanThePartition) {
    const std::string cutPack = octets::key(mxfutil::partitionPackKey(Kind::Body, Status::OpenComplete)) +
                                octets::length(87) + std::string(87, ' ');
    const std::string cutElement = octets::key(keys::picture) + octets::length(1000) + "abc";
    const std::ios::iostate all = std::ios::failbit | std::ios::badbit | std::ios::eofbit;
    for (const std::string& behind :
         {std::string(), std::string("no triplet"), picture.substr(0, 5), cutElement, cutPack}) {
        for (const Status status : {Status::ClosedComplete, Status::GenericStream}) {
            for (const std::string& header : {std::string(), set}) {
                FileBuilder b;
                b.fillAfterPack = header.empty() ? "" : fill;
                b.partition(Kind::Body, header, {}, behind, status);
                std::istringstream stream("12345" + b.file);
                stream.exceptions(all);
                Log log;
                StructureRecorder structure(log);
                FindingRecorder errors(log);
                MXFPartialReader reader;
                reader.setInputStream(&stream);
                reader.setStructureHandler(&structure);
                reader.setErrorHandler(&errors);
                EXPECT_TRUE(reader.readPartition(5));
                EXPECT_EQ(log.size(), 4U) << joined(log);
                EXPECT_EQ(errors.open, 0);
                EXPECT_EQ(stream.exceptions(), all);
                EXPECT_EQ(stream.rdstate(), std::ios::goodbit);
            }
        }
    }
}

/// What is wrong with the partition itself is said, and thrown where nobody listens.
TEST(MXFPartialReader, TellsWhatIsWrongWithThePartition) {
    FileBuilder b;
    b.partition(Kind::Header, set + set, {}, picture);
    std::istringstream stream(b.file.substr(0, b.file.size() - picture.size() - set.size()));
    stream.exceptions(std::ios::failbit);
    Log log;
    FindingRecorder errors(log);
    MXFPartialReader reader;
    reader.setInputStream(&stream);
    EXPECT_THROW(reader.readPartition(0), klvutil::parse_error);
    reader.setErrorHandler(&errors);
    EXPECT_TRUE(reader.readPartition(0));
    EXPECT_LOG(log, "error incorrect headerByteCount @144");
    log.clear();
    EXPECT_THROW(reader.readPartition(124), klvutil::parse_error);
    EXPECT_EQ(log.at(0).substr(0, 26), "error unexpected local set");
    EXPECT_THROW(reader.readPartition(1000), klvutil::parse_error);
    EXPECT_FALSE(reader.readPartition(144)); // nothing there yet
    stream.seekg(50);
    EXPECT_THROW(reader.skipRunIn(), klvutil::parse_error);
    EXPECT_EQ(log.back(), "fatal invalid run-in @144");
    EXPECT_EQ(stream.rdstate(), std::ios::goodbit);
    EXPECT_EQ(errors.open, 0);
}

TEST(MXFPartialReader, ReadsPartitionsAndRandomIndex) {
    const FileBuilder built = FileBuilder::whole();
    std::istringstream stream("run-in" + built.file);
    Log log;
    StructureRecorder structure(log);
    EventRecorder header(log, "H ");
    header.wants = false;
    MXFPartialReader reader;
    EXPECT_THROW(reader.skipRunIn(), util::assertion_failure);
    reader.setInputStream(&stream);
    EXPECT_THROW(reader.readRandomIndexPack(), util::assertion_failure);
    reader.setStructureHandler(&structure);
    reader.setHeaderMetadataHandler(&header);
    EXPECT_EQ(reader.skipRunIn(), 6U);
    EXPECT_TRUE(reader.readPartition(6 + 203));
    EXPECT_LOG(log, (Log{"runIn 6", "startStructure", "partition 3 203 358", "/partition 3", "endStructure"}));
    log.clear();
    EXPECT_TRUE(reader.readPartition(6));
    EXPECT_LOG(log, (Log{"startStructure", "partition 2 0 155", "H startStream 1 @155", "H form 131 @155",
                         "H fixedPack 01050100 8 @155", "H /fixedPack 01050100 @155", "H localSet 00000000 6 1 1 @183",
                         "H /localSet 00000000 @183", "H endStream 0 @183", "/partition 2", "endStructure"}));
    log.clear();
    EXPECT_TRUE(reader.readRandomIndexPack());
    EXPECT_LOG(log, (Log{"startStructure", "randomIndex 3", "endStructure"}));
    EXPECT_THROW(reader.readPartition(7), klvutil::parse_error);
    EXPECT_THROW(reader.readPartition(~0ULL), klvutil::parse_error);
    EXPECT_FALSE(reader.readPartition(stream.str().size()));
    EXPECT_TRUE(reader.readPartition(6));

    // Whatever stands at the end instead is passed over.
    const std::string pack = built.file.substr(built.randomIndex.back().byteOffset);
    for (std::size_t octet = 1; octet <= 60; ++octet) {
        std::string damaged = built.file;
        damaged[damaged.size() - octet] ^= 0x55;
        std::istringstream damagedStream(damaged);
        reader.setInputStream(&damagedStream);
        log.clear();
        const bool inEntries = octet > 4 && octet <= 40;
        const bool inVersion = octet == 60 - 7;
        EXPECT_EQ(reader.readRandomIndexPack(), inEntries || inVersion) << octet;
        EXPECT_EQ(log.empty(), !(inEntries || inVersion));
    }
    const FileBuilder empty = FileBuilder().partition(Kind::Header, set);
    for (const std::string& end : {std::string(4, '\0'), std::string("\0\0\0\x14", 4)}) {
        std::istringstream none(empty.file + end);
        reader.setInputStream(&none);
        EXPECT_FALSE(reader.readRandomIndexPack());
    }
    std::istringstream tiny("abc");
    reader.setInputStream(&tiny);
    EXPECT_FALSE(reader.readRandomIndexPack());
}

/// Cut anywhere, a file ends in a finding or an exception, in memory and from a pipe alike, and what was delivered
/// before is the beginning of what the whole file delivers.
TEST(Damage, FilesCutAtEveryOctet) {
    const std::string data = FileBuilder::whole().file;
    std::istringstream wholeStream(data);
    const Reading whole(wholeStream);
    const std::size_t footerEnd = data.size() - 60;
    for (std::size_t size = 1; size < data.size(); ++size) {
        std::istringstream stream(data.substr(0, size));
        const Reading cut(stream);
        EXPECT_EQ(cut.reported, size != footerEnd) << size; // without its random index the file is whole as well
        PipeStream pipe(data.substr(0, size), 1);
        EXPECT_EQ(Reading(pipe).reported, size != footerEnd) << size;
        std::istringstream skipped(data.substr(0, size));
        EXPECT_EQ(Reading(skipped, true, false).reported, size != footerEnd) << size;
        std::size_t same = 0;
        while (same < cut.log.size() && same < whole.log.size() && cut.log[same] == whole.log[same]) {
            ++same;
        }
        // Nothing of the file's content comes after the first difference.
        for (std::size_t i = same; i < cut.log.size(); ++i) {
            EXPECT_EQ(cut.log[i].find(" value "), cut.log[i].rfind(" value ")) << cut.log[i];
        }
    }
}

/// A std::ifstream lets itself be sought beyond its end.
TEST(Damage, SkipsBeyondTheEndOfARealFile) {
    const std::string path = testing::TempDir() + "bryx_cut.mxf";
    FileBuilder b;
    b.partition(Kind::Header, {}, {}, klv(keys::picture, std::string(50000, 'x')));
    std::ofstream(path, std::ios::binary) << b.file.substr(0, 20000);
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(Reading(file, true, false).log.back(), "parse_error unsuccessful seekg() @124");
    std::filesystem::remove(path);
}

class Samples : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(Samples, GiveTheSameEventsThroughEveryKindOfStream) {
    const std::string data = contents(GetParam());
    std::ifstream file(GetParam(), std::ios::binary);
    const Reading whole(file);
    EXPECT_EQ(whole.log.back(), "endStructure");
    for (const std::string& text : whole.log) {
        EXPECT_TRUE(text.rfind("error", 0) != 0) << text;
    }
    for (const std::size_t atATime : {std::size_t{1}, std::size_t{65536}}) {
        PipeStream pipe(data, atATime);
        const Reading piped(pipe);
        EXPECT_LOG(piped.log, whole.log);
        EXPECT_EQ(piped.values, whole.values);
    }
}

TEST_P(Samples, CutAtEveryOctetOfTheFirst64KiB) {
    const std::string data = contents(GetParam());
    const std::size_t longest = std::min<std::size_t>(data.size() - 1, 65536);
    std::size_t silent = 0;
    for (std::size_t size = 1; size <= longest; ++size) {
        std::istringstream stream(data.substr(0, size));
        Log log;
        FindingRecorder errors(log);
        MXFReader reader;
        reader.setErrorHandler(&errors);
        bool thrown = false;
        try {
            reader.read(stream);
        } catch (const klvutil::parse_error& e) {
            thrown = true;
            EXPECT_LE(e.position(), static_cast<std::streamoff>(size));
        }
        const std::string last = log.empty() ? "" : log.back();
        if (!thrown && last.rfind("error ", 0) != 0 && last.rfind("warning missing ", 0) != 0) {
            ++silent;
        }
    }
    // A file that is whole but for its random index pack, where that is within reach, has nothing missing.
    EXPECT_LE(silent, longest < 65536 ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(Files, Samples, testing::ValuesIn(sampleFiles()));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Samples);

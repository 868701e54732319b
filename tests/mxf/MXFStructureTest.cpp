#include <functional>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "klv/KLVMonitor.h"
#include "klv/parse_error.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFPartitionFilter.h"
#include "mxf/structure/MXFRunInSkipper.h"
#include "mxf/structure/MXFStructureValidator.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "support/Streams.h"

using Kind = MXFPartitionKind;
using Status = MXFPartitionStatus;

TEST(MXFPartitionPack, KeysOfEveryKindAndStatus) {
    KLVKey key = mxfutil::partitionPackKey(Kind::Body, Status::GenericStream);
    EXPECT_EQ(mxfutil::partitionKind(key), Kind::Body);
    EXPECT_EQ(mxfutil::partitionStatus(key), Status::GenericStream);
    key[7] = 2;
    EXPECT_TRUE(mxfutil::isPartitionPackKey(key));
    for (const auto& [octet, value] :
         {std::pair{7U, 0}, {13U, 1}, {13U, 5}, {13U, 2}, {14U, 0}, {14U, 5}, {15U, 1}, {12U, 2}}) {
        KLVKey other = key;
        other[octet] = static_cast<std::uint8_t>(value);
        EXPECT_FALSE(mxfutil::isPartitionPackKey(other)) << octet << ' ' << value;
    }
    EXPECT_THROW(mxfutil::partitionPackKey(Kind::Footer, Status::GenericStream), util::assertion_failure);
    EXPECT_THROW(mxfutil::partitionKind(keys::primer), util::assertion_failure);
}

TEST(MXFPartitionPack, ReadsWhatItWrites) {
    MXFPartitionPack pack;
    pack.kagSize = 512;
    pack.thisPartition = 0x0102030405060708;
    pack.bodySID = 7;
    pack.operationalPattern = keys::op1a;
    pack.essenceContainers = {keys::op1a, keys::picture};
    auto octets = mxfutil::writePartitionPack(pack);
    ASSERT_EQ(octets.size(), 120U);
    EXPECT_EQ(octets::of(octets).substr(0, 16), octets::of({0, 1, 0, 2, 0, 0, 2, 0, 1, 2, 3, 4, 5, 6, 7, 8}));
    MXFPartitionPack read;
    octets.push_back(0xFF); // what follows the batch is ignored
    ASSERT_TRUE(mxfutil::readPartitionPack(octets.data(), octets.size(), read));
    octets.pop_back();
    EXPECT_EQ(mxfutil::writePartitionPack(read), octets);
    for (std::size_t size = 0; size < octets.size(); ++size) {
        EXPECT_FALSE(mxfutil::readPartitionPack(octets.data(), size, read)) << size;
    }
    octets[87] = 17; // the size of a label
    EXPECT_FALSE(mxfutil::readPartitionPack(octets.data(), octets.size(), read));
    octets[83] = 0; // an empty batch may state any
    EXPECT_TRUE(mxfutil::readPartitionPack(octets.data(), 88, read));
    octets[80] = 0xFF; // a count of 2^32 - 2^24 costs nothing
    octets[87] = 16;
    EXPECT_FALSE(mxfutil::readPartitionPack(octets.data(), octets.size(), read));
}

TEST(MXFRandomIndex, ReadsWhatItWrites) {
    const MXFRandomIndex index{{0, 0}, {1, 1000}, {0, 0x100000000}};
    const auto octets = mxfutil::writeRandomIndex(index, 0x83);
    ASSERT_EQ(octets.size(), 40U);
    EXPECT_EQ(octets.back(), 60);
    MXFRandomIndex read;
    EXPECT_TRUE(mxfutil::readRandomIndex(octets.data(), octets.size(), 0x83, read));
    EXPECT_EQ(read, index);
    EXPECT_FALSE(mxfutil::readRandomIndex(octets.data(), octets.size(), 0x84, read));
    EXPECT_EQ(read, index);
    EXPECT_FALSE(mxfutil::readRandomIndex(octets.data(), 30, 0x83, read));
    EXPECT_EQ(read.size(), 2U);
    EXPECT_FALSE(mxfutil::readRandomIndex(octets.data(), 0, 0x83, read));
    EXPECT_TRUE(read.empty());
}

namespace {

/// Drives a validator as an engine would, with the packs where their thisPartition says unless told otherwise.
class Frame {
public:
    Frame() {
        validator.setErrorHandler(&errors);
        validator.setLocator(monitor.getLocator());
        errors.setLocator(monitor.getLocator());
        pack.majorVersion = 1;
        pack.minorVersion = 3;
        pack.footerPartition = 1000;
    }

    Frame& start() {
        validator.startStructure();
        return *this;
    }
    Frame& partition(Kind kind, std::uint64_t at, const std::function<void(MXFPartitionPack&)>& change = {}) {
        const KLVKey key = mxfutil::partitionPackKey(kind, status);
        MXFPartitionPack changed = pack;
        changed.thisPartition = at;
        if (change) {
            change(changed);
        }
        monitor.rebase(static_cast<std::streamoff>(at));
        validator.startPartition(key, changed, at + 108);
        validator.endPartition(key);
        pack.previousPartition = at;
        return *this;
    }
    Log end() {
        validator.endStructure();
        return log;
    }

    Log log;
    FindingRecorder errors{log};
    StructureRecorder next{log};
    KLVMonitor monitor;
    MXFStructureValidator validator{&next};
    MXFPartitionPack pack;
    Status status = Status::ClosedComplete;
};

/// The findings about one header partition that @p change has made wrong.
Log findings(Kind kind, const std::function<void(MXFPartitionPack&)>& change) {
    Frame frame;
    frame.start();
    if (kind != Kind::Header) {
        frame.partition(Kind::Header, 0);
    }
    frame.log.clear();
    frame.partition(kind, kind == Kind::Header ? 0 : 1000, change);
    frame.log.resize(frame.log.size() - 2);
    return frame.log;
}

} // namespace

TEST(MXFStructureValidator, AWholeFileIsForwardedWithoutAFinding) {
    Frame frame;
    frame.start().partition(Kind::Header, 0).partition(Kind::Body, 500).partition(Kind::Footer, 1000);
    frame.validator.randomIndex({{0, 0}, {0, 1000}, {0, 500}});
    EXPECT_EQ(frame.end(),
              (Log{"startStructure", "partition 2 0 108", "/partition 2", "partition 3 500 608", "/partition 3",
                   "partition 4 1000 1108", "/partition 4", "randomIndex 3", "endStructure"}));
}

TEST(MXFStructureValidator, FieldsOfAPack) {
    using Pack = MXFPartitionPack;
    const auto expect = [](Kind kind, const std::string& finding, const std::function<void(Pack&)>& change) {
        const Log log = findings(kind, change);
        EXPECT_EQ(log.empty() ? "" : log[0].substr(0, log[0].find(" @")), finding);
        EXPECT_LE(log.size(), 1U) << finding;
    };
    const std::string implemented = " (implemented 1.3)";
    expect(Kind::Header, "warning earlier version - 1.2" + implemented, [](Pack& p) { p.minorVersion = 2; });
    expect(Kind::Header, "warning later version - 1.4" + implemented, [](Pack& p) { p.minorVersion = 4; });
    expect(Kind::Header, "error incompatible version - 2.3" + implemented, [](Pack& p) { p.majorVersion = 2; });
    expect(Kind::Header, "error invalid version - 0.3" + implemented, [](Pack& p) { p.majorVersion = 0; });
    expect(Kind::Header, "warning incorrect thisPartition", [](Pack& p) { p.thisPartition = 1; });
    expect(Kind::Header, "warning incorrect previousPartition", [](Pack& p) { p.previousPartition = 1; });
    expect(Kind::Body, "warning inconsistent footerPartition", [](Pack& p) { p.footerPartition = 2000; });
    expect(Kind::Body, "", [](Pack& p) { p.footerPartition = 0; });
    expect(Kind::Footer, "warning incorrect footerPartition", [](Pack& p) { p.footerPartition = 0; });
    expect(Kind::Footer, "warning non-zero bodySID in footer", [](Pack& p) { p.bodySID = 1; });
    expect(Kind::Header, "warning inconsistent bodySID and bodyOffset", [](Pack& p) { p.bodyOffset = 1; });
    expect(Kind::Header, "warning inconsistent indexSID and indexByteCount", [](Pack& p) { p.indexSID = 1; });
    expect(Kind::Header, "warning inconsistent indexSID and indexByteCount", [](Pack& p) { p.indexByteCount = 1; });
    const auto counts = [](std::uint32_t kag, std::uint64_t header, std::uint64_t index) {
        return [=](Pack& p) {
            p.kagSize = kag;
            p.headerByteCount = header;
            p.indexByteCount = index;
            p.indexSID = 2;
        };
    };
    expect(Kind::Header, "warning headerByteCount is not a multiple of kagSize", counts(512, 513, 1024));
    expect(Kind::Header, "warning indexByteCount is not a multiple of kagSize", counts(512, 512, 5));
    expect(Kind::Header, "", counts(0, 513, 5));

    // The footer is where the last announcement says, and the pack before is where it really stands.
    const auto announce = [](std::uint64_t at) { return [=](Pack& p) { p.footerPartition = at; }; };
    Frame moved;
    moved.start().partition(Kind::Header, 0).partition(Kind::Body, 500, announce(1100));
    moved.log.clear();
    moved.partition(Kind::Footer, 1100, announce(1100));
    EXPECT_EQ(moved.log.at(0), "partition 4 1100 1208");
    Frame off;
    off.start().partition(Kind::Header, 0).partition(Kind::Body, 500, [](Pack& p) { p.thisPartition = 501; });
    off.log.clear();
    off.partition(Kind::Footer, 1200, announce(1200));
    EXPECT_EQ(off.log.at(0), "warning incorrect previous footerPartition @1200");
    EXPECT_EQ(off.log.at(1), "partition 4 1200 1308");
}

TEST(MXFStructureValidator, TellsOfAVersionOnceAFile) {
    Frame frame;
    frame.pack.minorVersion = 2;
    frame.start().partition(Kind::Header, 0).partition(Kind::Body, 500);
    frame.partition(Kind::Body, 700, [](MXFPartitionPack& p) { p.minorVersion = 4; });
    frame.partition(Kind::Footer, 1000).end();
    const std::string implemented = " (implemented 1.3)";
    Log versions;
    for (const std::string& line : frame.log) {
        if (line.find("version") != std::string::npos) {
            versions.push_back(line);
        }
    }
    EXPECT_EQ(versions, (Log{"warning earlier version - 1.2" + implemented + " @0",
                             "warning later version - 1.4" + implemented + " @700"}));
}

TEST(MXFStructureValidator, OrderOfPartitionsAndRandomIndex) {
    Frame body;
    body.start().partition(Kind::Body, 0);
    EXPECT_EQ(body.log.at(1), "error missing header partition @0");
    EXPECT_EQ(body.log.at(2), "partition 3 0 108");
    body.partition(Kind::Header, 500);
    EXPECT_EQ(body.log.at(4), "error unexpected header partition @500");
    body.partition(Kind::Footer, 1000).partition(Kind::Body, 1500);
    EXPECT_EQ(body.log.at(9), "error unexpected partition @1500");
    body.validator.randomIndex({{0, 0}});
    EXPECT_EQ(body.log.at(12), "warning incorrect random index value @1500");
    body.partition(Kind::Body, 2000);
    EXPECT_EQ(body.log.at(14), "error unexpected partition @2000");

    Frame early;
    early.start().validator.randomIndex({{0, 0}});
    EXPECT_EQ(early.log.at(1), "error unexpected random index @0");
}

TEST(MXFStructureValidator, WhatIsMissingAtTheEnd) {
    const std::string missingIndex =
        "error missing random index or non-zero footerPartition in the header partition pack";
    const auto unannounced = [](MXFPartitionPack& p) { p.footerPartition = 0; };
    EXPECT_EQ(Frame().start().partition(Kind::Header, 0, unannounced).end().at(3), missingIndex + " @0");
    EXPECT_EQ(Frame().start().partition(Kind::Header, 0).end().at(3), "error missing footer partition @0");
    // An offset beyond the end tells of a footer that got lost, whatever other footer there is.
    Frame cut;
    cut.start().partition(Kind::Header, 0, unannounced).partition(Kind::Body, 500, [](MXFPartitionPack& p) {
        p.footerPartition = 5000;
    });
    cut.partition(Kind::Footer, 1000);
    cut.log.clear();
    EXPECT_EQ(cut.end().at(0), "error missing footer partition @1000");
    // A closed file may do without one, if its random index tells where everything is; an open one need not say yet.
    for (const Status status : {Status::ClosedComplete, Status::OpenComplete}) {
        Frame none;
        none.status = status;
        none.start().partition(Kind::Header, 0, unannounced).validator.randomIndex({{0, 0}});
        EXPECT_EQ(none.end().at(4),
                  status == Status::OpenComplete ? "endStructure" : "warning missing footer partition @0");
    }
    Frame stopped;
    stopped.start().partition(Kind::Header, 0, unannounced).validator.stopRequested();
    EXPECT_EQ(stopped.end().at(3), "endStructure");
    // The next file is judged afresh.
    stopped.pack.previousPartition = 0;
    stopped.log.clear();
    EXPECT_EQ(stopped.start().partition(Kind::Header, 0, unannounced).end().at(3), missingIndex + " @0");
}

TEST(MXFStructureValidator, RunInsAndMisuse) {
    Frame frame;
    frame.monitor.rebase(8);
    frame.validator.runIn(8);
    frame.start();
    frame.partition(Kind::Header, 8, [](MXFPartitionPack& p) {
        p.thisPartition = 0;
        p.operationalPattern = keys::op1a;
    });
    EXPECT_EQ(frame.log.at(2), "error generalized operational pattern with run-in @8");
    EXPECT_EQ(frame.log.at(3), "partition 2 0 116");
    frame.partition(Kind::Body, 508, [](MXFPartitionPack& p) {
        p.thisPartition = 500;
        p.previousPartition = 0;
        p.operationalPattern = keys::op1a;
        p.operationalPattern[12] = 0x10; // specialized patterns may have a run-in
    });
    EXPECT_EQ(frame.log.at(5), "partition 3 500 616");
    EXPECT_THROW(frame.start(), util::assertion_failure);
    const KLVKey header = mxfutil::partitionPackKey(Kind::Header, Status::OpenComplete);
    EXPECT_THROW(frame.validator.endPartition(header), util::assertion_failure);
    frame.validator.startPartition(mxfutil::partitionPackKey(Kind::Footer, Status::OpenComplete), frame.pack, 0);
    EXPECT_THROW(frame.validator.endPartition(header), util::assertion_failure);
    EXPECT_THROW(frame.validator.startPartition(header, frame.pack, 0), util::assertion_failure);
    EXPECT_THROW(frame.validator.randomIndex({}), util::assertion_failure);
    Frame tooEarly;
    tooEarly.validator.runIn(9);
    EXPECT_THROW(tooEarly.start(), util::assertion_failure); // "correct runIn"
}

TEST(MXFRunInSkipper, FindsTheKeyWithinTheLimit) {
    const std::string key = octets::key(mxfutil::partitionPackKey(Kind::Header, Status::ClosedComplete));
    const std::string decoy = key.substr(0, 9) + key.substr(0, 1) + key.substr(0, 4); // begins to match, and again
    for (const std::string& runIn :
         {std::string(), decoy, std::string(1, '\x06'), std::string(65535, 'x'), decoy + std::string(65500, '\x06')}) {
        for (const bool seekable : {true, false}) {
            Log log;
            StructureRecorder structure(log);
            FindingRecorder errors(log);
            MXFRunInSkipper skipper;
            skipper.setStructureHandler(&structure);
            skipper.setErrorHandler(&errors);
            std::istringstream file("ab" + runIn + key);
            file.seekg(2);
            PipeStream pipe(runIn + key, 1000);
            std::istream& stream = seekable ? static_cast<std::istream&>(file) : pipe;
            EXPECT_EQ(skipper.skip(stream), runIn.size());
            EXPECT_LOG(log, runIn.empty() ? Log{} : Log{"runIn " + std::to_string(runIn.size())});
            EXPECT_EQ(errors.open, 0);
            std::string rest(key.size() - skipper.prefix().size(), ' ');
            stream.read(rest.data(), static_cast<std::streamsize>(rest.size()));
            EXPECT_EQ(skipper.prefix() + rest, key);
            EXPECT_EQ(skipper.prefix().empty(), seekable);
        }
    }
}

TEST(MXFRunInSkipper, ReportsAndThrows) {
    const std::string key = octets::key(mxfutil::partitionPackKey(Kind::Header, Status::ClosedComplete));
    const auto finding = [](std::istream& stream) {
        Log log;
        FindingRecorder errors(log);
        MXFRunInSkipper skipper;
        skipper.setErrorHandler(&errors);
        EXPECT_THROW(skipper.skip(stream), klvutil::parse_error);
        EXPECT_EQ(errors.open, 0);
        return log.back();
    };
    std::istringstream tooLong(std::string(65536, 'x') + key);
    EXPECT_EQ(finding(tooLong), "fatal invalid run-in @65536");
    std::istringstream tooShort(key.substr(0, 10));
    EXPECT_EQ(finding(tooShort), "fatal invalid run-in @10");
    std::istringstream bad;
    bad.setstate(std::ios::failbit);
    EXPECT_EQ(finding(bad), "fatal input stream is not good() @0");
    FailingStream failing("abc");
    EXPECT_EQ(finding(failing), "fatal unsuccessful get() @3");
}

TEST(MXFPartitionFilter, TellsPartitionsAndPassesEveryEventOn) {
    const FileBuilder built = FileBuilder::whole();
    // A partition pack inside a universal set is no partition; one that is cut short is reported.
    const std::string nested = octets::klv(keys::universalSet, built.file.substr(0, 124));
    const KLVKey cutKey = mxfutil::partitionPackKey(Kind::Body, Status::OpenComplete);
    const std::string cut = octets::klv(cutKey, std::string(87, '\0'));
    const std::string data = built.file + nested + cut;
    Log plain;
    Log filtered;
    Log told;
    const auto parse = [&](Log& log, bool filter, bool wants) {
        EventRecorder recorder(log);
        StructureRecorder structure(told);
        FindingRecorder errors(told);
        MXFStructureValidator validator(&structure);
        MXFPartitionFilter partitions(&validator);
        partitions.setErrorHandler(&errors);
        validator.setErrorHandler(&errors);
        validator.setLocator(partitions.getLocator());
        recorder.wants = wants;
        partitions.setHandler(&recorder);
        GenericKLVReader reader;
        reader.setErrorHandler(&errors);
        reader.setHandler(filter ? static_cast<KLVHandler*>(&partitions) : &recorder);
        std::istringstream stream(data);
        reader.parse(stream, 0);
        return recorder.values;
    };
    EXPECT_EQ(parse(plain, false, false), parse(filtered, true, false));
    EXPECT_EQ(plain, filtered);
    told.clear();
    EXPECT_EQ(parse(plain, false, true), parse(filtered, true, true));
    EXPECT_EQ(plain, filtered);
    EXPECT_LOG(told, (Log{"startStructure", "partition 2 0 149", "/partition 2", "partition 3 203 352", "/partition 3",
                          "partition 4 397 546", "/partition 4", "randomIndex 3",
                          "error invalid partition pack - " + toString(cutKey) + " @" +
                              std::to_string(data.size() - cut.size()),
                          "endStructure"}));
}

namespace {

/// A validator behind a filter, for one stream after the other.
struct FilteredStructure {
    FilteredStructure() {
        validator.setErrorHandler(&errors);
        validator.setLocator(partitions.getLocator());
        partitions.setErrorHandler(&errors);
        partitions.setHandler(&recorder);
    }

    /// Returns the position of what could not be read, or -1.
    std::streamoff parse(const std::string& octets) {
        log.clear();
        stop = false;
        GenericKLVReader reader;
        reader.setHandler(&partitions);
        reader.setErrorHandler(&errors);
        std::istringstream stream(octets);
        try {
            reader.parse(stream, 0, stop);
        } catch (const klvutil::parse_error& error) {
            return error.position();
        }
        return -1;
    }

    Log log;
    Log events;
    bool stop = false;
    StructureRecorder structure{log};
    FindingRecorder errors{log};
    EventRecorder recorder{events};
    MXFStructureValidator validator{&structure};
    MXFPartitionFilter partitions{&validator};
};

} // namespace

TEST(MXFPartitionFilter, TakesAnotherFileAfterOneThatBreaksOff) {
    const std::string file = FileBuilder::whole().file;
    FilteredStructure filtered;
    filtered.parse(file);
    const Log whole = filtered.log;
    for (std::size_t size = 1; size < file.size(); ++size) {
        filtered.parse(file.substr(0, size));
        std::streamoff broken = 0;
        ASSERT_EQ(failure([&] { broken = filtered.parse(file); }), "none") << size;
        EXPECT_EQ(broken, -1);
        ASSERT_LOG(filtered.log, whole) << size;
    }
}

TEST(MXFPartitionFilter, LetsAFileBeStopped) {
    FilteredStructure filtered;
    filtered.recorder.onEvent = [&](const std::string& event) { filtered.stop |= event.rfind("localSet", 0) == 0; };
    filtered.parse(FileBuilder::whole().file);
    // What has not been read is not missing.
    EXPECT_LOG(filtered.log, "startStructure; partition 2 0 149; /partition 2; endStructure");
}

TEST(MXFPartitionFilter, TellsAPositionAfterAFileThatBreaksOff) {
    const std::string file = FileBuilder::whole().file;
    for (std::size_t size = 1; size < file.size(); ++size) {
        FilteredStructure filtered;
        const std::streamoff broken = filtered.parse(file.substr(0, size));
        const std::streamoff position = filtered.partitions.getLocator().streampos();
        EXPECT_LE(position, broken < 0 ? static_cast<std::streamoff>(size) : broken) << size;
        EXPECT_GE(position, std::max<std::streamoff>(broken - 149, 0)) << size; // the longest triplet
    }
}

#include <ctime>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "mxf/engines/MXFWriter.h"
#include "mxf/essence/MXFGCEssenceCoder.h"
#include "mxf/essence/MXFGCIntraIndexer.h"
#include "mxf/essence/MXFGCMuxer.h"
#include "mxf/essence/MXFGCStructurePadder.h"
#include "mxf/essence/MXFGCSystemCoder.h"
#include "mxf/structure/MXFStructureCoder.h"
#include "support/Failure.h"
#include "support/Octets.h"
#include "support/Recorders.h"

namespace {

constexpr KLVKey soundKey = klvutil::key("060e2b34.01020101.0d010301.16010101");

/// An engine's writer on a stream in memory, with a partition begun.
class Engine {
public:
    explicit Engine(std::uint32_t kagSize = 1) {
        pack.minorVersion = 3;
        pack.kagSize = kagSize;
        writer.structureReceiver().startStructure();
        writer.structureReceiver().startPartition(headerKey, pack, 0);
        start = position();
    }

    static constexpr KLVKey headerKey = klvutil::key("060e2b34.02050101.0d010201.01020400");
    std::ostringstream stream;
    MXFWriter writer{stream};
    MXFPartitionPack pack;
    std::uint64_t start = 0; ///< of the body

    std::uint64_t position() const {
        return static_cast<std::uint64_t>(std::streamoff{writer.getLocator().streampos()});
    }
    std::string body() const { return stream.str().substr(start); }
};

const std::uint8_t* bytes(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

} // namespace

TEST(StructureCoder, CompletesPacks) {
    Engine engine(512);
    MXFStructureCoder& coder = engine.writer.structureReceiver();
    EXPECT_EQ(engine.position(), 512U);
    KLVStreamPadder& header = engine.writer.headerMetadataReceiver();
    header.setPadding(KLVFiller::Mode::FixedLength, 512, 1024);
    const auto failed = [&](MXFPartitionPack pack, const KLVKey& key = Engine::headerKey) {
        return failure([&] { coder.startPartition(key, pack, 0); });
    };
    const KLVKey footerKey = klvutil::key("060e2b34.02050101.0d010201.01040400");
    MXFPartitionPack pack = engine.pack;
    pack.indexByteCount = 511;
    EXPECT_EQ(failed(pack), "index byte count is a multiple of KAG size");
    pack.indexByteCount = 0;
    pack.footerPartition = 512;
    EXPECT_EQ(failed(pack), "valid footer partition offset");
    EXPECT_EQ(failed(engine.pack, keys::label), "valid partition key");
    pack.majorVersion = 2;
    EXPECT_EQ(failed(pack), "valid major version");
    pack = engine.pack;
    pack.footerPartition = 511;
    EXPECT_EQ(failed(pack, footerKey), "valid footer partition offset");

    // The padder tells the byte count; the region must come, and come to that.
    coder.startPartition(footerKey, engine.pack, 0);
    EXPECT_EQ(coder.lastPack().headerByteCount, 1024U);
    EXPECT_EQ(coder.lastPack().footerPartition, 512U);
    EXPECT_EQ(coder.lastPack().previousPartition, 0U);
    EXPECT_EQ(failure([&] { coder.endPartition(footerKey); }), "header metadata is complete");
    header.startStream(true);
    header.endStream(false);
    coder.endPartition(footerKey);
    EXPECT_EQ(engine.position(), 2048U);
    header.setPadding(KLVFiller::Mode::Alignment, 512, 0);
    pack = engine.pack;
    pack.headerByteCount = 100;
    EXPECT_EQ(failed(pack), "header byte count is a multiple of KAG size");

    coder.randomIndex({{0, 0}, {1, 512}, {0, 2048}});
    coder.endStructure();
    const std::string file = engine.stream.str();
    EXPECT_EQ(file.substr(file.size() - 4), octets::of({0, 0, 0, 60}));
    EXPECT_EQ(file.size(), 2048U + 60);
}

TEST(GCWriting, WritesElements) {
    Engine engine;
    MXFGCEssenceCoder coder(engine.writer.bodyReceiver());
    std::uint64_t size = 0;
    std::uint8_t* buffer = nullptr;
    const auto chunk = [&](std::uint64_t length, std::uint64_t offset, const KLVKey& key = keys::picture) {
        return coder.startChunkedElement(key, length, offset, size, buffer);
    };
    const auto put = [&](const std::string& text, const KLVKey& key = keys::picture) {
        coder.pictureElement(key, bytes(text), text.size(), 0);
    };
    put("whole");
    coder.soundElement(soundKey, nullptr, 0, 0);
    coder.setLengthForm(0x87);
    put("long form");
    coder.setLengthForm(1);
    put(std::string(200, 'x')); // does not fit the form
    coder.setLengthForm(0x80);
    EXPECT_EQ(failure([&] { coder.pictureElement(keys::picture, nullptr, 1, 0); }), "element has data");
    EXPECT_EQ(failure([&] { coder.setLengthForm(0x89); }), "valid BER length form");

    EXPECT_EQ(failure([&] { chunk(5, 2); }), "in chunked essence");
    chunk(5, 0);
    put("ab");
    EXPECT_EQ(failure([&] { chunk(5, 0); }), "not in chunked essence");
    EXPECT_EQ(failure([&] { chunk(5, 2, soundKey); }), "in chunked essence");
    EXPECT_EQ(failure([&] { chunk(5, 3); }), "correct chunk offset");
    EXPECT_EQ(failure([&] { chunk(6, 2); }), "correct chunked length");
    EXPECT_EQ(failure([&] { put("cd", soundKey); }), "correct chunked essence key");
    EXPECT_EQ(failure([&] { put("cdef"); }), "correct chunked length");
    chunk(5, 2);
    put("cde");
    // Of unknown length: told later, told at the end, and empty.
    constexpr std::uint64_t unknown = MXFGCChunkedEssenceHandler::UNKNOWN_KLV_LENGTH;
    chunk(unknown, 0);
    put("12");
    chunk(4, 2);
    put("34");
    chunk(unknown, 0);
    put("567");
    chunk(unknown, 3);
    put("8");
    chunk(4, 4);
    chunk(unknown, 0);
    chunk(0, 0);
    chunk(0, 0);
    EXPECT_EQ(engine.body(), octets::klv(keys::picture, "whole") + octets::klv(soundKey, "") +
                                 octets::klv(keys::picture, "long form", 0x87) +
                                 octets::klv(keys::picture, std::string(200, 'x'), 0x87) +
                                 octets::klv(keys::picture, "abcde") + octets::klv(keys::picture, "1234", 0x87) +
                                 octets::klv(keys::picture, "5678", 0x87) + octets::klv(keys::picture, "", 0x87) +
                                 octets::klv(keys::picture, ""));
    EXPECT_EQ(engine.position(), engine.stream.str().size());

    // The automatic choice of forms.
    Log log;
    EventRecorder recorder(log);
    MXFGCEssenceCoder observed(recorder);
    for (const std::uint64_t length : {0xFFFFFFULL, 0x1000000ULL, 0ULL + unknown}) {
        log.clear();
        MXFGCEssenceCoder(recorder).startChunkedElement(keys::picture, length, 0, size, buffer);
        EXPECT_EQ(log.at(0), length == 0xFFFFFF ? "form 131" : "form 135");
    }
    recorder.wants = false;
    EXPECT_EQ(failure([&] { observed.startChunkedElement(keys::picture, 1, 0, size, buffer); }), "wants essence");
}

TEST(GCWriting, WritesSystemElements) {
    Engine engine;
    MXFGCSystemCoder coder(engine.writer.bodyReceiver());
    const std::string item = "item";
    const KLVKey setKey = klvutil::key("060e2b34.02530101.0d010301.14020100");
    const KLVKey berSetKey = klvutil::key("060e2b34.02130101.0d010301.14020200");
    const KLVKey packKey = klvutil::key("060e2b34.02440101.0d010301.14030100");
    coder.localSet(setKey, {{0x0102, bytes(item), 4}, {0xFFFF, bytes(item), 0}});
    coder.localSet(berSetKey, {{0x0102, bytes(item), 1}});
    coder.variableLengthPack(packKey, {{0, bytes(item), 2}});
    coder.fixedLengthPack(keys::fixedPack, bytes(item), 4);
    EXPECT_EQ(failure([&] {
                  coder.localSet(setKey, {{0x10000, bytes(item), 1}});
              }),
              "correct local item type and length");
    EXPECT_EQ(engine.body(), octets::klv(setKey, octets::of({1, 2, 0, 4}) + item + octets::of({0xFF, 0xFF, 0, 0})) +
                                 octets::klv(berSetKey, octets::of({1, 2}) + octets::length(1) + "i") +
                                 octets::klv(packKey, octets::of({0, 2}) + "it") + octets::klv(keys::fixedPack, item));
}

TEST(GCWriting, KeepsToTheGridAndIndexes) {
    for (const std::uint32_t kagSize : {0U, 1U, 512U}) {
        Engine engine(kagSize);
        MXFGCMuxer muxer(engine.writer.bodyReceiver(), engine.writer.getLocator(), engine.writer.getGrid());
        MXFGCIntraIndexer indexer(muxer.padder(), engine.writer.getLocator());
        muxer.setIndexer(indexer);
        MXFGCStructureHandler& structure = muxer.structureReceiver();
        structure.startStream(kagSize);
        indexer.startBody(engine.start, 7000);
        // The pictures vary in size; two elements of sound follow, which do not.
        const auto package = [&](std::size_t pictureSize) {
            structure.startContentPackage();
            for (const auto& [key, length] :
                 {std::make_pair(keys::picture, pictureSize), {soundKey, 100}, {soundKey, 30}}) {
                structure.startElement(key);
                muxer.essenceReceiver().soundElement(key, bytes(std::string(length, 'x')), length, 0);
                structure.endElement(key);
            }
            structure.endContentPackage();
        };
        const std::vector<std::size_t> sizes{600, 600, 600, 10, 10, 600, 1000};
        std::vector<std::uint64_t> offsets;
        for (const std::size_t size : sizes) {
            offsets.push_back(7000 + engine.position() - engine.start);
            package(size);
        }
        structure.endStream();
        EXPECT_EQ(engine.position() % std::max(kagSize, 1U), 0U);
        const MXFIndexTableSegment segment = indexer.segment(0, 7);
        EXPECT_EQ(segment.indexDuration, 7);
        EXPECT_EQ(segment.sliceCount, 1);
        ASSERT_EQ(segment.deltaEntryArray.size(), 3U);
        EXPECT_EQ(segment.deltaEntryArray[2].slice, 1);
        EXPECT_EQ(segment.deltaEntryArray[2].elementDelta, kagSize == 512 ? 512U : 120U);
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const MXFIndexEntry& entry = segment.indexEntryArray.at(i);
            EXPECT_EQ(entry.streamOffset, offsets[i]);
            const std::uint32_t sound = kagSize == 512 ? (sizes[i] + 20 <= 492    ? 512
                                                          : sizes[i] + 20 <= 1004 ? 1024
                                                                                  : 1536)
                                                       : static_cast<std::uint32_t>(sizes[i]) + 20;
            EXPECT_EQ(entry.sliceOffsets, std::vector<std::uint32_t>{sound}) << kagSize;
            EXPECT_EQ(entry.flags, MXFIndexEntryFlags::randomAccess);
        }
        const MXFIndexTableSegment alike = indexer.segment(1, 3);
        EXPECT_EQ(alike.indexStartPosition, 1);
        EXPECT_EQ(alike.sliceCount, 0);
        EXPECT_EQ(alike.indexEntryArray.at(1).streamOffset, offsets[2]);
        EXPECT_EQ(indexer.constantSegment(offsets.back()).editUnitByteCount, 0U);
    }

    Engine engine(512);
    MXFGCStructurePadder padder(engine.writer.bodyReceiver(), engine.writer.getLocator(), engine.writer.getGrid());
    padder.startStream(512);
    EXPECT_EQ(failure([&] { padder.startAlign(513); }), "alignment is multiple of KAG size");
    MXFGCEssenceCoder coder(engine.writer.bodyReceiver());
    padder.startAlign(4096);
    coder.dataElement(keys::picture, bytes("x"), 1, 0);
    padder.endAlign();
    EXPECT_EQ(engine.position(), 4096U);
    padder.startPad(20);
    coder.dataElement(keys::picture, bytes("x"), 1, 0);
    padder.endPad();
    EXPECT_EQ(engine.position(), 4096U + 512 - 20);
}

TEST(GCWriting, IndexesAtMostWhatAnArrayHolds) {
    Engine engine;
    MXFGCMuxer muxer(engine.writer.bodyReceiver(), engine.writer.getLocator(), engine.writer.getGrid());
    MXFGCIntraIndexer indexer(muxer.padder(), engine.writer.getLocator());
    muxer.setIndexer(indexer);
    MXFGCStructureHandler& structure = muxer.structureReceiver();
    structure.startStream(1);
    indexer.startBody(engine.start, 0);
    for (int i = 0; i < 7000; ++i) {
        structure.startContentPackage();
        structure.startElement(keys::picture);
        muxer.essenceReceiver().pictureElement(keys::picture, bytes("frame"), 5, 0);
        structure.endElement(keys::picture);
        structure.endContentPackage();
    }
    const MXFIndexTableSegment first = indexer.segment(0, 7000);
    const MXFIndexTableSegment second = indexer.segment(5957, 7000);
    EXPECT_EQ(first.indexDuration, 5957);
    EXPECT_EQ(second.indexDuration, 1043);
    EXPECT_EQ(second.indexEntryArray.back().streamOffset, 6999U * 25);
    EXPECT_TRUE(first.deltaEntryArray.empty());
    EXPECT_EQ(failure([&] { indexer.segment(5957, 7001); }), "valid edit units");
    const MXFIndexTableSegment constant = indexer.constantSegment(7000U * 25);
    EXPECT_EQ(constant.editUnitByteCount, 25U);
    EXPECT_EQ(constant.indexDuration, 7000);
}

TEST(GCWriting, IndexesManyElementsOfAPackageInTime) {
    Engine engine;
    MXFGCMuxer muxer(engine.writer.bodyReceiver(), engine.writer.getLocator(), engine.writer.getGrid());
    MXFGCIntraIndexer indexer(muxer.padder(), engine.writer.getLocator());
    muxer.setIndexer(indexer);
    MXFGCStructureHandler& structure = muxer.structureReceiver();
    const std::clock_t start = std::clock();
    structure.startStream(1);
    structure.startContentPackage();
    for (int i = 0; i < 60000; ++i) {
        structure.startElement(keys::picture);
        muxer.essenceReceiver().pictureElement(keys::picture, nullptr, 0, 0);
        structure.endElement(keys::picture);
    }
    structure.endContentPackage();
    EXPECT_EQ(indexer.segment(0, 1).deltaEntryArray.back().elementDelta, 10920U * 20);
    EXPECT_LT(std::clock() - start, 3 * CLOCKS_PER_SEC);
}

/// What a splitter would not call is refused before anything is written, and does no harm to what follows.
TEST(GCWriting, KeepsToTheOrderOfElements) {
    Engine engine;
    MXFGCMuxer muxer(engine.writer.bodyReceiver(), engine.writer.getLocator(), engine.writer.getGrid());
    MXFGCIntraIndexer indexer(muxer.padder(), engine.writer.getLocator());
    muxer.setIndexer(indexer);
    MXFGCStructureHandler& structure = muxer.structureReceiver();
    const KLVKey packKey = klvutil::key("060e2b34.02050101.0d010301.04010100");
    const auto put = [&](const KLVKey& key = keys::picture) {
        return failure([&] { muxer.essenceReceiver().pictureElement(key, bytes("frame"), 5, 0); });
    };
    const auto putSystem = [&] {
        return failure([&] { muxer.systemReceiver().fixedLengthPack(packKey, bytes("pack"), 4); });
    };
    const auto putSet = [&] { return failure([&] { muxer.systemReceiver().localSet(keys::localSet, {}); }); };
    std::uint64_t size = 0;
    std::uint8_t* buffer = nullptr;
    const auto startChunks = [&] {
        return failure([&] { muxer.essenceReceiver().startChunkedElement(keys::picture, 5, 0, size, buffer); });
    };
    const auto start = [&](const KLVKey& key) { return failure([&] { structure.startElement(key); }); };
    const auto end = [&](const KLVKey& key) { return failure([&] { structure.endElement(key); }); };
    const auto endPackage = [&] { return failure([&] { structure.endContentPackage(); }); };

    structure.startStream(1);
    indexer.startBody(engine.start, 0);
    EXPECT_EQ(put(), "in element");
    EXPECT_EQ(putSystem(), "in element");
    EXPECT_EQ(putSet(), "in element");
    EXPECT_EQ(startChunks(), "in element");
    EXPECT_EQ(start(keys::picture), "in content package");
    EXPECT_EQ(end(keys::picture), "in content package");
    EXPECT_EQ(endPackage(), "in content package");
    structure.startContentPackage();
    EXPECT_EQ(failure([&] { structure.startContentPackage(); }), "not in content package");
    EXPECT_EQ(endPackage(), "content package has elements");
    EXPECT_EQ(end(keys::picture), "in element");
    EXPECT_EQ(put(), "in element");
    structure.startElement(packKey);
    EXPECT_EQ(start(keys::picture), "complete element");
    EXPECT_EQ(end(packKey), "complete element");
    EXPECT_EQ(put(), "correct element key");
    EXPECT_EQ(putSystem(), "none");
    EXPECT_EQ(putSystem(), "one triplet in element");
    EXPECT_EQ(end(keys::picture), "correct element key");
    EXPECT_EQ(endPackage(), "complete element");
    structure.endElement(packKey);
    structure.startElement(keys::picture);
    EXPECT_EQ(startChunks(), "none");
    EXPECT_EQ(end(keys::picture), "complete element");
    EXPECT_EQ(endPackage(), "complete element");
    EXPECT_EQ(put(), "none");
    EXPECT_EQ(put(), "one triplet in element");
    structure.endElement(keys::picture);
    EXPECT_EQ(failure([&] { structure.endStream(); }), "not in content package");
    structure.endContentPackage();
    structure.endStream();
    EXPECT_EQ(engine.body(), octets::klv(packKey, "pack") + octets::klv(keys::picture, "frame"));
    EXPECT_EQ(indexer.segment(0, 1).deltaEntryArray.size(), 2U);
}

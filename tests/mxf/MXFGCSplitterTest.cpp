#include "mxf/essence/MXFGCSplitter.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "klv/GenericKLVReader.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "support/Streams.h"

namespace {

constexpr KLVKey element(std::uint8_t itemType, std::uint8_t number = 1) {
    KLVKey key = keys::picture;
    key[12] = itemType;
    key[15] = number;
    return key;
}

constexpr KLVKey system(std::uint8_t coding, std::uint8_t last = 0) {
    KLVKey key = klvutil::key("060e2b34.02000101.0d010301.04010100");
    key[5] = coding;
    key[15] = last;
    return key;
}

std::string id(const KLVKey& key) {
    return toString(key).substr(40);
}

/// Logs all that a splitter calls.
class Receiver : public MXFGCStructureHandler, public MXFGCSystemHandler, public MXFGCEssenceHandler {
public:
    Log log;
    std::string octets; ///< of essence
    std::uint8_t* buffer = nullptr;
    std::uint64_t bufferSize = 0;
    bool wants = true;

    void startStream(std::uint64_t kagSize) override { log.push_back(line(nullptr, "start", kagSize)); }
    void endStream() override { log.emplace_back("end"); }
    void startContentPackage() override { log.emplace_back("{"); }
    void endContentPackage() override { log.emplace_back("}"); }
    void startElement(const KLVKey& key) override { log.push_back("<" + id(key)); }
    void endElement(const KLVKey& key) override { log.push_back(id(key) + ">"); }
    void startPad(std::uint64_t) override {}
    void endPad() override {}
    void startAlign(std::uint64_t) override {}
    void endAlign() override {}

    bool wantsSystemElement(const KLVKey& /*key*/) override { return wants; }
    void localSet(const KLVKey& /*key*/, const MXFGCItems& items) override { addItems("set", items); }
    void fixedLengthPack(const KLVKey& /*key*/, const std::uint8_t* data, std::size_t size) override {
        log.push_back("pack " + std::string(data, data + size));
    }
    void variableLengthPack(const KLVKey& /*key*/, const MXFGCItems& items) override { addItems("items", items); }

    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& to, std::uint64_t& size) override {
        log.push_back(line(nullptr, "wants", id(key), length));
        to = buffer;
        size = bufferSize;
        return wants;
    }
    void pictureElement(const KLVKey& k, const std::uint8_t* d, std::uint64_t s, std::uint64_t o) override {
        add("picture", k, d, s, o);
    }
    void soundElement(const KLVKey& k, const std::uint8_t* d, std::uint64_t s, std::uint64_t o) override {
        add("sound", k, d, s, o);
    }
    void dataElement(const KLVKey& k, const std::uint8_t* d, std::uint64_t s, std::uint64_t o) override {
        add("data", k, d, s, o);
    }
    void compoundElement(const KLVKey& k, const std::uint8_t* d, std::uint64_t s, std::uint64_t o) override {
        add("compound", k, d, s, o);
    }
    void setLengthForm(std::uint8_t form) override { log.push_back(line(nullptr, "form", int{form})); }

private:
    void add(const char* kind, const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size, std::uint64_t at) {
        log.push_back(line(nullptr, kind, size, at) + (data == nullptr ? " null" : ""));
        if (data != nullptr) {
            octets.append(data, data + size);
        }
    }
    void addItems(const char* name, const MXFGCItems& items) {
        std::string text = name;
        for (const MXFGCItem& item : items) {
            text += " " + std::to_string(item.tag) + "=" + std::string(item.data, item.data + item.size);
        }
        log.push_back(text);
    }
};

/// Takes chunks of a size of its own, into a buffer or not.
class ChunkReceiver : public Receiver, public MXFGCChunkedEssenceHandler {
public:
    std::uint64_t chunkSize = 0;
    std::uint64_t accepted = ~std::uint64_t{0}; ///< chunks before the first that is declined
    std::vector<std::uint8_t> chunk;

    bool startChunkedElement(const KLVKey& /*key*/, std::uint64_t /*length*/, std::uint64_t /*offset*/,
                             std::uint64_t& size, std::uint8_t*& to) override {
        if (accepted == 0) {
            return false;
        }
        --accepted;
        size = chunkSize; // the last chunk may have fewer
        to = chunk.empty() ? nullptr : chunk.data();
        return true;
    }
};

/// Reads a body, and returns all calls and findings.
std::string read(std::istream& body, Receiver& receiver) {
    FindingRecorder errors(receiver.log);
    MXFGCSplitter splitter(&receiver, &receiver, &receiver);
    splitter.setErrorHandler(&errors);
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    reader.parse(body, 0);
    return joined(receiver.log);
}

std::string read(const std::string& body, Receiver& receiver) {
    std::istringstream stream(body);
    return read(stream, receiver);
}

std::string structure(const std::string& body) {
    Receiver receiver;
    receiver.wants = false;
    read(body, receiver);
    std::string text;
    for (const std::string& entry : receiver.log) {
        const bool isStructure = entry == "{" || entry == "}" || entry.rfind("error", 0) == 0;
        text += isStructure ? entry : entry[0] == '<' ? "." : "";
    }
    return text;
}

} // namespace

TEST(GCSplitter, CutsContentPackages) {
    const std::string picture = octets::klv(element(0x15), "P");
    const std::string sound = octets::klv(element(0x16), "S");
    const std::string sound2 = octets::klv(element(0x16, 2), "S");
    const std::string pack = octets::klv(system(0x05), "M");
    const std::string set = octets::klv(system(0x43, 2), "");
    const std::string fill = octets::klv(klvutil::fillKey, "...");
    KLVKey otherVersion = element(0x15);
    otherVersion[7] = 9;
    EXPECT_EQ(structure(""), "");
    EXPECT_EQ(structure(picture + fill + picture + octets::klv(otherVersion, "P")), "{.}{.}{.}");
    EXPECT_EQ(structure(sound + sound2 + sound + sound2), "{..}{..}");
    EXPECT_EQ(structure(pack + set + picture + sound + fill + pack + set + picture + sound), "{....}{....}");
    const std::string second = "error unexpected GC essence element - " + toString(element(0x16));
    EXPECT_EQ(structure(picture + sound + picture + sound), "{." + ("." + second) + "}{..}");
    EXPECT_EQ(structure(picture + pack + sound),
              "{..error unexpected GC system element - " + toString(system(0x05)) + ".}");
    // What is no element is told of once, and is no part of a package.
    const KLVKey foreign = keys::make(1, 2, 9);
    const KLVKey unknown = element(0x55);
    const std::string others = octets::klv(foreign, "?") + octets::klv(unknown, "?") + octets::klv(keys::localSet, "") +
                               octets::klv(keys::universalSet, "") + octets::klv(keys::wrapper, "");
    std::string reports;
    for (const KLVKey& key : {foreign, unknown}) {
        reports += "error invalid GC essence element - " + toString(key);
    }
    reports += "error invalid GC system element - " + toString(keys::localSet);
    for (const KLVKey& key : {keys::universalSet, keys::wrapper}) {
        reports += "error invalid GC element - " + toString(key);
    }
    EXPECT_EQ(structure(others + picture + others + picture), reports + "{.}{.}");
}

TEST(GCSplitter, DeliversElements) {
    Receiver receiver;
    EXPECT_LOG(
        read(octets::klv(system(0x05), "M") +
                 octets::klv(system(0x53, 2), octets::of({1, 2, 0, 1, 'a', 1, 3, 0, 0, 0, 9, 0, 1, 'b'})) +
                 octets::klv(system(0x04, 3), "") + octets::klv(system(0x44, 4), octets::of({0, 2, 'x', 'y', 0, 0})) +
                 octets::klv(element(0x15), "ABC") + octets::klv(element(0x16), "", 0x87) +
                 octets::klv(element(0x17), "D", 0x87) + octets::klv(element(0x18), "E", 0x83),
             receiver),
        "start 0; {; <04010100; form 131; pack M; 04010100>; <04010102; set 258=a 259= 9=b; 04010102>; <04010103; "
        "items; 04010103>; <04010104; items 0=xy 0=; 04010104>; "
        "<15010501; wants 15010501 3; picture 3 0; 15010501>; <16010501; form 135; wants 16010501 0; "
        "sound 0 0 null; 16010501>; <17010501; wants 17010501 1; data 1 0; 17010501>; <18010501; form 131; "
        "wants 18010501 1; compound 1 0; 18010501>; }; end");
    EXPECT_EQ(receiver.octets, "ABCDE");

    Receiver uninterested;
    uninterested.wants = false;
    EXPECT_LOG(read(octets::klv(system(0x05), "M") + octets::klv(element(0x15), "ABC"), uninterested),
               "start 0; {; <04010100; form 131; 04010100>; <15010501; wants 15010501 3; 15010501>; }; end");

    std::vector<std::uint8_t> own(4);
    Receiver buffered;
    buffered.buffer = own.data();
    buffered.bufferSize = own.size();
    read(octets::klv(element(0x15), "ABCD") + octets::klv(element(0x15), ""), buffered);
    EXPECT_EQ(buffered.octets, "ABCD");
    EXPECT_EQ(std::string(own.begin(), own.end()), "ABCD");
    EXPECT_EQ(failure([&] { read(octets::klv(element(0x15), "ABCDE"), buffered); }), "valid length");

    // A sender may pass a short element in pieces; it is delivered as one.
    Receiver pieces;
    MXFGCSplitter splitter(nullptr, nullptr, &pieces);
    splitter.startStream(true);
    for (const std::string text : {"abcde", "fgh"}) {
        EXPECT_TRUE(splitter.startIndividualItem(element(0x15), text.size()));
        std::uint64_t offset = 0;
        std::uint64_t size = text.size();
        std::uint8_t* buffer = nullptr;
        EXPECT_TRUE(splitter.getValueBuffer(text.size(), offset, size, buffer));
        EXPECT_EQ(buffer, nullptr);
        const auto* const octets = reinterpret_cast<const std::uint8_t*>(text.data());
        splitter.value(octets, 2);
        splitter.value(octets + 2, text.size() - 2);
        splitter.endIndividualItem(element(0x15));
    }
    EXPECT_LOG(pieces.log, "wants 15010501 5; picture 5 0; wants 15010501 3; picture 3 0");
    EXPECT_EQ(pieces.octets, "abcdefgh");
}

TEST(GCSplitter, DeliversTheSameByEveryRoad) {
    std::string essence;
    for (int i = 0; i < 200000; ++i) {
        essence += static_cast<char>(i * 7);
    }
    const std::string body = octets::klv(element(0x16), essence) + octets::klv(element(0x16), essence);
    std::vector<std::uint8_t> whole(essence.size());
    Receiver internal;
    read(body, internal);
    Receiver buffered;
    buffered.buffer = whole.data();
    buffered.bufferSize = whole.size();
    read(body, buffered);
    EXPECT_EQ(internal.octets, essence + essence);
    EXPECT_EQ(buffered.octets, essence + essence);
    for (const std::uint64_t size :
         {std::uint64_t{1}, std::uint64_t{65536}, std::uint64_t{1} << 30U, std::uint64_t{0}}) {
        for (const bool own : {false, true}) {
            ChunkReceiver chunks;
            chunks.chunkSize = size;
            if (own && size == 0) {
                continue; // a buffer comes with its size
            }
            chunks.chunk.resize(own ? essence.size() : 0);
            read(body, chunks);
            EXPECT_EQ(chunks.octets, essence + essence) << size;
        }
    }
    // Declined at first, an element is delivered at once; declined later, the rest is skipped.
    ChunkReceiver declining;
    declining.accepted = 0;
    read(body, declining);
    EXPECT_EQ(declining.octets, essence + essence);
    ChunkReceiver partial;
    partial.chunkSize = 1000;
    partial.accepted = 3;
    read(body, partial);
    EXPECT_EQ(partial.octets, essence.substr(0, 3000) + essence);
}

TEST(GCSplitter, TakesElementsWholeOrInEvents) {
    std::string body;
    for (const std::string& text : {std::string("ABCDE"), std::string(), std::string(3000, 'x')}) {
        body += octets::klv(system(0x05), "M") + octets::klv(element(0x15), text) +
                octets::klv(klvutil::fillKey, text) + octets::klv(element(0x16), text, 0x87) +
                octets::klv(keys::make(1, 2, 9), text) + octets::klv(element(0x55), text);
    }
    std::vector<std::uint8_t> own(3000);
    ChunkReceiver plain;
    plain.accepted = 0;
    ChunkReceiver buffered = plain;
    buffered.buffer = own.data();
    buffered.bufferSize = own.size();
    ChunkReceiver uninterested = plain;
    uninterested.wants = false;
    ChunkReceiver chunks;
    chunks.chunkSize = 1000;
    ChunkReceiver some = chunks;
    some.accepted = 2;
    ChunkReceiver all;
    all.chunk.resize(3000);
    all.chunkSize = 3000;
    for (const ChunkReceiver& each : {plain, buffered, uninterested, chunks, some, all}) {
        ChunkReceiver whole = each;
        ChunkReceiver inEvents = each;
        PipeStream pipe(body, 100);
        EXPECT_LOG(read(body, whole), read(pipe, inEvents));
        EXPECT_EQ(whole.octets, inEvents.octets);
    }
    EXPECT_EQ(own[2999], 'x');
}

TEST(GCSplitter, DeliversClipsOfAnyLengthInNoMemory) {
    constexpr std::uint64_t length = (std::uint64_t{1} << 32U) + 7; // more than 32 bits can count
    LongStream file(octets::key(element(0x16)) + octets::length(length, 0x88), length - 3, "end");

    struct Clip : ChunkReceiver {
        std::uint64_t delivered = 0;
        bool inOrder = true;
        std::string tail;
        void soundElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                          std::uint64_t offset) override {
            inOrder = inOrder && offset == delivered;
            delivered += size;
            tail.assign(data + size - std::min<std::uint64_t>(size, 3), data + size);
        }
    } clip;
    clip.chunkSize = std::uint64_t{1} << 30U;
    MXFGCSplitter splitter(nullptr, nullptr, &clip);
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    struct rusage before {};
    struct rusage after {};
    getrusage(RUSAGE_SELF, &before);
    reader.parse(file, 0);
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(clip.delivered, length);
    EXPECT_TRUE(clip.inOrder);
    EXPECT_EQ(clip.tail, "end");
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 16 * 1024) << "KiB";
}

TEST(GCSplitter, RefusesWhatNobodyCanHold) {
    const std::string head = octets::key(element(0x15)) + octets::length(0x1000000, 0x87);
    Receiver receiver;
    EXPECT_LOG(
        read(head + std::string(0x1000000, 'x') + octets::klv(element(0x15), "A"), receiver),
        "start 0; {; <15010501; form 135; wants 15010501 16777216; error unsupported GC essence element length - " +
            toString(element(0x15)) +
            " - 0x1000000; picture 16777216 0 null; 15010501>; }; {; <15010501; "
            "form 131; wants 15010501 1; picture 1 0; 15010501>; }; end");
    Receiver many;
    EXPECT_LOG(read(octets::klv(system(0x04), std::string(65537, '\0')), many),
               "start 0; {; <04010100; form 131; error too many items in GC system element - " +
                   toString(system(0x04)) + "; 04010100>; }; end");
    MXFGCSplitter splitter;
    EXPECT_EQ(failure([&] { splitter.getStructureHandler(); }), "structure handler is present");
    EXPECT_EQ(failure([&] { splitter.getSystemHandler(); }), "system handler is present");
    EXPECT_EQ(failure([&] { splitter.getEssenceHandler(); }), "essence handler is present");
    EXPECT_EQ(failure([&] { splitter.startStream(false); }), "has accurate lengths");
    EXPECT_EQ(failure([&] { splitter.startIndividualItem(element(0x15), 1); }), "expected individual item");
    splitter.startStream(true);
    EXPECT_EQ(failure([&] { splitter.startStream(true); }), "before start");
    EXPECT_FALSE(splitter.startIndividualItem(element(0x15), 1));
    EXPECT_EQ(failure([&] { splitter.endIndividualItem(element(0x16)); }), "correct essence key");
    splitter.endStream(false);
}

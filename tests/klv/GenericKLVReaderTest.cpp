#include "klv/GenericKLVReader.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "klv/DullKLVHandler.h"
#include "klv/KLVFindings.h"
#include "klv/parse_error.h"
#include "support/ExpectLog.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "support/Streams.h"
#include "util/assertion_failure.h"

using octets::klv;
namespace findings = klvutil::findings;

namespace {

/// What a parse of @p stream logs; a parse_error becomes its last line.
Log read(std::istream& stream, std::streamoff start = 0, const std::function<void(EventRecorder&)>& prepare = {}) {
    Log log;
    FindingRecorder errors(log);
    EventRecorder recorder(log);
    if (prepare) {
        prepare(recorder);
    }
    GenericKLVReader reader;
    reader.setHandler(&recorder);
    reader.setErrorHandler(&errors);
    try {
        reader.parse(stream, start);
    } catch (const klvutil::parse_error& e) {
        log.push_back(line(nullptr, "parse_error", e.what()) + " @" + std::to_string(std::streamoff{e.position()}));
    } catch (int) {
        EXPECT_EQ(errors.open, 0);
        throw;
    }
    EXPECT_EQ(errors.open, 0);
    return log;
}

Log read(const std::string& data, const std::function<void(EventRecorder&)>& prepare = {}) {
    std::istringstream stream(data);
    return read(stream, 0, prepare);
}

/// The same events and positions must come from a stream that cannot seek, in large pieces or octet by octet.
Log readEveryWay(const std::string& data) {
    Log log = read(data);
    for (const std::size_t atATime : {std::size_t{1}, std::size_t{7}, std::size_t{100000}}) {
        PipeStream pipe(data, atATime);
        EXPECT_LOG(read(pipe), log) << atATime;
    }
    return log;
}

std::string lastLine(const std::string& data) {
    return readEveryWay(data).back();
}

KLVKey structured(std::uint8_t structure) {
    return keys::make(2, structure);
}

} // namespace

TEST(GenericKLVReader, EmptyStream) {
    EXPECT_LOG(readEveryWay(""), (Log{"startStream 1 @0", "endStream 0 @0"}));
}

TEST(GenericKLVReader, WalksEveryKind) {
    const std::string inner = klv(keys::item, "xy", 1);
    const std::string data = klv(keys::item, "abc", 1) + klv(keys::item, "", 1) + octets::key(keys::label) +
                             klv(keys::universalSet, inner + octets::key(keys::label) + inner, 0x83) +
                             klv(keys::localSet, octets::of({0x3C, 1, 0, 1, 9, 0x3C, 2, 0, 0})) +
                             klv(keys::variablePack, octets::of({0, 2, 5, 6, 0, 0})) + klv(keys::fixedPack, "p") +
                             klv(keys::wrapper, "w", 0x88);
    EXPECT_LOG(readEveryWay(data),
               "startStream 1 @0; form 1 @0; item 00000001 3 @0; value 3 @0; /item 00000001 @0; "
               "item 00000001 0 @20; /item 00000001 @20; label 00000000 @37; /label 00000000 @37; form 131 @53; "
               "universalSet 00000000 54 @53; form 1 @53; item 00000001 2 @73; value 2 @73; /item 00000001 @73; "
               "label 00000000 @92; /label 00000000 @92; item 00000001 2 @108; value 2 @108; /item 00000001 @108; "
               "/universalSet 00000000 @53; form 131 @127; localSet 00000000 9 1 1 @127; localItem 15361 1 @127; "
               "value 1 @127; /localItem 15361 @127; localItem 15362 0 @127; /localItem 15362 @127; "
               "/localSet 00000000 @127; variablePack 00000000 6 1 @156; packItem 2 @156; value 2 @156; "
               "/packItem @156; packItem 0 @156; /packItem @156; /variablePack 00000000 @156; "
               "fixedPack 00000000 1 @182; value 1 @182; /fixedPack 00000000 @182; form 136 @203; "
               "wrapper 00000000 1 1 @203; value 1 @203; /wrapper 00000000 @203; endStream 0 @229");
}

TEST(GenericKLVReader, FormsOfLocalItems) {
    const auto firstLines = [](std::uint8_t structure, const std::string& items) {
        const Log log = readEveryWay(klv(structured(structure), items));
        return log.size() < 5 ? log.back() : log.at(2) + ", " + log.at(structure == 0x13 ? 4 : 3);
    };
    EXPECT_EQ(firstLines(0x13, octets::of({1, 2, 1, 9})), "localSet 00000000 4 1 3 @0, localItem 258 1 @0");
    EXPECT_EQ(firstLines(0x43, octets::of({1, 0, 1, 9})), "localSet 00000000 4 0 1 @0, localItem 1 1 @0");
    EXPECT_EQ(firstLines(0x63, octets::of({1, 0, 0, 0, 1, 9})), "localSet 00000000 6 0 2 @0, localItem 1 1 @0");
    EXPECT_EQ(firstLines(0x3B, octets::of({1, 2, 3, 4, 1, 9})), "localSet 00000000 6 2 0 @0, localItem 16909060 1 @0");
    EXPECT_EQ(lastLine(klv(structured(0x4B), "")), "parse_error unimplemented SMPTE KLV coding @0");
    EXPECT_EQ(lastLine(klv(structured(0x14), "")), "parse_error invalid variable length pack type @0");
    EXPECT_EQ(lastLine(klv(keys::make(3, 3), "")), "parse_error invalid wrapper type @0");
}

TEST(GenericKLVReader, MalformedKeysAndLengths) {
    const std::string item = octets::key(keys::item);
    const std::string before = klv(keys::item, "", 1); // 17 octets
    KLVKey bad = keys::item;
    bad[3] = 0x35;
    EXPECT_EQ(lastLine(before + octets::key(bad)), "parse_error invalid SMPTE key @17");
    EXPECT_EQ(lastLine(before + klv(structured(2), "")), "parse_error unimplemented SMPTE KLV coding @17");
    EXPECT_EQ(lastLine(item + octets::of({0x80})), "parse_error invalid BER long form @0");
    EXPECT_EQ(lastLine(item + octets::of({0x89})), "parse_error invalid BER long form @0");
    EXPECT_EQ(lastLine(before + item.substr(0, 15)), "parse_error unsuccessful read() @17");
    EXPECT_EQ(lastLine(before + item), "parse_error unsuccessful read() @17");
    EXPECT_EQ(lastLine(before + item + octets::of({0x83, 0, 0})), "parse_error unsuccessful read() @17");
    EXPECT_EQ(lastLine(before + item + octets::of({5, 1, 2})), "parse_error unsuccessful read() @17");
    EXPECT_EQ(lastLine(item + octets::length(std::uint64_t{1} << 63U, 0x88)),
              "parse_error KLV triplet ends beyond the largest stream position @0");
    const std::uint64_t largest = (std::uint64_t{1} << 63U) - 1 - 25;
    EXPECT_EQ(lastLine(item + octets::length(largest, 0x88)), "parse_error unsuccessful read() @0");
    EXPECT_EQ(lastLine(item + octets::length(largest + 1, 0x88)),
              "parse_error KLV triplet ends beyond the largest stream position @0");
}

TEST(GenericKLVReader, NothingIsReadPastAContainer) {
    const std::string after = klv(keys::item, "after");
    const auto end = [&](const KLVKey& key, const std::string& content) {
        const Log log = readEveryWay(klv(key, content) + after);
        return log.at(log.size() - 3) + ", " + log.back();
    };
    // An item one octet too long: its end event comes, its value does not, and neither does the end of the set.
    EXPECT_EQ(end(keys::localSet, octets::of({0, 1, 0, 2, 9})),
              "localItem 1 2 @0, parse_error incorrect local set length @0");
    EXPECT_EQ(end(keys::variablePack, octets::of({0, 2, 9})),
              "packItem 2 @0, parse_error incorrect variable length pack length @0");
    const std::string nested = octets::key(keys::item) + octets::of({5, 1, 2});
    EXPECT_EQ(end(keys::universalSet, nested), "item 00000001 5 @20, parse_error incorrect universal set length @20");
    // That the item before was a container changes nothing, nor how large the claim is.
    EXPECT_EQ(end(keys::universalSet, klv(keys::localSet, "") + nested).substr(21),
              "parse_error incorrect universal set length @40");
    const std::string huge = octets::key(keys::item) + octets::length((std::uint64_t{1} << 63U) + 7, 0x88);
    EXPECT_EQ(end(keys::universalSet, huge).substr(0, 26), "item 00000001 922337203685");
    EXPECT_EQ(lastLine(klv(keys::universalSet, octets::key(keys::item) + octets::length(~0ULL, 0x88)) + after),
              "parse_error incorrect universal set length @20");
    // Tags, lengths and keys that do not fit end the parse at once.
    EXPECT_EQ(lastLine(klv(keys::localSet, octets::of({0})) + after), "parse_error incorrect local set length @0");
    EXPECT_EQ(lastLine(klv(keys::localSet, octets::of({0, 1, 0})) + after),
              "parse_error incorrect local set length @0");
    EXPECT_EQ(lastLine(klv(structured(0x13), octets::of({0, 1, 0x82, 0})) + after),
              "parse_error incorrect local set length @0");
    EXPECT_EQ(lastLine(klv(keys::variablePack, octets::of({0})) + after),
              "parse_error incorrect variable length pack length @0");
    EXPECT_EQ(lastLine(klv(keys::universalSet, octets::key(keys::item).substr(0, 15)) + after),
              "parse_error incorrect universal set length @0");
    EXPECT_EQ(lastLine(klv(keys::universalSet, octets::key(keys::item)) + after),
              "parse_error incorrect universal set length @20");
}

TEST(GenericKLVReader, NestingIsLimited) {
    std::string data = klv(keys::item, "");
    for (int i = 0; i < 32; ++i) {
        data = klv(keys::universalSet, data);
    }
    EXPECT_EQ(lastLine(data), "endStream 0 @" + std::to_string(data.size()));
    EXPECT_EQ(lastLine(klv(keys::universalSet, klv(keys::localSet, ""))), "endStream 0 @40");
    EXPECT_EQ(lastLine(klv(keys::universalSet, data)), "parse_error KLV triplets are nested too deeply @640");
}

TEST(GenericKLVReader, DeliversTheChunksAskedFor) {
    std::string value;
    for (int i = 0; i < 200000; ++i) {
        value += static_cast<char>(i * 31 >> 3);
    }
    std::uint8_t own[10000];
    std::string half; // every second piece of 10,000 octets
    for (std::size_t i = 10000; i < value.size(); i += 20000) {
        half += value.substr(i, 10000);
    }
    using Chunk = decltype(EventRecorder::chunk);
    const Chunk firstThree = [](auto, auto& offset, auto& size, auto&) { return size = 3, offset == 0; };
    const Chunk everySecond = [&](auto length, auto& offset, auto& size, auto& buffer) {
        offset += 10000;
        size = 10000;
        buffer = own;
        return offset < length;
    };
    for (const auto& [chunk, expected] :
         {std::pair{Chunk(), value}, {firstThree, value.substr(0, 3)}, {everySecond, half}}) {
        for (const std::size_t atATime : {0U, 4096U}) {
            Log log;
            EventRecorder recorder(log);
            recorder.chunk = chunk;
            GenericKLVReader reader;
            reader.setHandler(&recorder);
            std::istringstream file(klv(keys::item, value));
            PipeStream pipe(file.str(), atATime);
            reader.parse(atATime == 0 ? static_cast<std::istream&>(file) : pipe, 0);
            EXPECT_EQ(recorder.values, expected);
            EXPECT_EQ(log.back(), "endStream 0 @200020");
        }
    }
    for (const auto& [from, count] : {std::pair<std::uint64_t, std::uint64_t>{0, 0}, {0, 5}, {5, 1}, {~0ULL, 2}}) {
        const auto wrong = [f = from, c = count](auto, auto& offset, auto& size, auto&) {
            return offset = f, size = c, true;
        };
        EXPECT_THROW(read(klv(keys::item, "abcd"), [&](EventRecorder& r) { r.chunk = wrong; }),
                     util::assertion_failure);
    }
}

TEST(GenericKLVReader, StopsAtElementBoundaries) {
    const std::string data = klv(keys::item, std::string(30000, 'a')) + klv(keys::item, "b") + klv(keys::item, "c");
    std::istringstream stream(data);
    Log log;
    bool stop = false;
    EventRecorder recorder(log);
    recorder.wants = false;
    recorder.onEvent = [&](const std::string& text) { stop = stop || text == "item 00000001 30000 @0"; };
    GenericKLVReader reader;
    reader.setHandler(&recorder);
    reader.parse(stream, 0, stop);
    EXPECT_EQ(log.back(), "endStream 1 @30020");
    EXPECT_EQ(stream.tellg(), 30020);

    log.clear();
    stop = false;
    reader.parse(stream, 30020, 30022, stop);
    EXPECT_EQ(log.back(), "endStream 0 @30041");
    EXPECT_EQ(stream.tellg(), 30041);

    // Also when a handler has ended the parse.
    recorder.onEvent = [](const std::string& text) {
        if (text == "item 00000001 1 @30041") {
            throw 42;
        }
    };
    EXPECT_THROW(reader.parse(stream, 30041), int);
    EXPECT_EQ(stream.tellg(), 30061);
    stream.seekg(30041);
    recorder.onEvent = nullptr;
    reader.parse(stream, 30041);
    EXPECT_TRUE(stream.eof());
    EXPECT_THROW(reader.parse(stream, 30062), klvutil::parse_error);
    stream.clear();
    EXPECT_THROW(reader.parse(stream, 0), util::assertion_failure); // "correct currentPosition"
    reader.setHandler(nullptr);
    EXPECT_THROW(reader.parse(stream, 0), util::assertion_failure);
}

TEST(GenericKLVReader, SkipsBeyondTheEndAreFound) {
    const auto skipAll = [](EventRecorder& r) { r.wants = false; };
    for (const std::uint64_t claimed : {std::uint64_t{4}, std::uint64_t{100000}, std::uint64_t{1} << 62U}) {
        const std::string data = octets::key(keys::item) + octets::length(claimed, 0x88) + "abc";
        Log log = read(data, skipAll);
        EXPECT_EQ(log.back(), "parse_error unsuccessful seekg() @0");
        EXPECT_EQ(log.at(log.size() - 2).substr(0, 5), "item "); // no end event
        PipeStream pipe(data, 2);
        EXPECT_EQ(read(pipe, 0, skipAll).back(), "parse_error unsuccessful ignore() @0");
    }
    const std::string exact = klv(keys::item, std::string(100000, 'x'));
    EXPECT_EQ(read(exact, skipAll).back(), "endStream 0 @100020");
}

TEST(GenericKLVReader, FailingStreams) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{10}, std::size_t{16}, std::size_t{19}, std::size_t{22}}) {
        FailingStream stream(klv(keys::item, "abc").substr(0, size));
        EXPECT_EQ(read(stream).back(), "parse_error unsuccessful read() @0") << size;
    }
    std::istringstream bad("x");
    bad.setstate(std::ios::badbit);
    GenericKLVReader reader;
    Log log;
    EventRecorder recorder(log);
    reader.setHandler(&recorder);
    try {
        reader.parse(bad, 0);
        FAIL();
    } catch (const klvutil::parse_error& e) {
        EXPECT_STREQ(e.what(), "input stream is not good()");
        EXPECT_EQ(e.id(), findings::streamNotGood.id);
    }
    EXPECT_TRUE(log.empty());
}

TEST(GenericKLVReader, LosesNothingBeforeABadSector) {
    std::string data;
    for (int i = 0; i < 3000; ++i) {
        data += klv(keys::item, std::string(80, 'x'));
    }
    for (const std::streamoff whole : {0, 1, 1999}) {
        OddStream stream(data);
        stream.onRead = [whole](std::streamoff from, std::streamsize got) {
            return from + got <= whole * 100 + 50 ? got : throw std::ios_base::failure("bad sector");
        };
        const Log log = read(stream);
        EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const auto& text) { return text.rfind("/item", 0) == 0; }),
                  whole);
        EXPECT_EQ(log.back(), "parse_error unsuccessful read() @" + std::to_string(whole * 100));
    }
    OddStream strange(data);
    strange.onRead = [](std::streamoff from, std::streamsize got) { return from == 0 ? got : -1; };
    EXPECT_EQ(read(strange).back(), "parse_error unsuccessful read() @8100");
}

TEST(GenericKLVReader, ReadsOnOnlyWhereItKnowsWhereTheStreamIs) {
    const std::string data = klv(keys::item, std::string(60000, 'a')) + klv(keys::item, "b");
    // A read takes some octets and fails, the same happens once more, and then all is well again.
    OddStream stream(data);
    int reads = 0;
    stream.onRead = [&](std::streamoff /*from*/, std::streamsize got) {
        return ++reads != 2 && reads != 3 ? got : throw std::ios_base::failure("passing fault");
    };
    EXPECT_EQ(read(stream).back(), "parse_error unsuccessful read() @0");
    // A handler ends the parse, and the stream cannot be put back.
    OddStream lost(data);
    EXPECT_THROW(read(lost, 0,
                      [&](EventRecorder& r) {
                          r.onEvent = [&](const std::string& text) {
                              lost.canGoBack = false;
                              if (text == "item 00000001 1 @60020") {
                                  throw 42;
                              }
                          };
                      }),
                 int);
    EXPECT_TRUE(lost.fail());
}

TEST(GenericKLVReader, DeliversTheSameHoweverItReadsAhead) {
    constexpr std::size_t sizes[] = {1,     100,   8155,  8171,   8172,   8192,   3,      16384, 20000, 32747,
                                     32748, 32768, 65536, 131051, 131072, 131073, 200000, 5,     60000, 9};
    std::string data;
    std::string values;
    for (int round = 0; round < 3; ++round) {
        for (const std::size_t size : sizes) {
            std::string value(size, '\0');
            for (char& octet : value) {
                octet =
                    static_cast<char>((values.size() * 7 + static_cast<std::size_t>(&octet - value.data()) * 13) >> 3U);
            }
            data += klv(keys::item, value);
            values += value;
        }
    }
    // Every so many values are taken into a buffer, and as many skipped: the others come in pieces.
    struct Taker : DullKLVHandler {
        std::size_t every = 1;
        std::size_t count = 0;
        std::string taken;
        std::string expected;
        const std::string* all = nullptr;
        std::size_t passed = 0;
        std::vector<std::uint8_t> own = std::vector<std::uint8_t>(200000);

        bool startIndividualItem(const KLVKey& /*key*/, std::uint64_t length) override {
            const bool wanted = ++count % every != 1;
            expected += wanted ? all->substr(passed, length) : "";
            passed += length;
            return wanted;
        }
        bool getValueBuffer(std::uint64_t /*length*/, std::uint64_t& /*offset*/, std::uint64_t& /*size*/,
                            std::uint8_t*& buffer) override {
            buffer = count % every == 0 ? own.data() : nullptr;
            return true;
        }
        void value(const std::uint8_t* octets, std::uint64_t size) override { taken.append(octets, octets + size); }
    };
    for (std::size_t every = 1; every < 7; ++every) {
        Taker taker;
        taker.every = every;
        taker.all = &values;
        std::istringstream stream(data);
        GenericKLVReader reader;
        reader.setHandler(&taker);
        reader.parse(stream, 0);
        EXPECT_EQ(taker.passed, values.size());
        EXPECT_TRUE(taker.taken == taker.expected) << every;
    }
}

TEST(GenericKLVReader, GrowingFiles) {
    std::stringstream stream(octets::key(keys::item) + octets::length(20000) + "first");
    const Log log = read(stream, 0, [&](EventRecorder& r) {
        r.wants = false;
        r.onEvent = [&](const std::string& text) {
            if (text.rfind("item ", 0) == 0) {
                stream.seekp(0, std::ios::end);
                stream << std::string(19995, 'x');
            }
        };
    });
    EXPECT_EQ(log.back(), "endStream 0 @20020");
}

TEST(GenericKLVReader, ExceptionsOfHandlersPassThrough) {
    for (const char* event : {"startStream", "item", "value", "/item", "endStream"}) {
        Log log;
        std::istringstream stream(klv(keys::item, "abc"));
        EXPECT_THROW(read(stream, 0,
                          [&](EventRecorder& r) {
                              r.onEvent = [&](const std::string& text) {
                                  if (text.rfind(event, 0) == 0) {
                                      throw 42;
                                  }
                              };
                          }),
                     int)
            << event;
    }
}

TEST(GenericKLVReader, PositionsCountFromTheStart) {
    const std::string data = klv(keys::item, "abc", 1) + klv(keys::item, "d", 1);
    PipeStream pipe(data, 3);
    EXPECT_EQ(read(pipe, 1000).back(), "endStream 0 @1038");
    std::istringstream stream("0123456789" + data);
    stream.seekg(10);
    EXPECT_EQ(read(stream, 10).back(), "endStream 0 @48");
}

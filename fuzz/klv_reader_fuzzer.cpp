/// Reads the input as a KLV stream. A stream that seeks and pipes, whatever they hand out at a time, make the same calls
/// at the same positions; reading in two goes makes those of one; and what was read is written as the same octets.

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Expect.h"
#include "Taker.h"
#include "klv/GenericKLVReader.h"
#include "klv/GenericKLVWriter.h"
#include "klv/VerifyingKLVHandler.h"
#include "klv/parse_error.h"
#include "support/Streams.h"

namespace {

/// Whether @p stream could be read up to @p end.
bool parse(std::istream& stream, std::streamoff start, std::streamoff end, KLVHandler& handler, Log* log = nullptr) {
    GenericKLVReader reader;
    reader.setHandler(&handler);
    bool stop = false;
    try {
        reader.parse(stream, start, end, stop);
        return true;
    } catch (const klvutil::parse_error& e) {
        if (log != nullptr) {
            // A skip fails by seeking or by reading, as the stream allows; the position is the same.
            log->push_back("parse_error @" + std::to_string(std::streamoff{e.position()}));
        }
        return false;
    }
}

Log read(std::istream& stream) {
    Log log;
    Taker taker(log);
    parse(stream, 0, -1, taker, &log);
    log.push_back(taker.values);
    return log;
}

/// The calls of reading up to the first boundary at or after @p middle, and from there on.
Log readInTwo(std::istream& stream, std::streamoff middle) {
    Log log;
    Taker taker(log);
    if (parse(stream, 0, middle, taker, &log)) {
        stream.clear();
        parse(stream, stream.tellg(), -1, taker, &log);
    }
    log.push_back(taker.values);
    return log;
}

/// The calls of @p log that do not depend on where reading began.
std::string content(const Log& log) {
    std::string text;
    for (const std::string& line : log) {
        if (line.rfind("form ", 0) != 0 && line.find("Stream ") == std::string::npos) {
            text += line + ';';
        }
    }
    return text;
}

void writeAgain(const std::string& octets) {
    std::istringstream input(octets);
    std::ostringstream output;
    GenericKLVWriter writer(output);
    bool isWhole = false;
    try {
        isWhole = parse(input, 0, -1, writer);
    } catch (const util::assertion_failure& refused) {
        // Fields of four octets can be read, and not written.
        expect(std::string(refused.what()) == "assertion failure: enough octets", refused.what());
    }
    const std::string written = output.str();
    expect(isWhole ? written == octets : octets.compare(0, written.size(), written) == 0,
           "what is written is not what was read");
    if (isWhole) {
        input.clear();
        input.seekg(0);
        std::stringstream verified;
        GenericKLVWriter inner(verified);
        VerifyingKLVHandler verifier(verified, &inner);
        parse(input, 0, -1, verifier);
        expect(verified.str() == octets, "what is verified is not what was read");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::uint8_t choice = data[size - 1];
    const std::string octets(reinterpret_cast<const char*>(data), size - 1);
    std::istringstream seekable(octets);
    const Log log = read(seekable);
    PipeStream narrow(octets, 1);
    expect(read(narrow) == log, "a pipe gives other events than a stream that seeks");
    PipeStream wide(octets, 2 + choice % 64U);
    expect(read(wide) == log, "a pipe that hands out more gives other events");

    std::istringstream again(octets);
    expect(content(readInTwo(again, choice * 16)) == content(log), "reading in two goes gives other events");
    writeAgain(octets);
    return 0;
}

/// Reads the input, but for its last octet, as an MXF file, through a stream that seeks and through a pipe that hands
/// out octet by octet: with handlers that want everything, with such that want nothing, and with the parsers of the
/// library. A pipe must give the same calls at the same positions, with the same octets, and the same findings of the
/// parsers. Nothing worse than a parse_error may come of it; where one comes whatever is wanted, the parsers get it too.

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Expect.h"
#include "Listener.h"
#include "Taker.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/index/MXFIndexParser.h"
#include "sdk/BRYXMetadataParser.h"
#include "sdk/BRYXSystemParser.h"
#include "support/Streams.h"

namespace {

constexpr std::streamoff none = -1;

/// The position of the parse_error that ends the reading; none if it gets to the end.
std::streamoff faultOf(MXFReader& reader, std::istream& stream) {
    try {
        reader.read(stream);
        return none;
    } catch (const klvutil::parse_error& error) {
        // A skip fails by seeking or by reading, as the stream allows; the position is the same.
        return error.position();
    }
}

struct Events {
    Log log;
    std::streamoff fault;

    friend bool operator==(const Events& a, const Events& b) { return a.log == b.log && a.fault == b.fault; }
};

/// The events of a file, whose outermost triplets are wanted or not.
Events record(std::istream& stream, bool skipRunIn, bool wants) {
    Log log;
    StructureRecorder structure(log);
    FindingRecorder errors(log);
    Taker header(log, "H ");
    Taker index(log, "I ");
    Taker body(log, "B ");
    Taker generic(log, "G ");
    header.wants = index.wants = body.wants = generic.wants = wants;
    MXFReader reader;
    reader.setSkipRunIn(skipRunIn);
    reader.setStructureHandler(&structure);
    reader.setHeaderMetadataHandler(&header);
    reader.setIndexHandler(&index);
    reader.setBodyHandler(&body);
    reader.setGenericStreamHandler(&generic);
    reader.setErrorHandler(&errors);
    const std::streamoff fault = faultOf(reader, stream);
    log.push_back(header.values + index.values + body.values + generic.values);
    return {log, fault};
}

struct Content {
    std::shared_ptr<Listener> listener;
    std::streamoff fault;

    friend bool operator==(const Content& a, const Content& b) {
        return a.listener->sum == b.listener->sum && a.listener->findings.reports == b.listener->findings.reports &&
               a.fault == b.fault;
    }
};

/// What the parsers make of a file.
Content parse(std::istream& stream, bool skipRunIn) {
    // To make a factory for each reading takes longer than to read.
    static const auto factory = std::make_shared<BRYXMetadataFactory>();
    const auto listener = std::make_shared<Listener>();
    ErrorHandler* const findings = &listener->findings;
    factory->setErrorHandler({listener, findings});
    BRYXMetadataParser metadata(*factory, *listener);
    metadata.setErrorHandler(findings);
    MXFIndexParser index(*listener);
    index.setErrorHandler(findings);
    BRYXSystemParser system;
    system.setSDTICPSystemHandler(listener.get());
    system.setPDProxySystemHandler(listener.get());
    system.setErrorHandler(findings);
    MXFGCSplitter body(listener.get(), &system, listener.get());
    body.setErrorHandler(findings);
    MXFReader reader;
    reader.setSkipRunIn(skipRunIn);
    reader.setStructureHandler(listener.get());
    reader.setHeaderMetadataHandler(&metadata.handler());
    reader.setIndexHandler(&index);
    reader.setBodyHandler(&body);
    reader.setErrorHandler(findings);
    return {listener, faultOf(reader, stream)};
}

/// The result of @p read for a stream that seeks, which must be that for a pipe.
template <class Read>
auto both(const std::string& file, Read read) {
    std::istringstream seekable(file);
    PipeStream pipe(file, 1);
    auto result = read(seekable);
    expect(result == read(pipe), "a pipe gives something else than a stream that seeks");
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string file(reinterpret_cast<const char*>(data), size - 1);
    const bool skipRunIn = data[size - 1] % 2 == 0;
    const auto all = both(file, [&](std::istream& stream) { return record(stream, skipRunIn, true); }).fault;
    const auto least = both(file, [&](std::istream& stream) { return record(stream, skipRunIn, false); }).fault;
    const auto parsed = both(file, [&](std::istream& stream) { return parse(stream, skipRunIn); }).fault;
    // Who looks into more may find more that ends the reading.
    expect(least == none || all != none, "what is wanted keeps a fault from being found");
    expect(least == none || parsed != none, "parsers read over a fault");
    expect(least != all || parsed == all, "parsers do not read as far as others");
    return 0;
}

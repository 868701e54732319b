/// Reads the input as an MXF file through a stream that seeks and through a pipe that hands out octet by octet. Both
/// must make the same calls at the same positions, with the same octets, and nothing worse than a parse_error may come
/// of it.

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Taker.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFPartialReader.h"
#include "mxf/engines/MXFReader.h"
#include "support/Streams.h"

namespace {

Log read(std::istream& stream, bool skipRunIn) {
    Log log;
    StructureRecorder structure(log);
    FindingRecorder errors(log);
    Taker header(log, "H ");
    Taker index(log, "I ");
    Taker body(log, "B ");
    MXFReader reader;
    reader.setSkipRunIn(skipRunIn);
    reader.setStructureHandler(&structure);
    reader.setHeaderMetadataHandler(&header);
    reader.setIndexHandler(&index);
    reader.setBodyHandler(&body);
    reader.setErrorHandler(&errors);
    try {
        reader.read(stream);
    } catch (const klvutil::parse_error& e) {
        std::ostringstream text;
        text << std::streamoff{e.position()};
        // A skip fails by seeking or by reading, as the stream allows; the position is the same.
        log.push_back("parse_error @" + text.str());
    }
    log.push_back(header.values + index.values + body.values);
    return log;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string file(reinterpret_cast<const char*>(data), size - 1);
    const bool skipRunIn = data[size - 1] % 2 == 0;
    std::istringstream seekable(file);
    PipeStream pipe(file, 1);
    if (read(seekable, skipRunIn) != read(pipe, skipRunIn)) {
        std::fputs("a pipe gives other events than a stream that seeks\n", stderr);
        std::abort();
    }
    Log log;
    StructureRecorder structure(log);
    MXFPartialReader partial;
    seekable.clear();
    partial.setInputStream(&seekable);
    partial.setStructureHandler(&structure);
    try {
        partial.readRandomIndexPack();
        partial.readPartition(data[size - 1]);
    } catch (const klvutil::parse_error&) {
        log.clear();
    }
    return 0;
}

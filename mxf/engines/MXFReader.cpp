#include "mxf/engines/MXFReader.h"

#include <istream>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/internal/StreamAccess.h"
#include "mxf/engines/MXFSplitter.h"
#include "mxf/engines/internal/PrefixedStreambuf.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFRunInSkipper.h"

namespace bryx {

namespace {

/// Gives a stream the state of another at its end, however that comes.
class StateOf {
public:
    StateOf(const std::istream& from, std::istream& to) : from_(from), to_(to) {}
    ~StateOf() { to_.setstate(from_.rdstate()); }
    StateOf(const StateOf&) = delete;
    StateOf& operator=(const StateOf&) = delete;

private:
    const std::istream& from_;
    std::istream& to_;
};

} // namespace

void MXFReader::read(std::istream& stream) {
    const klvutil::StreamExceptionsOff exceptionsOff(stream);
    if (klvutil::atEnd(stream)) {
        return;
    }
    DullMXFStructureHandler dullStructure;
    DullKLVHandler dull;
    const auto orDull = [&](KLVHandler* handler) { return handler != nullptr ? handler : &dull; };
    MXFSplitter splitter(structureHandler_ != nullptr ? structureHandler_ : &dullStructure,
                         orDull(headerMetadataHandler_), orDull(indexHandler_), orDull(bodyHandler_), true);
    splitter.setGenericStreamHandler(genericStreamHandler_);
    splitter.setErrorHandler(errorHandler_);
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    reader.setErrorHandler(errorHandler_);

    const klvutil::StreamExtent extent = klvutil::extentOf(stream);
    const std::streamoff base = extent.canTell() ? extent.position : 0;
    std::uint64_t runIn = 0;
    MXFRunInSkipper skipper;
    if (skipRunIn_) {
        skipper.setErrorHandler(errorHandler_);
        runIn = skipper.skip(stream);
        if (runIn != 0) {
            splitter.runIn(runIn);
        }
    }
    const std::streamoff start = base + static_cast<std::streamoff>(runIn);
    if (skipper.prefix().empty()) {
        return reader.parse(stream, start);
    }
    PrefixedStreambuf buffer(skipper.prefix(), *stream.rdbuf());
    std::istream prefixed(&buffer);
    const StateOf shared(prefixed, stream);
    reader.parse(prefixed, start);
}

} // namespace bryx

#include "klv/GenericKLVReader.h"

#include "klv/KLVFillItemKeyFilter.h"
#include "klv/KLVMonitor.h"
#include "klv/KLVTeller.h"
#include "klv/internal/KLVInput.h"
#include "klv/internal/KLVWalk.h"
#include "klv/internal/ReportedStream.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace {

/// Sends the start and the end of the stream to @p chain, and the events between them to @p handler, which is a part of it.
void walkStream(KLVInput& input, KLVHandler& chain, KLVHandler& handler, std::streamoff end, const bool& stop) {
    chain.startStream(true);
    KLVWalk(input, handler).walkStream(end, stop);
    input.settle();
    chain.endStream(stop);
}

/// Runs the parse with the locator of its chain; the error handler learns of its end however it ends.
template <class Chain>
void walkReported(KLVInput& input, Chain& chain, KLVHandler& handler, ErrorHandler* errorHandler, std::streamoff end,
                  const bool& stop) {
    chain.setLocator(chain.getLocator());
    klvutil::reportedStream(errorHandler, chain.getLocator(), [&] { walkStream(input, chain, handler, end, stop); });
}

} // namespace

void GenericKLVReader::setHandler(KLVHandler* handler) {
    handler_ = handler;
}

KLVHandler* GenericKLVReader::getHandler() const {
    util::require(handler_ != nullptr, "handler is present");
    return handler_;
}

void GenericKLVReader::setErrorHandler(ErrorHandler* errorHandler) {
    errorHandler_ = errorHandler;
}

ErrorHandler* GenericKLVReader::getErrorHandler() const {
    util::require(errorHandler_ != nullptr, "error handler is present");
    return errorHandler_;
}

void GenericKLVReader::parse(std::istream& stream, std::streampos start) {
    bool stop = false;
    parse(stream, start, stop);
}

void GenericKLVReader::parse(std::istream& stream, std::streampos start, bool& stop) {
    parse(stream, start, -1, stop);
}

void GenericKLVReader::parse(std::istream& stream, std::streampos start, std::streampos end, bool& stop) {
    KLVHandler& handler = *getHandler();
    KLVFillItemKeyFilter fillFilter;
    fillFilter.setHandler(&handler);
    KLVInput input(stream, start);
    if (input.seekable()) {
        util::require(input.position() == start, "correct currentPosition");
        KLVTeller teller(input.located());
        teller.setHandler(&fillFilter);
        // Neither of the two changes what passes, so that no triplet has to.
        walkReported(input, teller, handler, errorHandler_, end, stop);
    } else {
        KLVMonitor monitor;
        monitor.rebase(start);
        monitor.setHandler(&fillFilter);
        walkReported(input, monitor, monitor, errorHandler_, end, stop);
    }
}

} // namespace bryx

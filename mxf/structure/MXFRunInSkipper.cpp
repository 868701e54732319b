#include "mxf/structure/MXFRunInSkipper.h"

#include <array>
#include <istream>

#include "klv/InputLocator.h"
#include "klv/KLVFindings.h"
#include "klv/internal/ReportedStream.h"
#include "klv/internal/StreamAccess.h"
#include "klv/parse_error.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "mxf/structure/MXFStructureHandler.h"

namespace bryx {

namespace findings = mxfutil::findings;

namespace {

constexpr std::array<std::uint8_t, 11> partitionPackPrefix{0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05,
                                                           0x01, 0x01, 0x0D, 0x01, 0x02};

} // namespace

std::uint64_t MXFRunInSkipper::skip(std::istream& stream) {
    prefix_.clear();
    const klvutil::StreamExceptionsOff exceptionsOff(stream);
    const klvutil::StreamExtent extent = klvutil::extentOf(stream);
    std::streampos position = extent.canTell() ? extent.position : 0;
    const InputLocator locator(position);
    std::uint64_t runIn = 0;
    klvutil::reportedStream(errorHandler_, locator, [&] {
        runIn = search(stream, position);
        if (!extent.canSeek()) {
            prefix_.assign(partitionPackPrefix.begin(), partitionPackPrefix.end());
        } else if (!stream.seekg(extent.position + static_cast<std::streamoff>(runIn))) {
            klvutil::fail(errorHandler_, klvutil::findings::unsuccessfulSeek, position);
        }
    });
    if (runIn != 0 && structureHandler_ != nullptr) {
        structureHandler_->runIn(runIn);
    }
    return runIn;
}

/// Reads through the prefix of the key, counting @p position on, and returns the number of octets before it.
std::uint64_t MXFRunInSkipper::search(std::istream& stream, std::streampos& position) const {
    const auto fail = [&](const klvutil::Finding& finding) { klvutil::fail(errorHandler_, finding, position); };
    if (!stream.good()) {
        fail(klvutil::findings::streamNotGood);
    }
    std::uint64_t read = 0;
    std::size_t matched = 0;
    while (matched < partitionPackPrefix.size()) {
        const int octet = stream.get();
        if (octet == std::istream::traits_type::eof()) {
            fail(stream.bad() ? findings::unsuccessfulGet : findings::invalidRunIn);
        }
        ++read;
        position += 1;
        // The first octet occurs nowhere else in the prefix, so a mismatch can only start a new match here.
        if (octet == partitionPackPrefix[matched]) {
            ++matched;
        } else {
            matched = octet == partitionPackPrefix[0] ? 1 : 0;
        }
        if (read - matched > limit_) {
            fail(findings::invalidRunIn);
        }
    }
    return read - matched;
}

} // namespace bryx

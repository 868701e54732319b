#include "klv/internal/StreamAccess.h"

namespace bryx::klvutil {

StreamExtent extentOf(std::istream& stream) {
    std::streambuf* const buffer = stream.rdbuf();
    StreamExtent extent;
    if (buffer == nullptr || !runs([&] { extent.position = buffer->pubseekoff(0, std::ios::cur, std::ios::in); })) {
        return {};
    }
    if (extent.canTell()) {
        std::streamoff end = -1;
        std::streamoff back = -1;
        const bool sought = runs([&] {
            end = buffer->pubseekoff(0, std::ios::end, std::ios::in);
            back = end < 0 ? end : std::streamoff{buffer->pubseekoff(extent.position, std::ios::beg, std::ios::in)};
        });
        extent.end = sought && back == extent.position ? end : std::streamoff{-1};
    }
    return extent;
}

bool atEnd(std::istream& stream) {
    if (stream.good()) {
        stream.peek();
    }
    return stream.rdstate() == std::ios::eofbit;
}

} // namespace bryx::klvutil

#include "klv/internal/StreamAccess.h"

namespace klvutil {

StreamExtent extentOf(std::istream& stream) {
    std::streambuf* const buffer = stream.rdbuf();
    StreamExtent extent;
    const bool asked = buffer != nullptr && runs([&] {
                           const std::streamoff position = buffer->pubseekoff(0, std::ios::cur, std::ios::in);
                           if (position >= 0) {
                               const std::streamoff end = buffer->pubseekoff(0, std::ios::end, std::ios::in);
                               const std::streamoff back = buffer->pubseekpos(position, std::ios::in);
                               if (end >= 0 && back == position) {
                                   extent = {position, end};
                               }
                           }
                       });
    return asked ? extent : StreamExtent{};
}

bool atEnd(std::istream& stream) {
    if (stream.good()) {
        stream.peek();
    }
    return stream.rdstate() == std::ios::eofbit;
}

} // namespace klvutil

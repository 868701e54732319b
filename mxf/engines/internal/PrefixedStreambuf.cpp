#include "mxf/engines/internal/PrefixedStreambuf.h"

#include <algorithm>
#include <utility>

namespace bryx {

PrefixedStreambuf::PrefixedStreambuf(std::string prefix, std::streambuf& rest)
    : prefix_(std::move(prefix)), rest_(rest) {
    setg(prefix_.data(), prefix_.data(), prefix_.data() + prefix_.size());
}

PrefixedStreambuf::int_type PrefixedStreambuf::underflow() {
    return rest_.sgetc();
}

PrefixedStreambuf::int_type PrefixedStreambuf::uflow() {
    return rest_.sbumpc();
}

std::streamsize PrefixedStreambuf::xsgetn(char* to, std::streamsize size) {
    const std::streamsize own = std::min<std::streamsize>(size, egptr() - gptr());
    std::copy(gptr(), gptr() + own, to);
    gbump(static_cast<int>(own));
    return own == size ? own : own + rest_.sgetn(to + own, size - own);
}

} // namespace bryx

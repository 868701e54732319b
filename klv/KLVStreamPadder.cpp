#include "klv/KLVStreamPadder.h"

namespace bryx {

KLVStreamPadder::~KLVStreamPadder() = default;

void KLVStreamPadder::announce(std::uint64_t length) {
    announced_ = length;
    length_ = 0;
}

void KLVStreamPadder::startStream(bool /*accurateLengths*/) {
    start_ = static_cast<std::uint64_t>(std::streamoff{getLocator().streampos()});
    startFilledItem();
}

void KLVStreamPadder::endStream(bool /*stopped*/) {
    endFilledItem();
    length_ = static_cast<std::uint64_t>(std::streamoff{getLocator().streampos()}) - start_;
    util::require(isComplete(), "region is as long as announced");
}

} // namespace bryx

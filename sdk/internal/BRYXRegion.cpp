#include "sdk/internal/BRYXRegion.h"

#include <algorithm>

#include "klv/KLVCoding.h"

namespace bryx {

namespace {

/// The least octets of a fill item with the usual form of its length.
constexpr std::uint64_t leastFill = klvutil::keySize + 4;

} // namespace

bool fitsRegion(std::uint64_t size, std::uint64_t length) {
    return size == length || (size < length && length - size >= leastFill);
}

void prepareRegion(KLVStreamPadder& padder, std::uint64_t size, std::uint64_t space, std::uint64_t kagSize) {
    if (size == 0) {
        padder.setPadding(KLVFiller::Mode::Alignment, kagSize, 0);
        return;
    }
    const std::uint64_t step = std::max<std::uint64_t>(kagSize, 1);
    const auto rounded = [&](std::uint64_t length) { return (length + step - 1) / step * step; };
    const std::uint64_t length = rounded(size + space);
    padder.setPadding(KLVFiller::Mode::FixedLength, kagSize,
                      fitsRegion(size, length) ? length : rounded(size + leastFill));
}

} // namespace bryx

#pragma once

#include <cstdint>

#include "klv/KLVValueTypes.h"

namespace bryx {

/// Whether @p rate is one: positive.
inline bool isRate(const Rational& rate) noexcept {
    return rate.numerator > 0 && rate.denominator > 0;
}

/// Whether two rates are equal in value. Those that are none are equal: what is wrong with them is told by itself.
inline bool isSameRate(const Rational& a, const Rational& b) noexcept {
    return isRate(a) && isRate(b)
               ? std::int64_t{a.numerator} * b.denominator == std::int64_t{b.numerator} * a.denominator
               : !isRate(a) && !isRate(b);
}

/// Whether @p rate is one of pictures, or of other things that go with them, and not of samples of sound.
inline bool isFrameRate(const Rational& rate) noexcept {
    constexpr std::int64_t mostFrames = 240;
    return isRate(rate) && rate.numerator <= mostFrames * rate.denominator;
}

} // namespace bryx

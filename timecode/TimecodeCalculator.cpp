#include "timecode/TimecodeCalculator.h"

#include <limits>
#include <stdexcept>

#include <boost/numeric/conversion/cast.hpp>

#include "timecode/internal/NTSCDropFrameCalculator.h"
#include "timecode/internal/RegularTimecodeCalculator.h"

namespace bryx {

TimecodeCalculator::~TimecodeCalculator() = default;

using util::detail::AnyInteger;
using util::detail::anyInteger;

namespace {

void require(bool holds, const char* condition) {
    if (!holds) {
        throw std::runtime_error(condition);
    }
}

/// A frame rate in 8 bits.
std::uint8_t inRange(std::uint64_t frameRate) {
    require(frameRate != 0 && frameRate <= std::numeric_limits<std::uint8_t>::max(), "non-zero frame rate");
    return static_cast<std::uint8_t>(frameRate);
}

} // namespace

std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(std::uint8_t frameRate, bool dropFrame,
                                                             std::uint8_t subFrames) {
    require(frameRate != 0, "non-zero frame rate");
    const std::uint8_t atLeastOne = subFrames == 0 ? std::uint8_t{1} : subFrames;
    if (!dropFrame) {
        return std::make_unique<RegularTimecodeCalculator>(frameRate, atLeastOne);
    }
    require(frameRate % 30 == 0, "valid drop frame rate");
    return std::make_unique<NTSCDropFrameCalculator>(frameRate, atLeastOne);
}

std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(std::uint8_t frameRate, bool dropFrame,
                                                             bool twoSubFrames) {
    return createTimecodeCalculator(frameRate, dropFrame, twoSubFrames ? std::uint8_t{2} : std::uint8_t{1});
}

std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(int numerator, int denominator) {
    return util::detail::createTimecodeCalculator(anyInteger(numerator), anyInteger(denominator));
}

std::unique_ptr<TimecodeCalculator> util::detail::createTimecodeCalculator(AnyInteger frameRate, bool dropFrame,
                                                                           AnyInteger subFrames) {
    require(!frameRate.isNegative, "positive frame rate");
    const std::uint8_t rate = inRange(frameRate.magnitude);
    if (subFrames.isNegative) {
        throw boost::numeric::negative_overflow();
    }
    return ::createTimecodeCalculator(rate, dropFrame, boost::numeric_cast<std::uint8_t>(subFrames.magnitude));
}

std::unique_ptr<TimecodeCalculator> util::detail::createTimecodeCalculator(AnyInteger numerator,
                                                                           AnyInteger denominator) {
    const std::uint64_t n = numerator.magnitude;
    const std::uint64_t d = denominator.magnitude;
    require(d != 0, "non-zero frame rate denominator");
    require(n != 0, "non-zero frame rate");
    require(numerator.isNegative == denominator.isNegative, "positive frame rate");
    // A multiple of 30000/1001 is counted at as many times 30.
    const bool dropFrame = n % d != 0 && n % 30000 == 0 && d % 1001 == 0 && (n / 30000) % (d / 1001) == 0;
    if (dropFrame) {
        const std::uint64_t times = (n / 30000) / (d / 1001);
        return std::make_unique<NTSCDropFrameCalculator>(inRange(times * 30), std::uint8_t{1});
    }
    const std::uint64_t rounded = n / d + (n % d >= d - d / 2 ? 1 : 0);
    return std::make_unique<RegularTimecodeCalculator>(inRange(rounded), std::uint8_t{1});
}

} // namespace bryx

#include "timecode/TimecodeCalculator.h"

#include <stdexcept>

#include "timecode/internal/NTSCDropFrameCalculator.h"
#include "timecode/internal/RegularTimecodeCalculator.h"

TimecodeCalculator::~TimecodeCalculator() = default;

namespace {

void require(bool holds, const char* condition) {
    if (!holds) {
        throw std::runtime_error(condition);
    }
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
    require(denominator != 0, "non-zero frame rate denominator");
    require(numerator != 0, "non-zero frame rate");
    require((numerator > 0) == (denominator > 0), "positive frame rate");
    const std::int64_t n = numerator;
    const std::int64_t d = denominator;
    const bool whole = n % d == 0;
    const bool dropFrame = !whole && n % 30000 == 0 && d % 1001 == 0 && (n / 30000) % (d / 1001) == 0;
    const std::int64_t rate = whole ? n / d : dropFrame ? (n * 1001) / (d * 1000) : (n + d / 2) / d;
    const auto frameRate = static_cast<std::uint8_t>(rate);
    require(frameRate != 0, "non-zero frame rate");
    if (dropFrame) {
        return std::make_unique<NTSCDropFrameCalculator>(frameRate, std::uint8_t{1});
    }
    return std::make_unique<RegularTimecodeCalculator>(frameRate, std::uint8_t{1});
}

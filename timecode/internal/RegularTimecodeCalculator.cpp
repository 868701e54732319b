#include "timecode/internal/RegularTimecodeCalculator.h"

#include <stdexcept>

#include <boost/numeric/conversion/cast.hpp>

namespace bryx {

void RegularTimecodeCalculator::toTimecode(std::uint32_t count, std::uint8_t& hours, std::uint8_t& minutes,
                                           std::uint8_t& seconds, std::uint8_t& frames, std::uint8_t* subFrame) const {
    const std::uint32_t frame = count / subFrames_;
    const std::uint32_t second = frame / framesPerSecond_;
    hours = static_cast<std::uint8_t>(second / 3600);
    minutes = static_cast<std::uint8_t>(second / 60 % 60);
    seconds = static_cast<std::uint8_t>(second % 60);
    frames = static_cast<std::uint8_t>(frame % framesPerSecond_);
    if (subFrame != nullptr) {
        *subFrame = static_cast<std::uint8_t>(count % subFrames_);
    }
}

std::uint32_t RegularTimecodeCalculator::toFrames(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds,
                                                  std::uint8_t frames, std::uint8_t subFrame) const {
    if (!isValidTimecode(hours, minutes, seconds, frames, subFrame)) {
        throw std::runtime_error("valid timecode");
    }
    const std::uint64_t second = (hours * 60ULL + minutes) * 60 + seconds;
    return boost::numeric_cast<std::uint32_t>((second * framesPerSecond_ + frames) * subFrames_ + subFrame);
}

bool RegularTimecodeCalculator::isValidTimecode(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds,
                                                std::uint8_t frames, std::uint8_t subFrame) const {
    return isInRange(hours, minutes, seconds, frames, subFrame);
}

bool RegularTimecodeCalculator::isInRange(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds,
                                          std::uint8_t frames, std::uint8_t subFrame) const {
    return hours < 24 && minutes < 60 && seconds < 60 && frames < framesPerSecond_ && subFrame < subFrames_;
}

std::uint64_t RegularTimecodeCalculator::normalise(std::int32_t count) const {
    const auto day = static_cast<std::int64_t>(getFramesPerDay());
    std::int64_t result = count % day;
    if (result < 0) {
        result += day;
    }
    if (result < 0) {
        throw std::logic_error("positive result");
    }
    return static_cast<std::uint64_t>(result);
}

std::uint64_t RegularTimecodeCalculator::getFramesPerDay() const {
    return std::uint64_t{framesPerSecond_} * 86400 * subFrames_;
}

} // namespace bryx

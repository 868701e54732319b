#include "timecode/internal/NTSCDropFrameCalculator.h"

#include <stdexcept>

#include <boost/numeric/conversion/cast.hpp>

namespace bryx {

NTSCDropFrameCalculator::NTSCDropFrameCalculator(std::uint8_t framesPerSecond, std::uint8_t subFrames)
    : RegularTimecodeCalculator(framesPerSecond, subFrames), subFrames_(subFrames),
      dropped_(std::int64_t{framesPerSecond} / 30 * 2), framesPerSecond_(framesPerSecond),
      framesPerMinute_(framesPerSecond_ * 60 - dropped_), framesPerTenMinutes_(10 * framesPerMinute_ + dropped_) {}

void NTSCDropFrameCalculator::toTimecode(std::uint32_t count, std::uint8_t& hours, std::uint8_t& minutes,
                                         std::uint8_t& seconds, std::uint8_t& frames, std::uint8_t* subFrame) const {
    const std::int64_t frame = count / subFrames_;
    const std::int64_t block = frame / framesPerTenMinutes_;
    // The first minute of ten has all its labels; counting from behind them makes all ten minutes of equal length.
    const std::int64_t rest = frame % framesPerTenMinutes_ - dropped_;
    const std::int64_t minute = rest / framesPerMinute_;
    const std::int64_t label = dropped_ + rest % framesPerMinute_;
    hours = static_cast<std::uint8_t>(block / 6);
    minutes = static_cast<std::uint8_t>(block % 6 * 10 + minute);
    seconds = static_cast<std::uint8_t>(label / framesPerSecond_);
    frames = static_cast<std::uint8_t>(label % framesPerSecond_);
    if (subFrame != nullptr) {
        *subFrame = static_cast<std::uint8_t>(count % subFrames_);
    }
}

std::uint32_t NTSCDropFrameCalculator::toFrames(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds,
                                                std::uint8_t frames, std::uint8_t subFrame) const {
    if (!isInRange(hours, minutes, seconds, frames, subFrame)) {
        throw std::runtime_error("valid timecode");
    }
    const std::int64_t minute = minutes % 10;
    std::int64_t count = (hours * 6 + minutes / 10) * framesPerTenMinutes_ + minute * framesPerMinute_ +
                         seconds * framesPerSecond_ + frames;
    if (seconds == 0 && minute != 0 && frames < dropped_) {
        count += dropped_ - frames;
    }
    return boost::numeric_cast<std::uint32_t>(count * subFrames_ + subFrame);
}

bool NTSCDropFrameCalculator::isValidTimecode(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds,
                                              std::uint8_t frames, std::uint8_t subFrame) const {
    return isInRange(hours, minutes, seconds, frames, subFrame) &&
           (minutes % 10 == 0 || seconds != 0 || frames >= dropped_);
}

std::uint64_t NTSCDropFrameCalculator::getFramesPerDay() const {
    return static_cast<std::uint64_t>(framesPerTenMinutes_ * 144 * subFrames_);
}

} // namespace bryx

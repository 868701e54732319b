#pragma once

#include "timecode/TimecodeCalculator.h"

namespace bryx {

/// Counts every label, at a whole number of frames a second.
class RegularTimecodeCalculator : public TimecodeCalculator {
public:
    RegularTimecodeCalculator(std::uint8_t framesPerSecond, std::uint8_t subFrames)
        : subFrames_(subFrames), framesPerSecond_(framesPerSecond) {}

    void toTimecode(std::uint32_t count, std::uint8_t& hours, std::uint8_t& minutes, std::uint8_t& seconds,
                    std::uint8_t& frames, std::uint8_t* subFrame) const override;
    std::uint32_t toFrames(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                           std::uint8_t subFrame) const override;
    bool isValidTimecode(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                         std::uint8_t subFrame) const override;
    bool isInRange(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                   std::uint8_t subFrame) const override;
    std::uint64_t normalise(std::int32_t count) const override;
    std::uint64_t getFramesPerDay() const override;

private:
    std::uint32_t subFrames_;
    std::uint32_t framesPerSecond_;
};

} // namespace bryx

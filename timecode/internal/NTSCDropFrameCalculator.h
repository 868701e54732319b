#pragma once

#include "timecode/internal/RegularTimecodeCalculator.h"

namespace bryx {

/// Drops the first labels of every minute but each tenth, so that a nominal rate of 30 frames a second, or a multiple,
/// follows 30000/1001 Hz (ST 12-1).
class NTSCDropFrameCalculator : public RegularTimecodeCalculator {
public:
    /// @p framesPerSecond is a multiple of 30.
    NTSCDropFrameCalculator(std::uint8_t framesPerSecond, std::uint8_t subFrames);

    void toTimecode(std::uint32_t count, std::uint8_t& hours, std::uint8_t& minutes, std::uint8_t& seconds,
                    std::uint8_t& frames, std::uint8_t* subFrame) const override;
    std::uint32_t toFrames(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                           std::uint8_t subFrame) const override;
    bool isValidTimecode(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                         std::uint8_t subFrame) const override;
    std::uint64_t getFramesPerDay() const override;

private:
    std::int64_t subFrames_;
    std::int64_t dropped_; ///< labels in each minute that drops any
    std::int64_t framesPerSecond_;
    std::int64_t framesPerMinute_; ///< in a minute that drops labels
    std::int64_t framesPerTenMinutes_;
};

} // namespace bryx

#pragma once

#include <cstdint>
#include <memory>

#include "util/Api.h"

/// Converts between frame counts and timecodes (ST 12-1): labels of hours, minutes, seconds and frames, and optionally
/// a part of a frame.
///
/// A frame count is in sub-frames: frames times the sub-frames per frame, which is 1 unless said otherwise. Calculators
/// hold no state and may be shared by threads. They are made by createTimecodeCalculator.
class BRYX_API TimecodeCalculator {
public:
    virtual ~TimecodeCalculator();

    /// The label of @p count. Hours are not wrapped: a count beyond one day gives 24 hours or more, kept in 8 bits.
    /// @param[out] subFrame may be null
    virtual void toTimecode(std::uint32_t count, std::uint8_t& hours, std::uint8_t& minutes, std::uint8_t& seconds,
                            std::uint8_t& frames, std::uint8_t* subFrame = nullptr) const = 0;

    /// The frame count of a label. With drop-frame counting, a label that is dropped gives the first frame of its
    /// minute.
    /// @throws std::runtime_error "valid timecode" for fields out of range; boost::numeric::positive_overflow for a
    ///     count beyond 32 bits, which takes more than 49,000 sub-frames a second
    virtual std::uint32_t toFrames(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                                   std::uint8_t subFrame = 0) const = 0;

    /// Whether the label exists in this counting.
    virtual bool isValidTimecode(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                                 std::uint8_t subFrame = 0) const = 0;

    /// Whether each field is within its range; a label that drop-frame counting drops is.
    virtual bool isInRange(std::uint8_t hours, std::uint8_t minutes, std::uint8_t seconds, std::uint8_t frames,
                           std::uint8_t subFrame = 0) const = 0;

    /// @p count wrapped into one day: a negative one counts back from midnight.
    virtual std::uint64_t normalise(std::int32_t count) const = 0;

    /// The frame count of one day.
    virtual std::uint64_t getFramesPerDay() const = 0;
};

/// A calculator for @p frameRate frames a second.
/// @param dropFrame whether labels are dropped to follow 30000/1001 Hz or a multiple of it
/// @param subFrames sub-frames per frame; 0 means 1
/// @throws std::runtime_error "non-zero frame rate"; "valid drop frame rate" unless a drop-frame rate is a multiple
///     of 30
BRYX_API std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(std::uint8_t frameRate, bool dropFrame,
                                                                      std::uint8_t subFrames);

/// The same with two sub-frames per frame, or one.
BRYX_API std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(std::uint8_t frameRate, bool dropFrame,
                                                                      bool twoSubFrames);

/// A calculator for the edit rate @p numerator / @p denominator in hertz: drop-frame counting for 30000/1001 and its
/// multiples, regular counting at the nearest whole rate for all others. The whole rate is kept in 8 bits.
/// @throws std::runtime_error "non-zero frame rate denominator", "non-zero frame rate" (also where the whole rate in
///     8 bits is 0), "positive frame rate" unless both have the same sign
BRYX_API std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(int numerator, int denominator);

/// A rate and a flag alone would be taken for a numerator and a denominator: say how many sub-frames, as in
/// `createTimecodeCalculator(30, true, false)` or `createTimecodeCalculator(25, false, std::uint8_t{4})`.
std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(int frameRate, bool dropFrame) = delete;

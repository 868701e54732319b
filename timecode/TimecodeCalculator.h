#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>

#include "util/Api.h"

namespace bryx {

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
/// @throws std::runtime_error "non-zero frame rate denominator", "non-zero frame rate" (also where the whole rate is 0, or
///     more than 8 bits hold), "positive frame rate" unless both have the same sign
BRYX_API std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(int numerator, int denominator);

/// A rate and a flag alone would be taken for a numerator and a denominator: say how many sub-frames, as in
/// `createTimecodeCalculator(30, true, false)` or `createTimecodeCalculator(25, false, 4)`.
std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(int frameRate, bool dropFrame) = delete;

namespace util::detail {

/// The value of an integer of any type.
struct AnyInteger {
    bool isNegative;
    std::uint64_t magnitude;
};

template <class Integer>
constexpr AnyInteger anyInteger(Integer value) noexcept {
    if constexpr (std::is_signed_v<Integer>) {
        if (value < 0) {
            return {true, std::uint64_t{0} - static_cast<std::uint64_t>(value)};
        }
    }
    return {false, static_cast<std::uint64_t>(value)};
}

template <class Type>
inline constexpr bool isNumber = std::is_integral_v<Type> && !std::is_same_v<Type, bool>;

BRYX_API std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(AnyInteger numerator, AnyInteger denominator);
BRYX_API std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(AnyInteger frameRate, bool dropFrame,
                                                                      AnyInteger subFrames);

} // namespace util::detail

/// The same for integers of any type, whose values count as they are.
template <class Numerator, class Denominator,
          std::enable_if_t<util::detail::isNumber<Numerator> && util::detail::isNumber<Denominator>, int> = 0>
std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(Numerator numerator, Denominator denominator) {
    return util::detail::createTimecodeCalculator(util::detail::anyInteger(numerator),
                                                  util::detail::anyInteger(denominator));
}

/// A calculator for a frame rate, where the numbers are integers of any type; @p subFrames is a number of sub-frames, or
/// a flag for two of them.
/// @throws std::runtime_error as above, where "non-zero frame rate" is also that of one that more than 8 bits hold, and
///     "positive frame rate" that of a negative one; boost::numeric::bad_numeric_cast if there are more sub-frames than
///     8 bits hold, or fewer than none
template <class FrameRate, class SubFrames,
          std::enable_if_t<util::detail::isNumber<FrameRate> && std::is_integral_v<SubFrames>, int> = 0>
std::unique_ptr<TimecodeCalculator> createTimecodeCalculator(FrameRate frameRate, bool dropFrame, SubFrames subFrames) {
    using util::detail::anyInteger;
    if constexpr (std::is_same_v<SubFrames, bool>) {
        return createTimecodeCalculator(frameRate, dropFrame, subFrames ? 2 : 1);
    } else {
        return util::detail::createTimecodeCalculator(anyInteger(frameRate), dropFrame, anyInteger(subFrames));
    }
}

} // namespace bryx

#include "mxf/essence/MXFSystemMetadataPack.h"

#include <algorithm>
#include <iterator>

namespace bryx {

namespace {

/// Content packages a second by the code in the rate octet above its lowest bit, which divides them by 1.001.
constexpr std::int32_t rates[] = {0, 24, 25, 30, 48, 50, 60, 72, 75, 90, 96, 100, 120};

// Octets of a timecode stamp.
enum : std::size_t { framesOctet, secondsOctet, minutesOctet, hoursOctet };

constexpr std::uint8_t dropFrameFlag = 0x40;
constexpr std::uint8_t fieldMark = 0x80;

bool sharesLabels(unsigned framesPerSecond) {
    return framesPerSecond == 48 || framesPerSecond == 50 || framesPerSecond == 60;
}

/// ST 12-1 puts the field mark elsewhere in systems of 25 frames a second.
std::size_t fieldMarkOctet(unsigned framesPerSecond) {
    return framesPerSecond == 50 ? hoursOctet : secondsOctet;
}

/// The number that the two decimal digits in @p octet, without the bits that are not of @p mask, stand for; at least
/// 255 if they are none.
unsigned decimal(std::uint8_t octet, unsigned mask) {
    const unsigned digits = octet & mask;
    const unsigned ones = digits & 0x0FU;
    return ones < 10 ? digits / 16 * 10 + ones : 255;
}

std::uint8_t digits(unsigned number) {
    return static_cast<std::uint8_t>(number / 10 * 16 + number % 10);
}

} // namespace

MXFTimecodeStamp::MXFTimecodeStamp(const Timecode& timecode, unsigned framesPerSecond) {
    const bool shares = sharesLabels(framesPerSecond);
    octets[framesOctet] = digits(shares ? timecode.frames / 2U : timecode.frames);
    octets[secondsOctet] = digits(timecode.seconds);
    octets[minutesOctet] = digits(timecode.minutes);
    octets[hoursOctet] = digits(timecode.hours);
    if (timecode.dropFrame) {
        octets[framesOctet] |= dropFrameFlag;
    }
    if (shares && timecode.frames % 2 != 0) {
        octets[fieldMarkOctet(framesPerSecond)] |= fieldMark;
    }
}

boost::optional<Timecode> MXFTimecodeStamp::timecode(unsigned framesPerSecond) const {
    unsigned frames = decimal(octets[framesOctet], 0x3F);
    const unsigned seconds = decimal(octets[secondsOctet], 0x7F);
    const unsigned minutes = decimal(octets[minutesOctet], 0x7F);
    const unsigned hours = decimal(octets[hoursOctet], 0x3F);
    if (frames >= 255 || seconds >= 60 || minutes >= 60 || hours >= 24) {
        return boost::none;
    }
    if (sharesLabels(framesPerSecond)) {
        frames = 2 * frames + ((octets[fieldMarkOctet(framesPerSecond)] & fieldMark) != 0 ? 1 : 0);
    }
    return Timecode{static_cast<std::uint8_t>(hours), static_cast<std::uint8_t>(minutes),
                    static_cast<std::uint8_t>(seconds), static_cast<std::uint8_t>(frames),
                    (octets[framesOctet] & dropFrameFlag) != 0};
}

namespace mxfutil {

boost::optional<Rational> packageRate(std::uint8_t rate) {
    const unsigned code = rate / 2U;
    if (code == 0 || code >= std::size(rates)) {
        return boost::none;
    }
    return rate % 2 == 0 ? Rational{rates[code], 1} : Rational{rates[code] * 1000, 1001};
}

boost::optional<std::uint8_t> packageRateCode(const Rational& rate) {
    for (unsigned code = 2; code < 2 * std::size(rates); ++code) {
        const auto known = packageRate(static_cast<std::uint8_t>(code));
        if (std::int64_t{rate.numerator} * known->denominator == std::int64_t{known->numerator} * rate.denominator &&
            rate.denominator != 0) {
            return static_cast<std::uint8_t>(code);
        }
    }
    return boost::none;
}

boost::optional<Timecode> stampTimecode(const MXFSystemMetadataPack& pack, const MXFDateTimeStamp& stamp) {
    if (stamp.type != MXFDateTimeStamp::timecodeType) {
        return boost::none;
    }
    const unsigned code = pack.rate / 2U;
    return stamp.stamp.timecode(code < std::size(rates) ? static_cast<unsigned>(rates[code]) : 0);
}

} // namespace mxfutil

} // namespace bryx

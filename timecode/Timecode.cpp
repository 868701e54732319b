#include "timecode/Timecode.h"

namespace bryx {

std::string toString(const Timecode& timecode) {
    const auto twoDigits = [](unsigned value) { return (value < 10 ? "0" : "") + std::to_string(value); };
    return twoDigits(timecode.hours) + ":" + twoDigits(timecode.minutes) + ":" + twoDigits(timecode.seconds) +
           (timecode.dropFrame ? ";" : ":") + twoDigits(timecode.frames);
}

} // namespace bryx

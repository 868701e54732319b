#pragma once

#include <cstdint>
#include <string>

#include "util/Api.h"

namespace bryx {

/// The label of a frame (ST 12-1).
struct Timecode {
    std::uint8_t hours = 0;
    std::uint8_t minutes = 0;
    std::uint8_t seconds = 0;
    std::uint8_t frames = 0;
    bool dropFrame = false; ///< whether labels are dropped to follow 30000/1001 Hz or a multiple of it

    friend bool operator==(const Timecode& a, const Timecode& b) noexcept {
        return a.hours == b.hours && a.minutes == b.minutes && a.seconds == b.seconds && a.frames == b.frames &&
               a.dropFrame == b.dropFrame;
    }
    friend bool operator!=(const Timecode& a, const Timecode& b) noexcept { return !(a == b); }
};

/// Such as "10:11:12:13", with a semicolon before the frames if labels are dropped.
BRYX_API std::string toString(const Timecode& timecode);

} // namespace bryx

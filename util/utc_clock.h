#pragma once

#include <ctime>

#include "util/Api.h"

namespace bryx::util {

/// A time of day in UTC, broken down.
struct UTCTime {
    std::tm calendar{};   ///< years since 1900, months from 0
    int milliseconds = 0; ///< 0 to 999
};

/// The current time of the system's clock.
BRYX_API UTCTime currentUTCTime();

} // namespace bryx::util

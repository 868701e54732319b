#include "util/utc_clock.h"

#include <chrono>

namespace bryx::util {

UTCTime currentUTCTime() {
    using namespace std::chrono;
    const system_clock::time_point now = system_clock::now();
    const auto second = time_point_cast<seconds>(now);
    const std::time_t time = system_clock::to_time_t(second);
    UTCTime result;
#if defined(_WIN32)
    gmtime_s(&result.calendar, &time);
#else
    gmtime_r(&time, &result.calendar);
#endif
    result.milliseconds = static_cast<int>(duration_cast<milliseconds>(now - second).count());
    return result;
}

} // namespace bryx::util

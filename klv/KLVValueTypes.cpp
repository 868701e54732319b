#include "klv/KLVValueTypes.h"

#include <cstdio>

#include "util/hex.h"
#include "util/utc_clock.h"
#include "util/uuid.h"

namespace bryx {

std::string toString(const MXFUID& uid) {
    return util::toString(util::uuid{uid.octets});
}

std::string toString(const UMID& umid) {
    return "urn:smpte:umid:" + util::hexGroups(umid.octets.data(), umid.octets.size());
}

std::string toString(const Rational& rational) {
    return std::to_string(rational.numerator) + "/" + std::to_string(rational.denominator);
}

std::string toString(const MXFTimestamp& t) {
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02u:%02u:%02u.%03uZ", t.year, t.month, t.day, t.hour, t.minute,
                  t.second, 4U * t.quarterMilli);
    return text;
}

std::tm klvutil::toCalendarTime(const MXFTimestamp& timestamp) {
    std::tm time{};
    time.tm_year = timestamp.year - 1900;
    time.tm_mon = timestamp.month - 1;
    time.tm_mday = timestamp.day;
    time.tm_hour = timestamp.hour;
    time.tm_min = timestamp.minute;
    time.tm_sec = timestamp.second;
    time.tm_isdst = 0;
    return time;
}

MXFTimestamp klvutil::currentTimestamp() {
    const util::UTCTime now = util::currentUTCTime();
    MXFTimestamp result;
    result.year = static_cast<std::int16_t>(now.calendar.tm_year + 1900);
    result.month = static_cast<std::uint8_t>(now.calendar.tm_mon + 1);
    result.day = static_cast<std::uint8_t>(now.calendar.tm_mday);
    result.hour = static_cast<std::uint8_t>(now.calendar.tm_hour);
    result.minute = static_cast<std::uint8_t>(now.calendar.tm_min);
    result.second = static_cast<std::uint8_t>(now.calendar.tm_sec > 59 ? 59 : now.calendar.tm_sec); // a leap second
    result.quarterMilli = static_cast<std::uint8_t>(now.milliseconds / 4);
    return result;
}

std::string toString(const MXFProductVersion& version) {
    std::string text;
    MXFProductVersion::fields(version, [&](const char*, auto number) {
        text += (text.empty() ? "" : ".") + std::to_string(static_cast<unsigned>(number));
    });
    return text;
}

} // namespace bryx

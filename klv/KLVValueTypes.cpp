#include "klv/KLVValueTypes.h"

#include <cstdio>

#include "util/hex.h"
#include "util/uuid.h"

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

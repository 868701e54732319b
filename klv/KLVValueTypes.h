#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <string>
#include <tuple>
#include <utility>

#include "util/Api.h"
#include "util/byte_order.h"

/// @file
/// Values that the sets, packs and tables of a file hold (ST 377-1 §4, ST 330).

namespace bryx {

/// A 16-octet identifier: instance UIDs, generation UIDs, link identifiers. All octets take part in comparisons.
struct MXFUID {
    std::array<std::uint8_t, 16> octets{};

    friend bool operator==(const MXFUID& a, const MXFUID& b) noexcept { return a.halves() == b.halves(); }
    friend bool operator!=(const MXFUID& a, const MXFUID& b) noexcept { return !(a == b); }
    friend bool operator<(const MXFUID& a, const MXFUID& b) noexcept { return a.halves() < b.halves(); }

private:
    /// Two numbers that order as the octets do.
    std::pair<std::uint64_t, std::uint64_t> halves() const noexcept {
        return {util::loadBigEndian<std::uint64_t>(&octets[0]), util::loadBigEndian<std::uint64_t>(&octets[8])};
    }
};

/// "urn:uuid:" and the 8-4-4-4-12 form.
BRYX_API std::string toString(const MXFUID& uid);

/// A basic unique material identifier of 32 octets (ST 330), copied and compared whole.
struct UMID {
    std::array<std::uint8_t, 32> octets{};

    friend bool operator==(const UMID& a, const UMID& b) noexcept { return a.octets == b.octets; }
    friend bool operator!=(const UMID& a, const UMID& b) noexcept { return !(a == b); }
    friend bool operator<(const UMID& a, const UMID& b) noexcept { return a.octets < b.octets; }
};

/// "urn:smpte:umid:" and eight groups of eight hexadecimal digits.
BRYX_API std::string toString(const UMID& umid);

/// A fraction, such as an edit rate in hertz.
struct Rational {
    std::int32_t numerator = 0;
    std::int32_t denominator = 0;

    /// Visits the fields in their order on the wire.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("numerator", self.numerator);
        visit("denominator", self.denominator);
    }

    /// Compares the fields, not the value: 1/2 and 2/4 differ.
    friend bool operator==(const Rational& a, const Rational& b) noexcept {
        return a.numerator == b.numerator && a.denominator == b.denominator;
    }
    friend bool operator!=(const Rational& a, const Rational& b) noexcept { return !(a == b); }
};

/// The numerator, "/" and the denominator.
BRYX_API std::string toString(const Rational& rational);

/// A UTC date and time as stored in a property. All zero means unknown.
struct MXFTimestamp {
    std::int16_t year = 0;
    std::uint8_t month = 0;        ///< 1 to 12
    std::uint8_t day = 0;          ///< 1 to 31
    std::uint8_t hour = 0;         ///< 0 to 23
    std::uint8_t minute = 0;       ///< 0 to 59
    std::uint8_t second = 0;       ///< 0 to 59
    std::uint8_t quarterMilli = 0; ///< units of 4 ms, 0 to 249

    /// Visits the fields in their order on the wire.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("year", self.year);
        visit("month", self.month);
        visit("day", self.day);
        visit("hour", self.hour);
        visit("minute", self.minute);
        visit("second", self.second);
        visit("quarterMilli", self.quarterMilli);
    }

    friend bool operator==(const MXFTimestamp& a, const MXFTimestamp& b) noexcept { return a.tie() == b.tie(); }
    friend bool operator!=(const MXFTimestamp& a, const MXFTimestamp& b) noexcept { return !(a == b); }

private:
    std::tuple<std::int16_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t>
    tie() const noexcept {
        return {year, month, day, hour, minute, second, quarterMilli};
    }
};

/// ISO 8601 with milliseconds, as in "2014-03-07T10:20:30.200Z".
BRYX_API std::string toString(const MXFTimestamp& timestamp);

namespace klvutil {

/// The broken-down calendar time of @p timestamp: years since 1900, months from 0, no daylight saving. The
/// sub-second part is dropped; day of the week and of the year are left 0.
BRYX_API std::tm toCalendarTime(const MXFTimestamp& timestamp);

/// The current time of the system's clock, in UTC.
BRYX_API MXFTimestamp currentTimestamp();

} // namespace klvutil

/// A product version (ST 377-1).
struct MXFProductVersion {
    /// How far the product has come.
    enum class Release : std::uint16_t {
        Unknown = 0,
        Released = 1,
        Development = 2,
        Patched = 3,
        Beta = 4,
        PrivateBuild = 5
    };

    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    std::uint16_t patch = 0;
    std::uint16_t build = 0;
    Release release = Release::Unknown;

    /// Visits the fields in their order on the wire.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("major", self.major);
        visit("minor", self.minor);
        visit("patch", self.patch);
        visit("build", self.build);
        visit("release", self.release);
    }

    friend bool operator==(const MXFProductVersion& a, const MXFProductVersion& b) noexcept {
        return a.major == b.major && a.minor == b.minor && a.patch == b.patch && a.build == b.build &&
               a.release == b.release;
    }
    friend bool operator!=(const MXFProductVersion& a, const MXFProductVersion& b) noexcept { return !(a == b); }
};

/// The five numbers with points between them, as in "4.15.0.143.1".
BRYX_API std::string toString(const MXFProductVersion& version);

} // namespace bryx

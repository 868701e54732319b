#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "util/Api.h"

namespace bryx::util {

/// A 16-octet identifier (RFC 4122 octet order). The library uses it to name kinds of findings.
struct uuid {
    std::array<std::uint8_t, 16> octets{};
};

inline bool operator==(const uuid& a, const uuid& b) noexcept {
    return a.octets == b.octets;
}
inline bool operator!=(const uuid& a, const uuid& b) noexcept {
    return !(a == b);
}
inline bool operator<(const uuid& a, const uuid& b) noexcept {
    return a.octets < b.octets;
}

/// The text form with "urn:uuid:" in front, as in "urn:uuid:6ba7b810-9dad-11d1-80b4-00c04fd430c8".
BRYX_API std::string toString(const uuid& id);

} // namespace bryx::util

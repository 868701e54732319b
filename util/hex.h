#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "util/Api.h"

namespace bryx::util {

/// Appends @p size octets as lower-case hexadecimal digits, two an octet.
BRYX_API void appendHex(std::string& text, const std::uint8_t* octets, std::size_t size);

/// Hexadecimal digits of @p size octets in groups of eight, with points between the groups; the last
/// group may be shorter.
BRYX_API std::string hexGroups(const std::uint8_t* octets, std::size_t size);

} // namespace bryx::util

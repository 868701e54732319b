#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bryx::util {

/// Adds @p size octets to the end of @p octets. Out of line, since the growth of a vector is much code, which would slow
/// down what stands around the call.
void append(std::vector<std::uint8_t>& octets, const std::uint8_t* data, std::size_t size);

} // namespace bryx::util

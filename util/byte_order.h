#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// @file
/// The one home of big-endian access: every multi-octet field of KLV and MXF is stored most significant octet first.

namespace util {

/// Reads a big-endian integer of sizeof(Integer) octets.
template <class Integer>
constexpr Integer loadBigEndian(const std::uint8_t* from) noexcept {
    using Unsigned = std::make_unsigned_t<Integer>;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Integer); ++i) {
        value = (value << 8U) | from[i];
    }
    return static_cast<Integer>(static_cast<Unsigned>(value));
}

/// Writes the low @p octets octets of @p value big-endian; @p octets is at most 8.
constexpr void storeBigEndian(std::uint8_t* to, std::uint64_t value, std::size_t octets) noexcept {
    for (std::size_t i = octets; i > 0; --i) {
        to[i - 1] = static_cast<std::uint8_t>(value & 0xFFU);
        value >>= 8U;
    }
}

} // namespace util

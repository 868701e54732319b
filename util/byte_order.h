#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "util/Api.h"

/// @file
/// The one home of big-endian access: every multi-octet field of KLV and MXF is stored most significant octet first.

namespace bryx::util {

namespace detail {

// One expression, which compilers make one load of; they do not of a loop.
template <std::size_t... i>
constexpr std::uint64_t joinOctets(const std::uint8_t* from, std::index_sequence<i...> /*octets*/) noexcept {
    return ((std::uint64_t{from[i]} << (8 * (sizeof...(i) - 1 - i))) | ...);
}

} // namespace detail

/// Reads a big-endian integer of sizeof(Integer) octets.
template <class Integer>
constexpr Integer loadBigEndian(const std::uint8_t* from) noexcept {
    using Unsigned = std::make_unsigned_t<Integer>;
    return static_cast<Integer>(
        static_cast<Unsigned>(detail::joinOctets(from, std::make_index_sequence<sizeof(Integer)>())));
}

/// Reads a big-endian integer of @p octets octets, 1 to 8, where 8 can be read.
constexpr std::uint64_t loadLeadingOctets(const std::uint8_t* from, unsigned octets) noexcept {
    return loadBigEndian<std::uint64_t>(from) >> (8 * (sizeof(std::uint64_t) - octets));
}

/// Writes the low @p octets octets of @p value big-endian; @p octets is at most 8.
constexpr void storeBigEndian(std::uint8_t* to, std::uint64_t value, std::size_t octets) noexcept {
    for (std::size_t i = octets; i > 0; --i) {
        to[i - 1] = static_cast<std::uint8_t>(value & 0xFFU);
        value >>= 8U;
    }
}

} // namespace bryx::util

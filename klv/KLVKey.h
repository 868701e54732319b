#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "util/Api.h"
#include "util/byte_order.h"

namespace bryx {

/// A 16-octet SMPTE Universal Label (ST 298), in file order: the key of a KLV triplet (ST 336) or a label held as a
/// value.
///
/// Keys are ordered and compared over octets 0 to 6 and 8 to 15, as unsigned octets. Octet 7, the version of the
/// register, takes no part: labels that differ in it alone are one and the same for every look-up in the library.
struct KLVKey {
    std::array<std::uint8_t, 16> octets{};

    constexpr std::uint8_t operator[](std::size_t index) const { return octets[index]; }
    constexpr std::uint8_t& operator[](std::size_t index) { return octets[index]; }
};

namespace klvutil::detail {

/// The octets of a key that take part in comparisons, as two numbers that order as the octets do.
constexpr std::uint64_t firstOctets(const KLVKey& key) noexcept {
    return util::loadBigEndian<std::uint64_t>(&key.octets[0]) >> 8U;
}
constexpr std::uint64_t lastOctets(const KLVKey& key) noexcept {
    return util::loadBigEndian<std::uint64_t>(&key.octets[8]);
}

} // namespace klvutil::detail

inline bool operator==(const KLVKey& a, const KLVKey& b) noexcept {
    // The last octets tell most keys apart.
    return std::memcmp(&a.octets[8], &b.octets[8], 8) == 0 && std::memcmp(&a.octets[0], &b.octets[0], 7) == 0;
}
inline bool operator!=(const KLVKey& a, const KLVKey& b) noexcept {
    return !(a == b);
}
inline bool operator<(const KLVKey& a, const KLVKey& b) noexcept {
    using namespace klvutil::detail;
    const std::uint64_t first = firstOctets(a);
    const std::uint64_t otherFirst = firstOctets(b);
    return first != otherFirst ? first < otherFirst : lastOctets(a) < lastOctets(b);
}

/// "urn:smpte:ul:" and four groups of eight hexadecimal digits, octet 7 included. A UUID may stand where a label may, and
/// then has its halves in the other order (ST 377-1 §4.1), so that its first bit is set, which no label has: it stands as
/// "urn:uuid:" and in its own order.
BRYX_API std::string toString(const KLVKey& key);

namespace klvutil {

/// The key that @p text writes as toString() does, without the "urn:smpte:ul:": four groups of eight lower-case
/// hexadecimal digits with points between them. For constants; any other text is taken for what its digits give.
constexpr KLVKey key(const char (&text)[36]) {
    KLVKey result;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < 35; ++i) {
        const char c = text[i];
        if (c != '.') {
            const auto digit = static_cast<std::uint8_t>(c <= '9' ? c - '0' : c - 'a' + 10);
            std::uint8_t& octet = result[digits / 2];
            octet = static_cast<std::uint8_t>(octet << 4U | digit);
            ++digits;
        }
    }
    return result;
}

/// The key of a KLV fill item (ST 377-1), as the library writes it. Compare with ==: the version does not matter.
inline constexpr KLVKey fillKey{
    {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01, 0x03, 0x01, 0x02, 0x10, 0x01, 0x00, 0x00, 0x00}};

} // namespace klvutil

} // namespace bryx

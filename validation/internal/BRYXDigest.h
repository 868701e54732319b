#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

namespace bryx {

/// Tells things that are equal from most that are not, in 64 bits: FNV-1a, a word at a time.
class BRYXDigest {
public:
    template <class Number>
    void add(Number number) noexcept {
        static_assert(std::is_integral_v<Number>);
        value_ = (value_ ^ static_cast<std::uint64_t>(number)) * 0x100000001B3U;
        value_ ^= value_ >> 32U;
    }
    void add(const std::vector<std::uint8_t>& octets) noexcept {
        add(octets.size());
        for (const std::uint8_t octet : octets) {
            add(octet);
        }
    }

    std::uint64_t value() const noexcept { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

} // namespace bryx

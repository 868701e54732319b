#include "util/hex.h"

#include <algorithm>

namespace bryx::util {

void appendHex(std::string& text, const std::uint8_t* octets, std::size_t size) {
    static constexpr char digits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < size; ++i) {
        text += digits[octets[i] >> 4U];
        text += digits[octets[i] & 0x0FU];
    }
}

std::string hexGroups(const std::uint8_t* octets, std::size_t size) {
    std::string text;
    for (std::size_t at = 0; at < size; at += 4) {
        if (at != 0) {
            text += '.';
        }
        appendHex(text, octets + at, std::min<std::size_t>(size - at, 4));
    }
    return text;
}

} // namespace bryx::util

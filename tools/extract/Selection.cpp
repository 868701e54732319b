#include "extract/Selection.h"

#include <cstddef>
#include <stdexcept>

#include "util/byte_order.h"

namespace {

std::uint32_t number(const std::string& text, int base) {
    std::size_t end = 0;
    const unsigned long value = std::stoul(text, &end, base);
    if (end != text.size() || value > 0xFFFFFFFF) {
        throw std::invalid_argument(text);
    }
    return static_cast<std::uint32_t>(value);
}

} // namespace

Selection::Selection(std::string text) {
    const std::size_t at = text.find('@');
    if (at != std::string::npos) {
        bodySID_ = number(text.substr(at + 1), 0);
        text.resize(at);
    }
    const std::string prefix = "urn:smpte:ul:";
    if (text.compare(0, prefix.size(), prefix) == 0) {
        text.erase(0, prefix.size());
    }
    std::string digits;
    for (const char c : text) {
        if (c != '.') {
            digits += c;
        }
    }
    if (digits.size() == 32) {
        key_.emplace();
        for (std::size_t i = 0; i < 16; ++i) {
            (*key_)[i] = static_cast<std::uint8_t>(number(digits.substr(2 * i, 2), 16));
        }
    } else {
        trackNumber_ = number(text, 0);
    }
}

bool Selection::includes(const KLVKey& key) const {
    return key_ ? key == *key_ : util::loadBigEndian<std::uint32_t>(&key.octets[12]) == trackNumber_;
}

#include "util/utf8.h"

#include <cstdint>

namespace bryx {

namespace util::utf8 {

exception::~exception() = default;

invalid_code_point::invalid_code_point() : exception("Invalid code point") {}
invalid_code_point::~invalid_code_point() = default;

invalid_utf16::invalid_utf16() : exception("Invalid UTF-16") {}
invalid_utf16::~invalid_utf16() = default;

namespace {

constexpr bool isSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

void checkCodePoint(char32_t c) {
    if (c > 0x10FFFF || isSurrogate(c)) {
        throw invalid_code_point();
    }
}

/// Calls @p consume with each code point of UTF-16 units of any character type.
template <class String, class Consume>
void decodeUTF16(const String& units, Consume consume) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t c = static_cast<char16_t>(units[i]);
        if (isSurrogate(c)) {
            const char32_t low = i + 1 < units.size() ? static_cast<char16_t>(units[i + 1]) : char16_t{0};
            if (c >= 0xDC00 || low < 0xDC00 || low > 0xDFFF) {
                throw invalid_utf16();
            }
            c = 0x10000 + ((c - 0xD800) << 10U) + (low - 0xDC00);
            ++i;
        }
        consume(c);
    }
}

template <class String>
void appendUTF16(String& units, char32_t c) {
    using Unit = typename String::value_type;
    if (c < 0x10000) {
        units += static_cast<Unit>(c);
    } else {
        units += static_cast<Unit>(0xD800 + ((c - 0x10000) >> 10U));
        units += static_cast<Unit>(0xDC00 + ((c - 0x10000) & 0x3FFU));
    }
}

/// Calls @p consume with each code point of @p text, each checked.
template <class Consume>
void decodeWide(const std::wstring& text, Consume consume) {
    if constexpr (sizeof(wchar_t) == 2) {
        decodeUTF16(text, consume);
    } else {
        for (const wchar_t c : text) {
            checkCodePoint(static_cast<char32_t>(c));
            consume(static_cast<char32_t>(c));
        }
    }
}

void appendWide(std::wstring& text, char32_t c) {
    if constexpr (sizeof(wchar_t) == 2) {
        appendUTF16(text, c);
    } else {
        text += static_cast<wchar_t>(c);
    }
}

void appendUTF8(std::string& utf8, char32_t c) {
    const auto continuation = [&](unsigned shift) { utf8 += static_cast<char>(0x80U | ((c >> shift) & 0x3FU)); };
    if (c < 0x80) {
        utf8 += static_cast<char>(c);
    } else if (c < 0x800) {
        utf8 += static_cast<char>(0xC0U | (c >> 6U));
        continuation(0);
    } else if (c < 0x10000) {
        utf8 += static_cast<char>(0xE0U | (c >> 12U));
        continuation(6);
        continuation(0);
    } else {
        utf8 += static_cast<char>(0xF0U | (c >> 18U));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

} // namespace

std::string fromWide(const std::wstring& text) {
    std::string utf8;
    decodeWide(text, [&](char32_t c) { appendUTF8(utf8, c); });
    return utf8;
}

std::wstring toWide(const std::string& utf8) {
    std::wstring text;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto first = static_cast<unsigned char>(utf8[i++]);
        const unsigned more = first < 0x80 ? 0 : (first & 0xE0U) == 0xC0 ? 1 : (first & 0xF0U) == 0xE0 ? 2 : 3;
        if (more == 3 && (first & 0xF8U) != 0xF0) {
            throw invalid_code_point();
        }
        char32_t c = more == 0 ? first : first & (0x3FU >> more);
        for (unsigned k = 0; k < more; ++k, ++i) {
            if (i == utf8.size() || (static_cast<unsigned char>(utf8[i]) & 0xC0U) != 0x80) {
                throw invalid_code_point();
            }
            c = (c << 6U) | (static_cast<unsigned char>(utf8[i]) & 0x3FU);
        }
        static constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
        if (c < smallest[more]) {
            throw invalid_code_point();
        }
        checkCodePoint(c);
        appendWide(text, c);
    }
    return text;
}

std::u16string toUTF16(const std::wstring& text) {
    std::u16string units;
    decodeWide(text, [&](char32_t c) { appendUTF16(units, c); });
    return units;
}

std::wstring fromUTF16(const std::u16string& units) {
    std::wstring text;
    decodeUTF16(units, [&](char32_t c) { appendWide(text, c); });
    return text;
}

} // namespace util::utf8

} // namespace bryx

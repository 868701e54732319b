#include "util/utf8.h"

#include <gtest/gtest.h>

namespace utf8 = util::utf8;

TEST(Utf8, ConvertsAllLengthsBothWays) {
    const std::wstring text = L"A\u00e9\u20ac\U0001F3AC";
    EXPECT_EQ(utf8::fromWide(text), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC");
    EXPECT_EQ(utf8::toWide(utf8::fromWide(text)), text);
    EXPECT_EQ(utf8::toUTF16(text), u"A\u00e9\u20ac\U0001F3AC");
    EXPECT_EQ(utf8::fromUTF16(utf8::toUTF16(text)), text);
}

TEST(Utf8, RefusesWhatIsMalformed) {
    for (const char* text : {"\x80", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                             "\xF8\x88\x80\x80\x80", "\xFF", "\xE2\x82", "\xC3\x41"}) {
        EXPECT_THROW(utf8::toWide(text), utf8::invalid_code_point) << text;
    }
    for (const char16_t* units : {u"\xD800", u"\xDC00\xD800", u"\xD800\xD800"}) {
        EXPECT_THROW(utf8::fromUTF16(units), utf8::invalid_utf16);
    }
    EXPECT_THROW(utf8::fromWide(std::wstring(1, static_cast<wchar_t>(0x110000))), utf8::invalid_code_point);
    try {
        utf8::fromWide(std::wstring(1, static_cast<wchar_t>(0xD800)));
        FAIL();
    } catch (const utf8::exception& e) {
        EXPECT_STREQ(e.what(), "Invalid code point");
    }
    EXPECT_STREQ(utf8::invalid_utf16().what(), "Invalid UTF-16");
}

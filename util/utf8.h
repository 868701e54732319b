#pragma once

#include <stdexcept>
#include <string>

#include "util/Api.h"

/// @file
/// Text conversions. Text is held as std::wstring: UTF-32 where wchar_t has four octets, UTF-16 where it has two.

namespace bryx {

namespace util::utf8 {

/// Base of the errors of text conversion.
class BRYX_API exception : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    exception(const exception&) = default;
    exception& operator=(const exception&) = default;
    ~exception() override;
};

/// "Invalid code point": a code point that cannot be encoded (a surrogate, or beyond U+10FFFF), or octets that are
/// not UTF-8.
class BRYX_API invalid_code_point : public exception {
public:
    invalid_code_point();
    invalid_code_point(const invalid_code_point&) = default;
    invalid_code_point& operator=(const invalid_code_point&) = default;
    ~invalid_code_point() override;
};

/// "Invalid UTF-16": a surrogate without its counterpart.
class BRYX_API invalid_utf16 : public exception {
public:
    invalid_utf16();
    invalid_utf16(const invalid_utf16&) = default;
    invalid_utf16& operator=(const invalid_utf16&) = default;
    ~invalid_utf16() override;
};

/// UTF-8 of @p text. Throws invalid_code_point, and invalid_utf16 where wchar_t holds UTF-16.
BRYX_API std::string fromWide(const std::wstring& text);

/// The text that @p utf8 encodes. Throws invalid_code_point for malformed, overlong or surrogate sequences.
BRYX_API std::wstring toWide(const std::string& utf8);

/// UTF-16 code units of @p text. Throws as fromWide does.
BRYX_API std::u16string toUTF16(const std::wstring& text);

/// The text that the UTF-16 code units encode. Throws invalid_utf16.
BRYX_API std::wstring fromUTF16(const std::u16string& units);

} // namespace util::utf8

} // namespace bryx

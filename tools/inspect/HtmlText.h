#pragma once

#include <cstdint>
#include <string>

/// @file
/// Texts and numbers as they stand on the HTML page.

/// Any octets as text of a page or as the value of an attribute. What is not UTF-8 shows as U+FFFD, what would not show
/// as its code point.
std::string escaped(const std::string& text);

std::string inHex(std::uint64_t number);

/// "12.3 MiB"; octets below 1 KiB.
std::string readableSize(std::uint64_t octets);

std::string percentage(std::uint64_t part, std::uint64_t whole);

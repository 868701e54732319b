#include "inspect/HtmlText.h"

#include <array>
#include <cstddef>
#include <iomanip>
#include <sstream>

#include "inspect/Words.h"
#include "util/utf8.h"

namespace {

/// Whether @p c would change the look of the text around it: a control character, or one that sets the direction.
bool isHidden(wchar_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || c == 0xFFFE || c == 0xFFFF;
}

} // namespace

std::string escaped(const std::string& text) {
    std::string result;
    const auto append = [&](wchar_t c, const std::string& octets) {
        std::ostringstream point;
        if (c == L'&' || c == L'<' || c == L'>' || c == L'"' || c == L'\'') {
            point << "&#" << static_cast<std::uint32_t>(c) << ';';
        } else if (isHidden(c)) {
            point << "\\u{" << std::hex << static_cast<std::uint32_t>(c) << '}';
        } else {
            result += octets;
        }
        result += point.str();
    };
    for (std::size_t i = 0; i < text.size();) {
        const auto octet = static_cast<std::uint8_t>(text[i]);
        const std::string octets = text.substr(i, octet < 0xC0 ? 1 : octet < 0xE0 ? 2 : octet < 0xF0 ? 3 : 4);
        try {
            append(util::utf8::toWide(octets).front(), octets);
            i += octets.size();
        } catch (const util::utf8::exception&) {
            result += "\xEF\xBF\xBD";
            ++i;
        }
    }
    return result;
}

std::string inHex(std::uint64_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << number;
    return text.str();
}

std::string readableSize(std::uint64_t octets) {
    constexpr std::array<const char*, 6> units{"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    if (octets < 1024) {
        return quantity(octets, "octet");
    }
    double value = static_cast<double>(octets) / 1024;
    std::size_t unit = 0;
    for (; value >= 1023.95 && unit + 1 < units.size(); ++unit) {
        value /= 1024;
    }
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << value << ' ' << units[unit];
    return text.str();
}

std::string percentage(std::uint64_t part, std::uint64_t whole) {
    const double percent = whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole);
    std::ostringstream text;
    if (part != 0 && percent < 0.01) {
        return "under 0.01 %";
    }
    text << std::fixed << std::setprecision(percent < 1 ? 2 : 1) << percent << " %";
    return text.str();
}

#include "inspect/Words.h"

#include <algorithm>
#include <variant>
#include <vector>

#include "mxf/metadata/model/MXFLabelNames.h"
#include "util/hex.h"

const char* textName(MXFPartitionStatus status) {
    switch (status) {
    case MXFPartitionStatus::OpenIncomplete:
        return "open, incomplete";
    case MXFPartitionStatus::ClosedIncomplete:
        return "closed, incomplete";
    case MXFPartitionStatus::OpenComplete:
        return "open, complete";
    case MXFPartitionStatus::ClosedComplete:
        return "closed, complete";
    case MXFPartitionStatus::GenericStream:
        break;
    }
    return "generic stream";
}

std::string patternName(const KLVKey& label) {
    constexpr KLVKey pattern{{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01}};
    if (prefixOf(label) != pattern) {
        return {};
    }
    const unsigned item = label[12];
    const unsigned package = label[13];
    if (item == 0x10) {
        return " (OP-Atom)";
    }
    if (item < 1 || item > 3 || package < 1 || package > 3) {
        return {};
    }
    return " (OP" + std::to_string(item) + "abc"[package - 1] + ")";
}

std::string quantity(std::uint64_t count, const std::string& thing) {
    return (count == 0 ? "no" : std::to_string(count)) + " " + thing + (count == 1 ? "" : "s");
}

std::string inQuotes(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto octet = static_cast<std::uint8_t>(c);
        if (octet < 0x20 || octet == 0x7F) {
            result += "\\x";
            util::appendHex(result, &octet, 1);
        } else {
            result += c;
        }
    }
    return result + '"';
}

std::string cut(std::string text, std::size_t maxSize) {
    if (text.size() > maxSize) {
        const auto continues = [&](std::size_t at) { return (static_cast<std::uint8_t>(text[at]) & 0xC0U) == 0x80; };
        while (maxSize > 0 && continues(maxSize)) {
            --maxSize;
        }
        text.resize(maxSize);
        text += "...";
    }
    return text;
}

std::string describe(const MXFScalar& value) {
    const std::string text = cut(mxfutil::toText(value), 200);
    if (std::holds_alternative<std::string>(value) || std::holds_alternative<std::wstring>(value)) {
        return inQuotes(text);
    }
    if (const auto* label = std::get_if<KLVKey>(&value)) {
        const char* const name = mxfutil::labelName(*label);
        return name == nullptr ? text : std::string(name) + " (" + text + ")";
    }
    return text.empty() ? "nothing" : text;
}

std::string describe(const MXFPropertyValue& value) {
    constexpr std::size_t maxElements = 16;
    if (const auto* single = std::get_if<MXFScalar>(&value)) {
        return describe(*single);
    }
    const auto& elements = std::get<std::vector<MXFScalar>>(value);
    std::string text;
    for (std::size_t i = 0; i < std::min(elements.size(), maxElements); ++i) {
        text += (i == 0 ? "" : ", ") + describe(elements[i]);
    }
    if (elements.size() > maxElements) {
        text += " and " + std::to_string(elements.size() - maxElements) + " more";
    }
    return elements.empty() ? "none" : text;
}

std::string timecodeRange(const BodyCounter& body) {
    if (!body.firstTimecode() && !body.lastTimecode()) {
        return {};
    }
    const auto describeTimecode = [](const boost::optional<Timecode>& timecode) {
        return timecode ? toString(*timecode) : "no timecode";
    };
    return "from " + describeTimecode(body.firstTimecode()) + " to " + describeTimecode(body.lastTimecode());
}

std::string verdict(const FindingCollector& findings) {
    const bool readToEnd = findings.count(klvutil::FindingLevel::fatal) == 0;
    return (readToEnd ? "The file was read to its end: " : "The file could not be read to its end. Before that: ") +
           quantity(findings.count(klvutil::FindingLevel::error), "error") + ", " +
           quantity(findings.count(klvutil::FindingLevel::warning), "warning") + ".";
}

bool repeats(const FoundModel& found, const FoundModel& other) {
    return found.model.size() == other.model.size() &&
           mxfutil::firstDifference(*found.model.front(), *other.model.front()).empty();
}

#include "inspect/HtmlHeader.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <stdexcept>

#include "inspect/HtmlText.h"
#include "inspect/Words.h"
#include "mxf/metadata/structural/TimecodeComponent.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "timecode/TimecodeCalculator.h"

void HtmlHeader::write(const std::string& fileName) {
    out_ << "<header><h1>" << escaped(std::filesystem::path(fileName).filename().string())
         << "</h1>\n<div class=\"verdict\">";
    const FindingCollector& findings = inspection_.findings;
    bool any = false;
    for (const auto level :
         {klvutil::FindingLevel::fatal, klvutil::FindingLevel::error, klvutil::FindingLevel::warning}) {
        if (findings.count(level) != 0) {
            any = true;
            out_ << "<a class=\"badge " << name(level) << "\" href=\"#findings\">"
                 << quantity(findings.count(level), name(level)) << "</a> ";
        }
    }
    out_ << (any ? "" : "<span class=\"badge\">no findings</span> ") << "<span>" << verdict(findings)
         << "</span></div>\n<dl class=\"facts card\">\n";
    if (inspection_.fileSize) {
        fact("Size", readableSize(*inspection_.fileSize), std::to_string(*inspection_.fileSize) + " octets");
    } else {
        fact("Size", "unknown", "the input cannot seek");
    }
    writeStructureFacts();
    writeTrackFacts();
    const BodyCounter& body = inspection_.body;
    if (body.packages() != 0) {
        fact("Content packages", std::to_string(body.packages()), timecodeRange(body));
    }
    out_ << "</dl></header>\n";
}

void HtmlHeader::fact(const char* term, const std::string& value, const std::string& detail) {
    out_ << "<div><dt>" << term << "</dt><dd>" << value;
    if (!detail.empty()) {
        out_ << "<small>" << detail << "</small>";
    }
    out_ << "</dd></div>\n";
}

void HtmlHeader::writeStructureFacts() {
    const FoundPartition* first = nullptr;
    std::uint64_t count = inspection_.structure.partitions().omitted();
    inspection_.structure.partitions().forEach([&](const FoundPartition& partition) {
        first = first == nullptr ? &partition : first;
        ++count;
    });
    if (first != nullptr) {
        const MXFPartitionPack& pack = first->pack;
        const std::string pattern = patternName(pack.operationalPattern);
        fact("Operational pattern", pattern.empty() ? "unknown" : pattern.substr(2, pattern.size() - 3),
             toString(pack.operationalPattern));
        const bool readToEnd = inspection_.findings.count(klvutil::FindingLevel::fatal) == 0;
        fact(readToEnd ? "Partitions" : "Partitions read", std::to_string(count),
             std::string("header: ") + textName(mxfutil::partitionStatus(first->key)) + "; version " +
                 std::to_string(pack.majorVersion) + "." + std::to_string(pack.minorVersion) + "; KAG " +
                 std::to_string(pack.kagSize));
    }
    if (inspection_.structure.runIn() != 0) {
        fact("Run-in", std::to_string(inspection_.structure.runIn()) + " octets");
    }
}

void HtmlHeader::writeTrackFacts() {
    const MaterialPackage* material = nullptr;
    links_.forEachShownSet([&](const MetadataRoot& set) {
        material = material == nullptr ? dynamic_cast<const MaterialPackage*>(&set) : material;
    });
    if (material != nullptr) {
        writeDuration(*material);
        writeStartTimecode(*material);
    }
}

void HtmlHeader::writeStartTimecode(const MaterialPackage& package) {
    const TimecodeComponent* start = nullptr;
    forEachSet(package, [&](const MetadataRoot& set) {
        start = start == nullptr ? dynamic_cast<const TimecodeComponent*>(&set) : start;
    });
    constexpr std::int64_t maxFrames = 1 << 30;
    if (start == nullptr || start->getRoundedTimecodeBase() > 255 || start->getStartTimecode() < 0 ||
        start->getStartTimecode() > maxFrames) {
        return;
    }
    try {
        const auto calculator = createTimecodeCalculator(static_cast<std::uint8_t>(start->getRoundedTimecodeBase()),
                                                         start->getDropFrame(), std::uint8_t{1});
        Timecode timecode;
        timecode.dropFrame = start->getDropFrame();
        calculator->toTimecode(static_cast<std::uint32_t>(start->getStartTimecode()), timecode.hours, timecode.minutes,
                               timecode.seconds, timecode.frames);
        fact("Start timecode", toString(timecode),
             std::to_string(start->getRoundedTimecodeBase()) + " frames a second");
    } catch (const std::runtime_error&) {
        // A base or a drop-frame rate that timecodes do not have: the tree shows both.
    }
}

void HtmlHeader::writeDuration(const MaterialPackage& package) {
    for (std::size_t i = 0; i < package.getTrackCount(); ++i) {
        const auto track = std::dynamic_pointer_cast<const TimelineTrack>(package.getTrackAt(i));
        const auto segment = track == nullptr ? nullptr : track->getSegment();
        if (segment == nullptr || !segment->hasDuration() || segment->getDuration() < 0 ||
            track->getEditRate().numerator <= 0 || track->getEditRate().denominator <= 0) {
            continue;
        }
        const Rational rate = track->getEditRate();
        const double seconds = static_cast<double>(segment->getDuration()) * rate.denominator / rate.numerator;
        fact("Duration", clockTime(seconds),
             std::to_string(segment->getDuration()) + " edit units, " + toString(rate) + " a second");
        return;
    }
}

std::string HtmlHeader::clockTime(double seconds) {
    const auto milliseconds = std::llround(std::min(seconds, 1e12) * 1000);
    std::ostringstream text;
    text << std::setfill('0') << milliseconds / 3600000 << ':' << std::setw(2) << milliseconds / 60000 % 60 << ':'
         << std::setw(2) << milliseconds / 1000 % 60 << '.' << std::setw(3) << milliseconds % 1000;
    return text.str();
}

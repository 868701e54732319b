#pragma once

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <istream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "inspect/Inspection.h"
#include "inspect/InspectionHtmlAssets.h"
#include "inspect/InspectionLayout.h"
#include "inspect/InspectionText.h"
#include "mxf/metadata/descriptors/PictureDescriptor.h"
#include "mxf/metadata/descriptors/SoundDescriptor.h"
#include "mxf/metadata/structural/MaterialPackage.h"
#include "mxf/metadata/structural/TimecodeComponent.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "timecode/TimecodeCalculator.h"
#include "util/utf8.h"

/// @file
/// What inspect found as one HTML page that needs nothing beside itself: the file drawn to scale, tables, the metadata
/// as a tree, and the findings, with links between all of them.

// ---- Texts ----

/// Whether @p c would change the look of the text around it: a control character, or one that sets the direction.
inline bool isHidden(wchar_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || c == 0xFFFE || c == 0xFFFF;
}

/// Any octets as text of a page or as the value of an attribute. What is not UTF-8 shows as U+FFFD, what would not show
/// as its code point.
inline std::string escaped(const std::string& text) {
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

inline std::string inHex(std::uint64_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << number;
    return text.str();
}

/// "12.3 MiB"; octets below 1 KiB.
inline std::string readableSize(std::uint64_t octets) {
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

inline std::string percentage(std::uint64_t part, std::uint64_t whole) {
    const double percent = whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole);
    std::ostringstream text;
    if (part != 0 && percent < 0.01) {
        return "under 0.01 %";
    }
    text << std::fixed << std::setprecision(percent < 1 ? 2 : 1) << percent << " %";
    return text.str();
}

// ---- What the drawing calls things ----

struct RegionStyle {
    Region region;
    const char* cssClass; ///< also names the variable with its colour
    const char* name;
};

inline constexpr std::array<RegionStyle, 16> regionStyles{{{Region::RunIn, "run-in", "run-in"},
                                                           {Region::PartitionPack, "pack", "partition pack"},
                                                           {Region::HeaderMetadata, "header", "header metadata"},
                                                           {Region::Index, "index", "index"},
                                                           {Region::System, "system", "system"},
                                                           {Region::Picture, "picture", "picture"},
                                                           {Region::Sound, "sound", "sound"},
                                                           {Region::Data, "data", "data"},
                                                           {Region::Compound, "compound", "compound"},
                                                           {Region::GenericStream, "stream", "generic stream"},
                                                           {Region::Other, "other", "other"},
                                                           {Region::Fill, "fill", "fill"},
                                                           {Region::RandomIndex, "rip", "random index"},
                                                           {Region::Mixed, "mixed", "interleaved"},
                                                           {Region::Omitted, "omitted", "left out"},
                                                           {Region::Unread, "unread", "not readable"}}};

inline const RegionStyle& styleOf(Region region) {
    return *std::find_if(regionStyles.begin(), regionStyles.end(),
                         [&](const RegionStyle& style) { return style.region == region; });
}

/// "picture 97.1 %, sound 2.4 %".
inline std::string shares(const LayoutBlock& block) {
    std::string text;
    for (const auto& [region, octets] : block.octets) {
        text += (text.empty() ? "" : ", ") + std::string(styleOf(region).name) + " " + percentage(octets, block.size());
    }
    return text;
}

/// A mixed block is painted in stripes as thick as the shares, but none too thin to be seen.
inline std::string stripes(const LayoutBlock& block) {
    constexpr double thinnest = 0.06;
    const auto thickness = [&](std::uint64_t octets) {
        return std::max(thinnest, static_cast<double>(octets) / static_cast<double>(block.size()));
    };
    double whole = 0;
    for (const auto& share : block.octets) {
        whole += thickness(share.second);
    }
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << "linear-gradient(";
    double end = 0;
    for (const auto& [region, octets] : block.octets) {
        const double begin = end;
        end += 100 * thickness(octets) / whole;
        text << (begin > 0 ? "," : "") << "var(--" << styleOf(region).cssClass << ") " << begin << "% " << end << '%';
    }
    text << ')';
    return text.str();
}

// ---- The page ----

/// Writes the page. Its size is bounded: of long tables there are the first rows, of very much metadata the first sets.
class HtmlPage {
public:
    /// @param layout null if the file cannot be read a second time
    HtmlPage(std::ostream& out, std::string name, const Inspection& inspection, const LayoutCollector* layout)
        : out_(out), name_(std::move(name)), inspection_(inspection), layout_(layout) {
        numberSets();
        placeFindings();
    }

    void write() {
        const std::string title = escaped(name_);
        // The policy holds a browser to what the page promises: nothing comes from elsewhere.
        out_ << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
                "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
                "script-src 'unsafe-inline'; base-uri 'none'; form-action 'none'\">\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
             << title << "</title>\n<style>" << htmlStyle << "</style></head>\n<body>\n";
        writeHeader();
        out_ << "<nav aria-label=\"Sections\"><div><a href=\"#layout\">Layout</a> <a href=\"#findings\">Findings</a> "
                "<a href=\"#partitions\">Partitions</a> <a href=\"#essence\">Essence</a> <a href=\"#index\">Index</a> "
                "<a href=\"#metadata\">Metadata</a></div></nav>\n<main>\n";
        writeLayout();
        writeFindings();
        writePartitions();
        writeEssence();
        writeIndex();
        writeMetadata();
        out_ << "</main>\n<footer>Written by inspect of the Bryx MXF SDK. Positions count from the first octet of the "
                "file, run-in included.</footer>\n<script>"
             << htmlScript << "</script>\n</body></html>\n";
    }

private:
    static constexpr std::size_t maxRows = 2000;
    static constexpr std::size_t maxSets = 4000;
    static constexpr std::size_t maxDepth = 100; ///< browsers nest elements some hundred levels deep
    static constexpr std::size_t maxMetadata = std::size_t{8} << 20U; ///< octets of properties in the page

    struct Model {
        const FoundModel* found;
        const FoundModel* sameAs; ///< one before that says the same
    };

    struct SetPlace {
        std::uint64_t end;
        std::size_t number;
    };

    using Findings = std::vector<std::size_t>; ///< numbers of findings

    // ---- Who has which anchor ----

    void numberSets() {
        const FoundModel* previous = nullptr;
        inspection_.metadata.models().forEach([&](const FoundModel& found) {
            const bool same = previous != nullptr && repeats(found, *previous);
            models_.push_back({&found, same ? previous : nullptr});
            if (!same) {
                previous = &found;
                for (const auto& set : found.model) {
                    numberSet(*set, 0);
                }
            }
        });
    }

    void numberSet(const MetadataRoot& set, std::size_t depth) {
        if (numbers_.size() == maxSets || depth == maxDepth) {
            return;
        }
        const std::size_t number = numbers_.size();
        numbers_.emplace(&set, number);
        if (set.hasStartStreampos() && set.hasEndStreampos()) {
            places_[position(set)] = {static_cast<std::uint64_t>(std::streamoff{set.getEndStreampos()}), number};
        }
        for (const MXFProperty* property : set.getDescription().properties()) {
            for (const auto& owned : ownedBy(set, *property)) {
                numberSet(*owned, depth + 1);
            }
        }
    }

    static std::uint64_t position(const MetadataRoot& set) {
        return static_cast<std::uint64_t>(std::streamoff{set.getStartStreampos()});
    }

    /// The number of the set that @p position is in.
    std::optional<std::size_t> setAt(std::uint64_t position) const {
        const auto next = places_.upper_bound(position);
        if (next == places_.begin() || std::prev(next)->second.end <= position) {
            return std::nullopt;
        }
        return std::prev(next)->second.number;
    }

    const LayoutBlock* blockAt(std::uint64_t position) const {
        return layout_ == nullptr ? nullptr : layout_->blockAt(position);
    }

    void placeFindings() {
        inspection_.findings.forEach([&](const ReportedFinding& finding) {
            const std::size_t number = findings_.size();
            findings_.push_back(&finding);
            if (const LayoutBlock* block = blockAt(finding.position)) {
                ofBlock_[block->begin].push_back(number);
            }
            if (const auto set = setAt(finding.position)) {
                ofSet_[*set].push_back(number);
            }
        });
    }

    /// The number that @p position is, as a link to the block that it is in.
    std::string link(std::uint64_t position, const std::string& text) const {
        const LayoutBlock* const block = blockAt(position);
        return block == nullptr ? escaped(text)
                                : "<a href=\"#at-" + std::to_string(block->begin) + "\">" + escaped(text) + "</a>";
    }
    std::string link(std::uint64_t position) const { return link(position, std::to_string(position)); }

    klvutil::FindingLevel worst(const Findings& numbers) const {
        klvutil::FindingLevel level = klvutil::FindingLevel::warning;
        for (const std::size_t number : numbers) {
            level = std::max(level, findings_[number]->level);
        }
        return level;
    }

    /// Says that there are findings and leads to the first of them.
    template <class Owner>
    std::string badge(const std::map<Owner, Findings>& owners, const Owner& owner) const {
        const auto found = owners.find(owner);
        if (found == owners.end()) {
            return {};
        }
        const Findings& numbers = found->second;
        return std::string(" <a class=\"badge ") + name(worst(numbers)) + "\" href=\"#finding-" +
               std::to_string(numbers.front()) + "\">" + quantity(numbers.size(), "finding") + "</a>";
    }

    // ---- Header ----

    void fact(const char* term, const std::string& value, const std::string& detail = {}) {
        out_ << "<div><dt>" << term << "</dt><dd>" << value;
        if (!detail.empty()) {
            out_ << "<small>" << detail << "</small>";
        }
        out_ << "</dd></div>\n";
    }

    void writeHeader() {
        out_ << "<header><h1>" << escaped(std::filesystem::path(name_).filename().string())
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

    void writeStructureFacts() {
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

    /// Calls @p visit with the sets of the header metadata that came last, and that the page shows.
    template <class Visit>
    void forEachShownSet(const Visit& visit) const {
        const auto shown =
            std::find_if(models_.rbegin(), models_.rend(), [](const Model& model) { return model.sameAs == nullptr; });
        if (shown != models_.rend()) {
            for (const auto& root : shown->found->model) {
                forEachSet(*root, visit);
            }
        }
    }

    void writeTrackFacts() {
        const MaterialPackage* material = nullptr;
        forEachShownSet([&](const MetadataRoot& set) {
            material = material == nullptr ? dynamic_cast<const MaterialPackage*>(&set) : material;
        });
        if (material != nullptr) {
            writeDuration(*material);
            writeStartTimecode(*material);
        }
    }

    void writeStartTimecode(const MaterialPackage& package) {
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
            calculator->toTimecode(static_cast<std::uint32_t>(start->getStartTimecode()), timecode.hours,
                                   timecode.minutes, timecode.seconds, timecode.frames);
            fact("Start timecode", toString(timecode),
                 std::to_string(start->getRoundedTimecodeBase()) + " frames a second");
        } catch (const std::runtime_error&) {
            // A base or a drop-frame rate that timecodes do not have: the tree shows both.
        }
    }

    void writeDuration(const MaterialPackage& package) {
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

    /// "0:01:00.000", hours first.
    static std::string clockTime(double seconds) {
        const auto milliseconds = std::llround(std::min(seconds, 1e12) * 1000);
        std::ostringstream text;
        text << std::setfill('0') << milliseconds / 3600000 << ':' << std::setw(2) << milliseconds / 60000 % 60 << ':'
             << std::setw(2) << milliseconds / 1000 % 60 << '.' << std::setw(3) << milliseconds % 1000;
        return text.str();
    }

    // ---- Layout ----

    void beginSection(const char* id, const std::string& heading) {
        out_ << "<section class=\"card\" id=\"" << id << "\"><h2>" << heading << "</h2>\n";
    }

    void writeLayout() {
        beginSection("layout", "The file, drawn to scale");
        if (layout_ == nullptr) {
            out_ << "<p>There is no drawing: it takes a second reading of the file, and the input cannot seek.</p>\n";
        } else if (layout_->parts().empty()) {
            out_ << "<p>The file is empty.</p>\n";
        } else {
            if (inspection_.findings.count(klvutil::FindingLevel::fatal) != 0) {
                out_ << "<p class=\"soft\">The drawing goes from triplet to triplet, and where that fails on to the "
                        "next "
                        "partition of the random index: it may show more than the tables.</p>\n";
            }
            writeFileBar();
            writeLegend();
            writeParts();
        }
        out_ << "</section>\n";
    }

    void writeFileBar() {
        const std::uint64_t size = layout_->parts().back().end();
        out_ << "<div class=\"tools\"><label data-script hidden>Zoom <input id=\"zoom\" type=\"range\" min=\"0\" "
                "max=\"12\" step=\"0.25\" value=\"0\"></label><span class=\"soft\">A block leads to its row in the "
                "tables below.</span></div>\n<div class=\"scroll\" id=\"map\"><div class=\"map\"><div class=\"marks\">";
        for (std::size_t i = 0; i < findings_.size(); ++i) {
            const ReportedFinding& finding = *findings_[i];
            const std::string label = std::string(name(finding.level)) + " at " + std::to_string(finding.position) +
                                      ": " + cut(finding.message, 200);
            out_ << "<a class=\"" << name(finding.level) << "\" href=\"#finding-" << i << "\" tabindex=\"-1\" title=\""
                 << escaped(label) << "\" style=\"left:"
                 << 100 * static_cast<double>(std::min(finding.position, size)) / static_cast<double>(size)
                 << "%\"></a>";
        }
        out_ << "</div><div class=\"parts\">\n";
        std::uint64_t number = 1;
        for (const LayoutPart& part : layout_->parts()) {
            out_ << "<div style=\"flex-grow:" << part.end() - part.begin() << "\"><small><span>"
                 << shortHeading(part, number) << "</span></small>";
            number += part.partitions;
            writeBar(part.blocks, "bar");
            out_ << "</div>\n";
        }
        out_ << "</div><div class=\"ruler\" aria-hidden=\"true\">";
        constexpr unsigned ticks = 8;
        for (unsigned i = 0; i < ticks; ++i) {
            out_ << "<span style=\"left:" << 100.0 * i / ticks << "%\">"
                 << (i == 0 ? "0" : readableSize(size / ticks * i)) << "</span>";
        }
        out_ << "<span class=\"last\">" << readableSize(size) << "</span></div></div></div>\n"
             << "<div id=\"readout\" data-script hidden>Point at a block to see what it is.</div>\n";
    }

    void writeBar(const std::vector<LayoutBlock>& blocks, const char* cssClass, bool links = true) {
        out_ << "<div class=\"" << cssClass << "\">";
        for (const LayoutBlock& block : blocks) {
            const RegionStyle& style = styleOf(block.region);
            const auto found = links ? ofBlock_.find(block.begin) : ofBlock_.end();
            out_ << (links ? "<a" : "<span") << " class=\"b " << style.cssClass;
            if (found != ofBlock_.end()) {
                out_ << " flag " << name(worst(found->second));
            }
            out_ << "\"";
            if (links) {
                out_ << " href=\"#at-" << block.begin << '"';
            }
            out_ << " style=\"flex-grow:" << block.size();
            if (!block.octets.empty()) {
                out_ << ";background:" << stripes(block);
            }
            out_ << "\" title=\"" << style.name << " at " << block.begin << " (" << inHex(block.begin) << "), "
                 << quantity(block.size(), "octet")
                 << (block.size() < 1024 ? "" : " (" + readableSize(block.size()) + ")");
            if (block.triplets != 0) {
                out_ << ", " << quantity(block.triplets, "triplet");
            }
            if (!block.octets.empty()) {
                out_ << ": " << shares(block);
            }
            if (found != ofBlock_.end()) {
                out_ << "; " << quantity(found->second.size(), "finding");
            }
            out_ << "\"><span>" << (!block.octets.empty() ? shares(block) : style.name) << "</span>"
                 << (links ? "</a>" : "</span>");
        }
        out_ << "</div>";
    }

    void writeLegend() {
        std::map<Region, std::uint64_t> octets;
        for (const LayoutPart& part : layout_->parts()) {
            for (const LayoutBlock& block : part.blocks) {
                block.addTo(octets);
            }
        }
        out_ << "<ul class=\"legend\">";
        for (const auto& [region, sum] : octets) {
            out_ << "<li>" << swatch(region) << styleOf(region).name << " <span class=\"soft\">" << readableSize(sum)
                 << ", " << percentage(sum, layout_->parts().back().end()) << "</span></li>";
        }
        out_ << "</ul>\n";
    }

    static std::string swatch(Region region, const std::string& style = {}) {
        return std::string("<i class=\"sw ") + styleOf(region).cssClass + "\"" + style + "></i>";
    }

    static std::string swatch(const LayoutBlock& block) {
        return swatch(block.region, !block.octets.empty() ? " style=\"background:" + stripes(block) + "\"" : "");
    }

    static std::string shortHeading(const LayoutPart& part, std::uint64_t number) {
        if (part.isPartition()) {
            return std::to_string(number) + " " + name(mxfutil::partitionKind(part.key));
        }
        return part.blocks.front().region == Region::Omitted ? quantity(part.partitions, "partition") + " left out"
                                                             : styleOf(part.blocks.front().region).name;
    }

    /// What stands between one partition pack and the next, each to its own scale.
    void writeParts() {
        out_ << "<h2 style=\"margin-top:1.5rem\">Each partition to a scale of its own</h2>\n"
                "<input type=\"checkbox\" id=\"scale\"> <label for=\"scale\">Narrow blocks as narrow as they "
                "are</label>\n";
        std::uint64_t number = 1;
        const bool few = layout_->parts().size() <= 8;
        for (const LayoutPart& part : layout_->parts()) {
            writePart(part, number, few);
            number += part.partitions;
        }
    }

    void writePart(const LayoutPart& part, std::uint64_t number, bool unfolded) {
        out_ << "<div class=\"part\"><h3>" << shortHeading(part, number) << "<span>";
        if (part.isPartition()) {
            out_ << textName(mxfutil::partitionStatus(part.key)) << "</span><span>body SID " << part.pack.bodySID
                 << ", index SID " << part.pack.indexSID << "</span><span>";
        }
        out_ << "from " << link(part.begin()) << " (" << inHex(part.begin()) << ")</span><span>"
             << quantity(part.end() - part.begin(), "octet") << ", "
             << percentage(part.end() - part.begin(), layout_->parts().back().end()) << " of the file</span></h3>\n";
        writeBar(part.blocks, "bar own");
        for (const LayoutBlock& block : part.blocks) {
            if (!block.beginning.empty()) {
                out_ << "<div class=\"caption\">interleaved from " << block.begin << "; its first "
                     << readableSize(block.beginning.back().end - block.begin) << ":</div>";
                writeBar(block.beginning, "bar own begin", false);
            }
        }
        out_ << "<details" << (unfolded ? " open" : "") << "><summary>" << quantity(part.blocks.size(), "block")
             << "</summary><div class=\"scroll\"><table class=\"full blocks\"><thead><tr><th>block<th "
                "class=\"n\">position<th class=\"n\">hex"
                "<th class=\"n\">octets<th class=\"n\">size<th class=\"n\">triplets<th>what it "
                "holds</tr></thead><tbody>\n";
        for (const LayoutBlock& block : part.blocks) {
            out_ << "<tr id=\"at-" << block.begin << "\"><td>" << swatch(block) << styleOf(block.region).name
                 << "<td class=\"n\">" << block.begin << "<td class=\"n\">" << inHex(block.begin) << "<td class=\"n\">"
                 << block.size() << "<td class=\"n\">" << (block.size() < 1024 ? "" : readableSize(block.size()))
                 << "<td class=\"n\">" << block.triplets << "<td class=\"wide\">" << contents(part, block)
                 << badge(ofBlock_, block.begin) << "</tr>\n";
        }
        out_ << "</tbody></table></div></details></div>\n";
    }

    std::string contents(const LayoutPart& part, const LayoutBlock& block) const {
        switch (block.region) {
        case Region::PartitionPack:
            return "<a href=\"#partitions\">in the table of partitions</a>";
        case Region::HeaderMetadata:
            for (std::size_t i = 0; i < models_.size(); ++i) {
                if (models_[i].found->partition == part.begin()) {
                    return "<a href=\"#model-" + std::to_string(i) + "\">metadata tree</a>";
                }
            }
            return {};
        case Region::Index:
            return "<a href=\"#index\">index table segments</a>";
        case Region::RandomIndex:
            return "<a href=\"#random-index\">random index</a>";
        case Region::Mixed:
        case Region::Omitted:
            return shares(block);
        case Region::Unread:
            return escaped(part.problem);
        case Region::RunIn:
        case Region::Fill:
            return {};
        default:
            return "<span class=\"mono\">" + toString(block.key) + "</span>";
        }
    }

    // ---- Tables ----

    /// @param cells makes the cells of an entry, which are markup
    template <class List, class Cells>
    void writeTable(const Table& table, const char* entries, const List& list, Cells cells) {
        out_ << "<div class=\"scroll tall\"><table><thead><tr>";
        for (const Table::Column& column : table.columns()) {
            out_ << (column.alignment == Table::Right ? "<th class=\"n\">" : "<th>") << column.title << ' '
                 << column.subtitle;
        }
        out_ << "</tr></thead><tbody>\n";
        std::uint64_t omitted = list.omitted();
        std::size_t rows = 0;
        list.forEach([&](const auto& entry) {
            if (rows == maxRows) {
                ++omitted;
                return;
            }
            ++rows;
            out_ << "<tr>";
            const Table::Row row = cells(entry);
            for (std::size_t i = 0; i < row.size(); ++i) {
                out_ << (table.columns()[i].alignment == Table::Right ? "<td class=\"n\">" : "<td>") << row[i];
            }
            out_ << "</tr>\n";
        });
        if (rows == 0) {
            out_ << "<tr><td class=\"soft\" colspan=\"" << table.columns().size() << "\">none</tr>\n";
        }
        out_ << "</tbody></table></div>\n";
        writeOmitted(omitted, entries);
    }

    void writeOmitted(std::uint64_t omitted, const char* entries) {
        if (omitted != 0) {
            out_ << "<p class=\"more\">and " << omitted << " more " << entries << "</p>\n";
        }
    }

    void writeFindings() {
        beginSection("findings", "Findings");
        out_ << "<p>" << verdict(inspection_.findings) << "</p>\n";
        if (!findings_.empty()) {
            out_ << "<div class=\"scroll tall\"><table class=\"full\"><thead><tr><th>level<th class=\"n\">position<th "
                    "class=\"n\">hex"
                    "<th>message<th>where<th>identifier</tr></thead><tbody>\n";
            for (std::size_t i = 0; i < findings_.size(); ++i) {
                const ReportedFinding& finding = *findings_[i];
                out_ << "<tr id=\"finding-" << i << "\"><td><span class=\"badge " << name(finding.level) << "\">"
                     << name(finding.level) << "</span><td class=\"n\">" << link(finding.position) << "<td class=\"n\">"
                     << inHex(finding.position) << "<td class=\"wide\">" << escaped(cut(finding.message, 2000))
                     << "<td class=\"tight\">";
                if (const LayoutBlock* block = blockAt(finding.position)) {
                    out_ << link(finding.position, styleOf(block->region).name);
                }
                if (const auto set = setAt(finding.position)) {
                    out_ << " <a href=\"#set-" << *set << "\">set</a>";
                }
                out_ << "<td class=\"mono soft\">" << toString(finding.id) << "</tr>\n";
            }
            out_ << "</tbody></table></div>\n";
        }
        writeOmitted(inspection_.findings.omitted(), "findings before the last");
        out_ << "</section>\n";
    }

    void writePartitions() {
        const StructureCollector& structure = inspection_.structure;
        beginSection("partitions", "Partitions");
        // Offsets in packs count from the end of the run-in.
        const auto offset = [&](std::uint64_t value) {
            return value > ~structure.runIn() ? std::to_string(value)
                                              : link(structure.runIn() + value, std::to_string(value));
        };
        writeTable(partitionTable(), "partitions", structure.partitions(), [&](const FoundPartition& partition) {
            Table::Row row = toRow(partition);
            row[0] = link(partition.offset);
            row[5] = offset(partition.pack.thisPartition);
            row[6] = offset(partition.pack.previousPartition);
            row[7] = offset(partition.pack.footerPartition);
            return row;
        });
        writeLabels();
        out_ << "<h2 id=\"random-index\">Random index</h2>\n";
        if (structure.randomIndex()) {
            writeTable(randomIndexTable(), "entries", *structure.randomIndex(), [&](const MXFRandomIndexEntry& entry) {
                Table::Row row = toRow(entry);
                row[0] = offset(entry.byteOffset);
                return row;
            });
        } else {
            out_ << "<p class=\"soft\">none</p>\n";
        }
        out_ << "</section>\n";
    }

    void writeLabels() {
        constexpr std::size_t maxLabels = 200;
        std::map<KLVKey, std::uint64_t> patterns;
        std::map<KLVKey, std::uint64_t> containers;
        const auto count = [](std::map<KLVKey, std::uint64_t>& labels, const KLVKey& label) {
            if (labels.size() < maxLabels || labels.count(label) != 0) {
                ++labels[label];
            }
        };
        inspection_.structure.partitions().forEach([&](const FoundPartition& partition) {
            count(patterns, partition.pack.operationalPattern);
            for (const KLVKey& label : partition.pack.essenceContainers) {
                count(containers, label);
            }
        });
        const auto write = [&](const char* what, const std::map<KLVKey, std::uint64_t>& labels) {
            for (const auto& [label, partitions] : labels) {
                out_ << "<tr><td>" << what << "<td class=\"mono\">" << toString(label) << "<td class=\"wide\">"
                     << nameOf(label) << "<td class=\"n\">" << partitions << "</tr>\n";
            }
        };
        out_ << "<div class=\"scroll tall\"><table><thead><tr><th>label<th><th>name"
                "<th class=\"n\">partitions</tr></thead><tbody>\n";
        write("operational pattern", patterns);
        write("essence container", containers);
        out_ << "</tbody></table></div>\n";
    }

    static std::string nameOf(const KLVKey& label) {
        const char* const known = mxfutil::labelName(label);
        return known == nullptr ? std::string() : known;
    }

    void writeEssence() {
        const BodyCounter& body = inspection_.body;
        beginSection("essence", "Essence");
        writeDescriptors();
        std::uint64_t octets = 0;
        body.essence().forEach([&](const ElementCount& count) { octets += count.octets; });
        writeTable(essenceTable(), "elements", body.essence(), [&](const ElementCount& count) {
            Table::Row row = toRow(count);
            row[0] = "<span class=\"mono\">" + row[0] + "</span>";
            row[1] = "<i class=\"sw " + row[1] + "\"></i>" + row[1];
            row[3] += " <span class=\"soft\">" + percentage(count.octets, octets) + "</span>";
            return row;
        });
        const std::string timecodes = timecodeRange(body);
        out_ << "<p>Content packages: " << body.packages() << (timecodes.empty() ? "" : ", ") << timecodes
             << ". System elements: " << body.systemElements() << ".</p>\n<h2>Generic streams</h2>\n";
        writeTable(otherTripletsTable(), "triplets", inspection_.genericStreams.triplets(),
                   [&](const ElementCount& count) {
                       Table::Row row = toRow(count);
                       row[0] = "<span class=\"mono\">" + row[0] + "</span>";
                       return row;
                   });
        out_ << "</section>\n";
    }

    /// What the file descriptors say in short.
    void writeDescriptors() {
        const Table table({{"descriptor"}, {"track", Table::Right}, {"what it describes"}, {"coding"}, {"container"}});
        BoundedList<const FileDescriptor*, 200> descriptors;
        forEachShownSet([&](const MetadataRoot& set) {
            if (const auto* descriptor = dynamic_cast<const FileDescriptor*>(&set)) {
                descriptors.add(descriptor);
            }
        });
        writeTable(table, "descriptors", descriptors, [&](const FileDescriptor* descriptor) {
            std::string what;
            KLVKey coding;
            if (const auto* picture = dynamic_cast<const PictureDescriptor*>(descriptor)) {
                what = std::to_string(picture->getStoredWidth()) + " × " + std::to_string(picture->getStoredHeight()) +
                       " stored, aspect ratio " + toString(picture->getAspectRatio()) + ", ";
                coding = picture->hasPictureEssenceCoding() ? picture->getPictureEssenceCoding() : KLVKey{};
            } else if (const auto* sound = dynamic_cast<const SoundDescriptor*>(descriptor)) {
                what = quantity(sound->getChannelCount(), "channel") + ", " +
                       std::to_string(sound->getQuantizationBits()) + " bits, " +
                       toString(sound->getAudioSamplingRate()) + " Hz, ";
                coding = sound->hasSoundEssenceCompression() ? sound->getSoundEssenceCompression() : KLVKey{};
            }
            return Table::Row{setLink(*descriptor),
                              descriptor->hasLinkedTrackID() ? std::to_string(descriptor->getLinkedTrackID()) : "",
                              what + "sample rate " + toString(descriptor->getSampleRate()), nameOf(coding),
                              nameOf(descriptor->getEssenceContainer())};
        });
    }

    void writeIndex() {
        beginSection("index", "Index table segments");
        writeTable(segmentTable(), "segments", inspection_.index.segments(), [&](const FoundSegment& segment) {
            Table::Row row = toRow(segment);
            row[0] = link(segment.offset);
            return row;
        });
        out_ << "</section>\n";
    }

    // ---- Metadata ----

    void writeMetadata() {
        beginSection("metadata", "Header metadata");
        if (models_.empty()) {
            out_ << "<p class=\"soft\">none</p>\n";
        } else {
            out_ << "<p class=\"tools\" data-script hidden><button type=\"button\" data-unfold=\"all\" "
                    "data-of=\"#metadata\">Unfold all</button> <button type=\"button\" data-unfold=\"none\" "
                    "data-of=\"#metadata\">Fold all</button></p>\n";
        }
        for (std::size_t i = 0; i < models_.size(); ++i) {
            const Model& model = models_[i];
            out_ << "<div class=\"part\" id=\"model-" << i << "\"><h3>Partition at " << link(model.found->partition)
                 << "</h3>\n";
            if (model.sameAs != nullptr) {
                const auto same = std::find_if(models_.begin(), models_.end(),
                                               [&](const Model& other) { return other.found == model.sameAs; });
                out_ << "<p>the same as in the <a href=\"#model-" << same - models_.begin() << "\">partition at "
                     << model.sameAs->partition << "</a></p>\n";
            } else {
                writeSets(model.found->model, i == 0 ? 0 : 1);
            }
            out_ << "</div>\n";
        }
        writeOmitted(inspection_.metadata.models().omitted(), "partitions with header metadata");
        out_ << "</section>\n";
    }

    /// The name of a set and what tells it from others of its class.
    static std::string heading(const MetadataRoot& set) {
        std::string text = std::string("<b>") + set.getDescription().name() + "</b>";
        for (const MXFProperty* property : set.getDescription().properties()) {
            const std::string property_name = property->name();
            if (property->isPresent(set) &&
                (property_name == "name" || property_name == "trackName" || property_name == "trackID" ||
                 property_name == "productName" || property_name == "duration")) {
                text += " <span class=\"soft\">" + property_name + " " + escaped(describe(property->value(set))) +
                        "</span>";
            }
        }
        return text;
    }

    /// The name of a set as a link to where it stands in the tree.
    std::string setLink(const MetadataRoot& set) const {
        const auto number = numbers_.find(&set);
        const char* const text = set.getDescription().name();
        return number == numbers_.end() ? text
                                        : "<a href=\"#set-" + std::to_string(number->second) + "\">" + text + "</a>";
    }

    /// @param depth those on the uppermost levels are unfolded
    template <class Sets>
    void writeSets(const Sets& sets, std::size_t depth) {
        std::uint64_t omitted = 0;
        for (const auto& set : sets) {
            const auto number = numbers_.find(&*set);
            if (number == numbers_.end()) {
                ++omitted;
            } else {
                writeSet(*set, number->second, depth);
            }
        }
        writeOmitted(omitted, "sets");
    }

    /// A set that has a number is written in any case, as there may be links to it.
    void writeSet(const MetadataRoot& set, std::size_t number, std::size_t depth) {
        out_ << "<details class=\"set\" id=\"set-" << number << (depth < 3 ? "\" open" : "\"") << "><summary>"
             << heading(set) << badge(ofSet_, number) << "</summary><dl class=\"set-body\">\n";
        if (set.hasStartStreampos()) {
            property("at", link(position(set)) + " (" + inHex(position(set)) + ")", "soft");
        }
        property("instanceUID", toString(set.getInstanceUID()), "mono soft");
        for (const MXFProperty* each : set.getDescription().properties()) {
            if (each->isPresent(set)) {
                writeProperty(set, *each, depth);
            } else if (set.isMissing(each->label())) {
                property(each->name(), "<span class=\"badge error\">missing</span>");
            }
        }
        for (auto dark = set.beginDarkProperties(); dark != set.endDarkProperties(); ++dark) {
            property("dark",
                     "<span class=\"mono\">" + toString(dark->first) + "</span><br>" +
                         escaped(describe(scalarOf(dark->second))),
                     "dark");
        }
        out_ << "</dl></details>\n";
    }

    void property(const std::string& term, const std::string& value, const char* cssClass = "") {
        if (metadataSize_ <= maxMetadata) {
            metadataSize_ += term.size() + value.size() + 50;
            out_ << "<dt>" << term << "</dt><dd class=\"" << cssClass << "\">"
                 << (metadataSize_ > maxMetadata ? "the page has no room for more" : value) << "</dd>\n";
        }
    }

    void writeProperty(const MetadataRoot& set, const MXFProperty& each, std::size_t depth) {
        const auto owned = ownedBy(set, each);
        if (!owned.empty()) {
            property(each.name(), owned.size() == 1 ? "" : quantity(owned.size(), "set"));
            out_ << "<dd class=\"down\">";
            writeSets(owned, depth + 1);
            out_ << "</dd>\n";
            return;
        }
        std::string targets;
        const MXFPropertyValue value = each.value(set);
        mxfutil::forEachReference(value, [&](const auto& target) {
            targets += (targets.empty() ? "" : ", ") + setLink(*target) + " <span class=\"mono soft\">" +
                       toString(target->getInstanceUID()) + "</span>";
        });
        if (!set.getUnresolvedReferences(each.label()).empty()) {
            targets += " <span class=\"badge warning\">leads nowhere</span> " + escaped(describe(value));
        }
        property(each.name(), targets.empty() ? escaped(describe(value)) : targets);
    }

    std::ostream& out_;
    std::string name_;
    const Inspection& inspection_;
    const LayoutCollector* layout_;

    std::vector<Model> models_;
    std::map<const MetadataRoot*, std::size_t> numbers_; ///< of the sets that the page shows
    std::map<std::uint64_t, SetPlace> places_;           ///< of these, by their positions
    std::vector<const ReportedFinding*> findings_;
    std::map<std::uint64_t, Findings> ofBlock_; ///< by the positions of the blocks
    std::map<std::size_t, Findings> ofSet_;
    std::size_t metadataSize_ = 0; ///< octets of properties written
};

// ---- The file with the page ----

/// Writes the page to the file @p target, and tells on standard error if that is not possible.
///
/// @param source the file that was inspected, which is read once more
inline bool writeHtml(const std::string& target, const std::string& name, std::istream& source,
                      const Inspection& inspection) {
    std::error_code reason;
    if (std::filesystem::equivalent(target, name, reason)) {
        std::cerr << "inspect: " << target << ": is the file to be inspected\n";
        return false;
    }
    std::optional<LayoutCollector> layout;
    if (inspection.fileSize) {
        layout.emplace(source, *inspection.fileSize, inspection.structure.runIn());
    }
    std::ofstream page(target, std::ios::binary);
    if (page) {
        HtmlPage(page, name, inspection, layout ? &*layout : nullptr).write();
    }
    page.close();
    if (!page) {
        std::cerr << "inspect: " << target << ": " << std::generic_category().message(errno) << '\n';
        return false;
    }
    return true;
}

#include "inspect/HtmlLayout.h"

#include <algorithm>
#include <map>

#include "inspect/HtmlRegions.h"
#include "inspect/HtmlText.h"
#include "inspect/Words.h"

void HtmlLayout::write() {
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

void HtmlLayout::writeFileBar() {
    const std::uint64_t size = layout_->parts().back().end();
    out_ << "<div class=\"tools\"><label data-script hidden>Zoom <input id=\"zoom\" type=\"range\" min=\"0\" "
            "max=\"12\" step=\"0.25\" value=\"0\"></label><span class=\"soft\">A block leads to its row in the "
            "tables below.</span></div>\n<div class=\"scroll\" id=\"map\"><div class=\"map\"><div class=\"marks\">";
    for (std::size_t i = 0; i < links_.findings().size(); ++i) {
        const ReportedFinding& finding = *links_.findings()[i];
        const std::string label = std::string(name(finding.level)) + " at " + std::to_string(finding.position) + ": " +
                                  cut(finding.message, 200);
        out_ << "<a class=\"" << name(finding.level) << "\" href=\"#finding-" << i << "\" tabindex=\"-1\" title=\""
             << escaped(label) << "\" style=\"left:"
             << 100 * static_cast<double>(std::min(finding.position, size)) / static_cast<double>(size) << "%\"></a>";
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
        out_ << "<span style=\"left:" << 100.0 * i / ticks << "%\">" << (i == 0 ? "0" : readableSize(size / ticks * i))
             << "</span>";
    }
    out_ << "<span class=\"last\">" << readableSize(size) << "</span></div></div></div>\n"
         << "<div id=\"readout\" data-script hidden>Point at a block to see what it is.</div>\n";
}

void HtmlLayout::writeBar(const std::vector<LayoutBlock>& blocks, const char* cssClass, bool links) {
    out_ << "<div class=\"" << cssClass << "\">";
    for (const LayoutBlock& block : blocks) {
        const RegionStyle& style = styleOf(block.region);
        const auto found = links ? links_.ofBlock().find(block.begin) : links_.ofBlock().end();
        out_ << (links ? "<a" : "<span") << " class=\"b " << style.cssClass;
        if (found != links_.ofBlock().end()) {
            out_ << " flag " << name(links_.worst(found->second));
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
             << quantity(block.size(), "octet") << (block.size() < 1024 ? "" : " (" + readableSize(block.size()) + ")");
        if (block.triplets != 0) {
            out_ << ", " << quantity(block.triplets, "triplet");
        }
        if (!block.octets.empty()) {
            out_ << ": " << shares(block);
        }
        if (found != links_.ofBlock().end()) {
            out_ << "; " << quantity(found->second.size(), "finding");
        }
        out_ << "\"><span>" << (!block.octets.empty() ? shares(block) : style.name) << "</span>"
             << (links ? "</a>" : "</span>");
    }
    out_ << "</div>";
}

void HtmlLayout::writeLegend() {
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

std::string HtmlLayout::swatch(Region region, const std::string& style) {
    return std::string("<i class=\"sw ") + styleOf(region).cssClass + "\"" + style + "></i>";
}

std::string HtmlLayout::swatch(const LayoutBlock& block) {
    return swatch(block.region, !block.octets.empty() ? " style=\"background:" + stripes(block) + "\"" : "");
}

std::string HtmlLayout::shortHeading(const LayoutPart& part, std::uint64_t number) {
    if (part.isPartition()) {
        return std::to_string(number) + " " + name(mxfutil::partitionKind(part.key));
    }
    return part.blocks.front().region == Region::Omitted ? quantity(part.partitions, "partition") + " left out"
                                                         : styleOf(part.blocks.front().region).name;
}

void HtmlLayout::writeParts() {
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

void HtmlLayout::writePart(const LayoutPart& part, std::uint64_t number, bool unfolded) {
    out_ << "<div class=\"part\"><h3>" << shortHeading(part, number) << "<span>";
    if (part.isPartition()) {
        out_ << textName(mxfutil::partitionStatus(part.key)) << "</span><span>body SID " << part.pack.bodySID
             << ", index SID " << part.pack.indexSID << "</span><span>";
    }
    out_ << "from " << links_.link(part.begin()) << " (" << inHex(part.begin()) << ")</span><span>"
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
             << links_.badge(links_.ofBlock(), block.begin) << "</tr>\n";
    }
    out_ << "</tbody></table></div></details></div>\n";
}

std::string HtmlLayout::contents(const LayoutPart& part, const LayoutBlock& block) const {
    switch (block.region) {
    case Region::PartitionPack:
        return "<a href=\"#partitions\">in the table of partitions</a>";
    case Region::HeaderMetadata:
        for (std::size_t i = 0; i < links_.models().size(); ++i) {
            if (links_.models()[i].found->partition == part.begin()) {
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

#include "inspect/HtmlMetadata.h"

#include <algorithm>

#include "inspect/HtmlText.h"
#include "inspect/Words.h"

void HtmlMetadata::write() {
    beginSection("metadata", "Header metadata");
    if (links_.models().empty()) {
        out_ << "<p class=\"soft\">none</p>\n";
    } else {
        out_ << "<p class=\"tools\" data-script hidden><button type=\"button\" data-unfold=\"all\" "
                "data-of=\"#metadata\">Unfold all</button> <button type=\"button\" data-unfold=\"none\" "
                "data-of=\"#metadata\">Fold all</button></p>\n";
    }
    for (std::size_t i = 0; i < links_.models().size(); ++i) {
        const HtmlLinks::Model& model = links_.models()[i];
        out_ << "<div class=\"part\" id=\"model-" << i << "\"><h3>Partition at " << links_.link(model.found->partition)
             << "</h3>\n";
        if (model.sameAs != nullptr) {
            const auto same = std::find_if(links_.models().begin(), links_.models().end(),
                                           [&](const HtmlLinks::Model& other) { return other.found == model.sameAs; });
            out_ << "<p>the same as in the <a href=\"#model-" << same - links_.models().begin() << "\">partition at "
                 << model.sameAs->partition << "</a></p>\n";
        } else {
            writeSets(model.found->model, i == 0 ? 0 : 1);
        }
        out_ << "</div>\n";
    }
    writeOmitted(inspection_.metadata.models().omitted(), "partitions with header metadata");
    out_ << "</section>\n";
}

std::string HtmlMetadata::heading(const MetadataRoot& set) {
    std::string text = std::string("<b>") + set.getDescription().name() + "</b>";
    for (const MXFProperty* property : set.getDescription().properties()) {
        const std::string property_name = property->name();
        if (property->isPresent(set) &&
            (property_name == "name" || property_name == "trackName" || property_name == "trackID" ||
             property_name == "productName" || property_name == "duration")) {
            text +=
                " <span class=\"soft\">" + property_name + " " + escaped(describe(property->value(set))) + "</span>";
        }
    }
    return text;
}

void HtmlMetadata::writeSet(const MetadataRoot& set, std::size_t number, std::size_t depth) {
    out_ << "<details class=\"set\" id=\"set-" << number << (depth < 3 ? "\" open" : "\"") << "><summary>"
         << heading(set) << links_.badge(links_.ofSet(), number) << "</summary><dl class=\"set-body\">\n";
    if (set.hasStartStreampos()) {
        property("at", links_.link(positionOf(set)) + " (" + inHex(positionOf(set)) + ")", "soft");
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

void HtmlMetadata::property(const std::string& term, const std::string& value, const char* cssClass) {
    if (metadataSize_ <= maxMetadata) {
        metadataSize_ += term.size() + value.size() + 50;
        out_ << "<dt>" << term << "</dt><dd class=\"" << cssClass << "\">"
             << (metadataSize_ > maxMetadata ? "the page has no room for more" : value) << "</dd>\n";
    }
}

void HtmlMetadata::writeProperty(const MetadataRoot& set, const MXFProperty& each, std::size_t depth) {
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
        targets += (targets.empty() ? "" : ", ") + links_.setLink(*target) + " <span class=\"mono soft\">" +
                   toString(target->getInstanceUID()) + "</span>";
    });
    if (!set.getUnresolvedReferences(each.label()).empty()) {
        targets += " <span class=\"badge warning\">leads nowhere</span> " + escaped(describe(value));
    }
    property(each.name(), targets.empty() ? escaped(describe(value)) : targets);
}

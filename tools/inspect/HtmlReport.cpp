#include "inspect/HtmlReport.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <ostream>
#include <system_error>

#include "inspect/HtmlAssets.h"
#include "inspect/HtmlHeader.h"
#include "inspect/HtmlLayout.h"
#include "inspect/HtmlLinks.h"
#include "inspect/HtmlMetadata.h"
#include "inspect/HtmlTables.h"
#include "inspect/HtmlText.h"
#include "inspect/Layout.h"

namespace {

/// Its size is bounded: of long tables there are the first rows, of very much metadata the first sets.
///
/// @param layout null if the file cannot be read a second time
void writePage(std::ostream& out, const std::string& name, const Inspection& inspection,
               const LayoutCollector* layout) {
    const HtmlLinks links(inspection, layout);
    HtmlTables tables(out, inspection, layout, links);
    const std::string title = escaped(name);
    // The policy holds a browser to what the page promises: nothing comes from elsewhere.
    out << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
           "script-src 'unsafe-inline'; base-uri 'none'; form-action 'none'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
        << title << "</title>\n<style>" << htmlStyle << "</style></head>\n<body>\n";
    HtmlHeader(out, inspection, layout, links).write(name);
    out << "<nav aria-label=\"Sections\"><div><a href=\"#layout\">Layout</a> <a href=\"#findings\">Findings</a> "
           "<a href=\"#partitions\">Partitions</a> <a href=\"#essence\">Essence</a> <a href=\"#index\">Index</a> "
           "<a href=\"#metadata\">Metadata</a></div></nav>\n<main>\n";
    HtmlLayout(out, inspection, layout, links).write();
    tables.writeFindings();
    tables.writePartitions();
    tables.writeEssence();
    tables.writeIndex();
    HtmlMetadata(out, inspection, layout, links).write();
    out << "</main>\n<footer>Written by inspect of the Bryx MXF SDK. Positions count from the first octet of the "
           "file, run-in included.</footer>\n<script>"
        << htmlScript << "</script>\n</body></html>\n";
}

} // namespace

bool writeHtml(const std::string& target, const std::string& name, std::istream& source, const Inspection& inspection) {
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
        writePage(page, name, inspection, layout ? &*layout : nullptr);
    }
    page.close();
    if (!page) {
        std::cerr << "inspect: " << target << ": " << std::generic_category().message(errno) << '\n';
        return false;
    }
    return true;
}

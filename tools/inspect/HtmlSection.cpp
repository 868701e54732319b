#include "inspect/HtmlSection.h"

void HtmlSection::beginSection(const char* id, const std::string& heading) {
    out_ << "<section class=\"card\" id=\"" << id << "\"><h2>" << heading << "</h2>\n";
}

void HtmlSection::writeOmitted(std::uint64_t omitted, const char* entries) {
    if (omitted != 0) {
        out_ << "<p class=\"more\">and " << omitted << " more " << entries << "</p>\n";
    }
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

#include "inspect/HtmlLinks.h"
#include "inspect/Inspection.h"
#include "inspect/Layout.h"
#include "inspect/Table.h"

/// A section of the HTML page. It writes no more than a bounded number of rows.
class HtmlSection {
public:
    /// @param layout null if the file cannot be read a second time
    HtmlSection(std::ostream& out, const Inspection& inspection, const LayoutCollector* layout, const HtmlLinks& links)
        : out_(out), inspection_(inspection), layout_(layout), links_(links) {}

protected:
    static constexpr std::size_t maxRows = 2000;

    void beginSection(const char* id, const std::string& heading);

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

    void writeOmitted(std::uint64_t omitted, const char* entries);

    std::ostream& out_;
    const Inspection& inspection_;
    const LayoutCollector* layout_;
    const HtmlLinks& links_;
};

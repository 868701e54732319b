#pragma once

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// Prints rows of text in columns that are as wide as their widest cell.
class Table {
public:
    using Row = std::vector<std::string>;

    enum Alignment { Left, Right };

    struct Column {
        std::string title;
        Alignment alignment = Left;
        std::string subtitle = {}; ///< second line of the title
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    const std::vector<Column>& columns() const { return columns_; }

    /// @param list has forEach(), and omitted(), which is mentioned below the rows unless it is 0
    /// @param entries what to call them there
    /// @param toRow makes the cells of an entry; it is called twice for each, so that the rows need not be kept
    template <class List, class ToRow>
    void print(std::ostream& out, const std::string& heading, const char* entries, const List& list,
               ToRow toRow) const {
        Row titles;
        Row subtitles;
        std::vector<std::size_t> widths;
        for (const Column& column : columns_) {
            titles.push_back(column.title);
            subtitles.push_back(column.subtitle);
            widths.push_back(std::max(column.title.size(), column.subtitle.size()));
        }
        bool empty = true;
        list.forEach([&](const auto& entry) {
            empty = false;
            const Row row = toRow(entry);
            for (std::size_t i = 0; i < row.size(); ++i) {
                widths[i] = std::max(widths[i], row[i].size());
            }
        });
        out << '\n' << heading << (empty ? ": none\n" : "\n");
        if (!empty) {
            printRow(out, titles, widths);
            printRow(out, subtitles, widths);
            list.forEach([&](const auto& entry) { printRow(out, toRow(entry), widths); });
        }
        if (list.omitted() != 0) {
            out << "  ... and " << list.omitted() << " more " << entries << '\n';
        }
    }

private:
    void printRow(std::ostream& out, const Row& row, const std::vector<std::size_t>& widths) const {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - row[i].size(), ' ');
            line += "  " + (columns_[i].alignment == Right ? padding + row[i] : row[i] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        if (!line.empty()) {
            out << line << '\n';
        }
    }

    std::vector<Column> columns_;
};

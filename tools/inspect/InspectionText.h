#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "inspect/Inspection.h"
#include "mxf/metadata/model/MXFLabelNames.h"
#include "util/hex.h"

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
    /// The cells come from toRow(entry). It is called twice for each, so that the rows need not be kept.
    template <class List>
    void print(std::ostream& out, const std::string& heading, const char* entries, const List& list) const {
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

inline const char* textName(MXFPartitionStatus status) {
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

/// The usual name of an operational pattern in brackets, such as " (OP1a)"; empty for patterns without one. Octets 12
/// and 13 tell the item and the package complexity (ST 377-1 §8.3); OP-Atom (ST 390) has 10h.
inline std::string patternName(const KLVKey& label) {
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

/// "no errors", "1 error", "2 errors".
inline std::string quantity(std::uint64_t count, const std::string& thing) {
    return (count == 0 ? "no" : std::to_string(count)) + " " + thing + (count == 1 ? "" : "s");
}

inline void printFile(std::ostream& out, const std::string& name, const Inspection& inspection) {
    const std::uint64_t runIn = inspection.structure.runIn();
    out << "File: " << name << "\nSize: ";
    if (inspection.fileSize) {
        out << *inspection.fileSize << " octets\n";
    } else {
        out << "unknown (the input cannot seek)\n";
    }
    out << "Run-in: " << (runIn == 0 ? "none" : std::to_string(runIn) + " octets") << '\n';
}

/// The labels of the first partition, and those of others that do not repeat what the one before has.
inline void printLabels(std::ostream& out, const StructureCollector::Partitions& partitions) {
    const MXFPartitionPack* previous = nullptr;
    partitions.forEach([&](const FoundPartition& partition) {
        const MXFPartitionPack& pack = partition.pack;
        const bool repeats = previous != nullptr && pack.operationalPattern == previous->operationalPattern &&
                             pack.essenceContainers == previous->essenceContainers;
        if (!repeats) {
            if (previous != nullptr) {
                out << "  from offset " << partition.offset << " on\n";
            }
            out << "  operational pattern  " << toString(pack.operationalPattern)
                << patternName(pack.operationalPattern) << '\n';
            for (const KLVKey& label : pack.essenceContainers) {
                out << "  essence container    " << toString(label) << '\n';
            }
            if (pack.essenceContainers.empty()) {
                out << "  essence containers   none\n";
            }
        }
        previous = &pack;
    });
}

// The tables of a report and the cells of their rows.

inline Table partitionTable() {
    return Table({{"offset", Table::Right},
                  {"kind"},
                  {"status"},
                  {"version"},
                  {"KAG", Table::Right},
                  {"this", Table::Right, "partition"},
                  {"previous", Table::Right, "partition"},
                  {"footer", Table::Right, "partition"},
                  {"header", Table::Right, "octets"},
                  {"index", Table::Right, "octets"},
                  {"index", Table::Right, "SID"},
                  {"body", Table::Right, "offset"},
                  {"body", Table::Right, "SID"}});
}
inline Table::Row toRow(const FoundPartition& partition) {
    const MXFPartitionPack& pack = partition.pack;
    return {std::to_string(partition.offset),
            name(mxfutil::partitionKind(partition.key)),
            textName(mxfutil::partitionStatus(partition.key)),
            std::to_string(pack.majorVersion) + "." + std::to_string(pack.minorVersion),
            std::to_string(pack.kagSize),
            std::to_string(pack.thisPartition),
            std::to_string(pack.previousPartition),
            std::to_string(pack.footerPartition),
            std::to_string(pack.headerByteCount),
            std::to_string(pack.indexByteCount),
            std::to_string(pack.indexSID),
            std::to_string(pack.bodyOffset),
            std::to_string(pack.bodySID)};
}

inline Table randomIndexTable() {
    return Table({{"byte offset", Table::Right}, {"body SID", Table::Right}});
}
inline Table::Row toRow(const MXFRandomIndexEntry& entry) {
    return {std::to_string(entry.byteOffset), std::to_string(entry.bodySID)};
}

inline Table segmentTable() {
    return Table({{"offset", Table::Right},
                  {"index", Table::Right, "SID"},
                  {"body", Table::Right, "SID"},
                  {"edit rate", Table::Right},
                  {"start", Table::Right},
                  {"duration", Table::Right},
                  {"octets of an", Table::Right, "edit unit"},
                  {"entries", Table::Right},
                  {"slices", Table::Right},
                  {"pos", Table::Right, "tables"},
                  {"delta", Table::Right, "entries"}});
}
inline Table::Row toRow(const FoundSegment& found) {
    const MXFIndexTableSegment& segment = found.segment;
    return {std::to_string(found.offset),
            std::to_string(segment.indexSID),
            std::to_string(segment.bodySID),
            toString(segment.indexEditRate),
            std::to_string(segment.indexStartPosition),
            std::to_string(segment.indexDuration),
            std::to_string(segment.editUnitByteCount),
            std::to_string(found.entries),
            std::to_string(segment.sliceCount),
            std::to_string(segment.posTableCount),
            std::to_string(found.deltaEntries)};
}

inline Table essenceTable() {
    return Table({{"key"}, {"kind"}, {"elements", Table::Right}, {"octets", Table::Right}});
}
inline Table otherTripletsTable() {
    return Table({{"key"}, {"triplets", Table::Right}, {"octets", Table::Right}});
}
inline Table::Row toRow(const ElementCount& count) {
    const char* const kind = essenceKind(count.key);
    Table::Row row{toString(count.key)};
    if (kind != nullptr) {
        row.emplace_back(kind);
    }
    row.push_back(std::to_string(count.elements));
    row.push_back(std::to_string(count.octets));
    return row;
}

inline void printStructure(std::ostream& out, const StructureCollector& structure) {
    partitionTable().print(out, "Partitions", "partitions", structure.partitions());
    printLabels(out, structure.partitions());
    randomIndexTable().print(out, "Random index", "entries",
                             structure.randomIndex().value_or(StructureCollector::RandomIndex{}));
}

/// A text in quotes, with nothing in it that a terminal would act on.
inline std::string inQuotes(const std::string& text) {
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

/// @p text in UTF-8 with an ellipsis in place of what is beyond @p maxSize octets.
inline std::string cut(std::string text, std::size_t maxSize) {
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

/// A value as people read it; long ones are cut.
inline std::string describe(const MXFScalar& value) {
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

inline std::string describe(const MXFPropertyValue& value) {
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

/// Prints a set and, indented below the references to them, the sets that it owns.
inline void printSet(std::ostream& out, const MetadataRoot& set, const std::string& indent) {
    out << indent << set.getDescription().name() << "  " << toString(set.getInstanceUID()) << "  at offset "
        << std::streamoff{set.getStartStreampos()} << '\n';
    for (const MXFProperty* property : set.getDescription().properties()) {
        if (!property->isPresent(set)) {
            continue;
        }
        const auto owned = ownedBy(set, *property);
        out << indent << "  " << property->name()
            << (owned.empty() ? ": " + describe(property->value(set)) : std::string()) << '\n';
        for (const auto& target : owned) {
            printSet(out, *target, indent + "    ");
        }
    }
    for (auto dark = set.beginDarkProperties(); dark != set.endDarkProperties(); ++dark) {
        out << indent << "  dark " << toString(dark->first) << ": " << describe(scalarOf(dark->second)) << '\n';
    }
}

/// Whether the model of a partition says what that of another one does.
inline bool repeats(const FoundModel& found, const FoundModel& other) {
    return found.model.size() == other.model.size() &&
           mxfutil::firstDifference(*found.model.front(), *other.model.front()).empty();
}

/// The header metadata of the first partition that has any, and of others where they do not repeat it.
inline void printMetadata(std::ostream& out, const MetadataCollector::Models& models) {
    const FoundModel* previous = nullptr;
    models.forEach([&](const FoundModel& found) {
        out << "\nHeader metadata of the partition at offset " << found.partition;
        if (previous != nullptr && repeats(found, *previous)) {
            out << ": as before\n";
            return;
        }
        out << '\n';
        for (const auto& set : found.model) {
            printSet(out, *set, "  ");
        }
        previous = &found;
    });
    if (previous == nullptr) {
        out << "\nHeader metadata: none\n";
    }
    if (models.omitted() != 0) {
        out << "  ... and that of " << models.omitted() << " more partitions\n";
    }
}

inline void printIndex(std::ostream& out, const IndexCollector& index) {
    segmentTable().print(out, "Index table segments", "segments", index.segments());
}

/// "from 10:00:00:00 to 10:00:01:24"; empty if neither the first nor the last package has a timecode.
inline std::string timecodeRange(const BodyCounter& body) {
    if (!body.firstTimecode() && !body.lastTimecode()) {
        return {};
    }
    const auto describeTimecode = [](const boost::optional<Timecode>& timecode) {
        return timecode ? toString(*timecode) : "no timecode";
    };
    return "from " + describeTimecode(body.firstTimecode()) + " to " + describeTimecode(body.lastTimecode());
}

inline void printBody(std::ostream& out, const BodyCounter& body) {
    essenceTable().print(out, "Essence", "elements", body.essence());
    const std::string timecodes = timecodeRange(body);
    out << "\nContent packages: " << (body.packages() == 0 ? "none" : std::to_string(body.packages()))
        << (timecodes.empty() ? "" : ", ") << timecodes
        << "\nSystem elements: " << (body.systemElements() == 0 ? "none" : std::to_string(body.systemElements()))
        << '\n';
}

inline Table findingTable() {
    return Table({{"level"}, {"position", Table::Right}, {"message"}});
}
inline Table::Row toRow(const ReportedFinding& finding) {
    return {name(finding.level), std::to_string(finding.position), finding.message};
}

/// What to think of the file as a whole.
inline std::string verdict(const FindingCollector& findings) {
    const bool readToEnd = findings.count(klvutil::FindingLevel::fatal) == 0;
    return (readToEnd ? "The file was read to its end: " : "The file could not be read to its end. Before that: ") +
           quantity(findings.count(klvutil::FindingLevel::error), "error") + ", " +
           quantity(findings.count(klvutil::FindingLevel::warning), "warning") + ".";
}

inline void printFindings(std::ostream& out, const FindingCollector& findings) {
    findingTable().print(out, "Findings", "findings", findings);
    out << '\n' << verdict(findings) << '\n';
}

/// Prints what people want to see first: the structure as a table, what the bodies hold, what is wrong.
inline void printText(std::ostream& out, const std::string& name, const Inspection& inspection) {
    printFile(out, name, inspection);
    printStructure(out, inspection.structure);
    printMetadata(out, inspection.metadata.models());
    printIndex(out, inspection.index);
    printBody(out, inspection.body);
    otherTripletsTable().print(out, "Generic streams", "triplets", inspection.genericStreams.triplets());
    printFindings(out, inspection.findings);
}

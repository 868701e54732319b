#include "inspect/Rows.h"

#include <string>

#include "inspect/Words.h"

Table partitionTable() {
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

Table::Row toRow(const FoundPartition& partition) {
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

Table randomIndexTable() {
    return Table({{"byte offset", Table::Right}, {"body SID", Table::Right}});
}

Table::Row toRow(const MXFRandomIndexEntry& entry) {
    return {std::to_string(entry.byteOffset), std::to_string(entry.bodySID)};
}

Table segmentTable() {
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

Table::Row toRow(const FoundSegment& found) {
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

Table essenceTable() {
    return Table({{"key"}, {"kind"}, {"elements", Table::Right}, {"octets", Table::Right}});
}

Table otherTripletsTable() {
    return Table({{"key"}, {"triplets", Table::Right}, {"octets", Table::Right}});
}

Table::Row toRow(const ElementCount& count) {
    const char* const kind = essenceKind(count.key);
    Table::Row row{toString(count.key)};
    if (kind != nullptr) {
        row.emplace_back(kind);
    }
    row.push_back(std::to_string(count.elements));
    row.push_back(std::to_string(count.octets));
    return row;
}

Table findingTable() {
    return Table({{"level"}, {"position", Table::Right}, {"message"}});
}

Table::Row toRow(const ReportedFinding& finding) {
    return {name(finding.level), std::to_string(finding.position), finding.message};
}

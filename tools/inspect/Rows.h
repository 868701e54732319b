#pragma once

#include "inspect/Inspection.h"
#include "inspect/Table.h"

/// @file
/// The tables of a report and the cells of their rows.

Table partitionTable();

Table::Row toRow(const FoundPartition& partition);

Table randomIndexTable();

Table::Row toRow(const MXFRandomIndexEntry& entry);

Table segmentTable();

Table::Row toRow(const FoundSegment& found);

Table essenceTable();

Table otherTripletsTable();

Table::Row toRow(const ElementCount& count);

Table findingTable();

Table::Row toRow(const ReportedFinding& finding);

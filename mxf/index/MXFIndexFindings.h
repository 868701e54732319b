#pragma once

#include "klv/Finding.h"

/// @file
/// The findings about index table segments.

namespace bryx::mxfutil::findings {

/// Index table segments.
inline constexpr util::uuid indexBase{
    {0x8d, 0x51, 0xe3, 0x0c, 0x77, 0x9f, 0x4b, 0x26, 0xa1, 0x08, 0x3f, 0xc2, 0x64, 0xd9, 0x1e, 0x00}};

/// The rows of the table: name, base, index, level, message; "%" stands for what the finding is about
#define BRYX_INDEX_FINDINGS(ROW)                                                                                       \
    ROW(inconsistentDurationAndByteCount, indexBase, 1, warning, "inconsistent indexDuration and editUnitByteCount")   \
    ROW(inconsistentDurationAndEntries, indexBase, 2, warning, "inconsistent indexDuration and indexEntryArray")       \
    ROW(inconsistentByteCountAndStart, indexBase, 3, warning, "inconsistent editUnitByteCount and indexStartPosition") \
    ROW(inconsistentByteCountAndEntries, indexBase, 4, warning, "inconsistent editUnitByteCount and indexEntryArray")  \
    ROW(missingIndexProperty, indexBase, 5, error, "missing %")                                                        \
    ROW(invalidIndexProperty, indexBase, 6, error, "invalid % value")                                                  \
    ROW(unsupportedIndexTag, indexBase, 7, error, "unsupported tag in index segment")                                  \
    ROW(inconsistentSlices, indexBase, 8, warning, "inconsistent sliceCount and deltaEntryArray")                      \
    ROW(inconsistentPosTables, indexBase, 9, warning, "inconsistent posTableCount and deltaEntryArray")

BRYX_INDEX_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings

#pragma once

#include "klv/Finding.h"

/// @file
/// The findings of the engines that follow the partition layout of a file.

namespace bryx::mxfutil::findings {

/// The partition layout.
inline constexpr util::uuid layoutBase{
    {0xea, 0x6d, 0xf1, 0xfe, 0x81, 0x73, 0x4a, 0xd4, 0x94, 0x3c, 0xc2, 0x86, 0xc0, 0xd7, 0x85, 0x00}};

/// The rows of the table: name, base, index, level, message
#define BRYX_ENGINE_FINDINGS(ROW)                                                                                      \
    ROW(unexpectedFixedLengthPack, layoutBase, 1, error, "unexpected fixed length pack")                               \
    ROW(unexpectedIndividualItem, layoutBase, 2, error, "unexpected individual item")                                  \
    ROW(unexpectedLabel, layoutBase, 3, error, "unexpected label")                                                     \
    ROW(unexpectedUniversalSet, layoutBase, 4, error, "unexpected universal set")                                      \
    ROW(unexpectedLocalSet, layoutBase, 5, error, "unexpected local set")                                              \
    ROW(unexpectedVariableLengthPack, layoutBase, 6, error, "unexpected variable length pack")                         \
    ROW(unexpectedWrapper, layoutBase, 7, error, "unexpected wrapper")                                                 \
    ROW(incorrectHeaderByteCount, layoutBase, 8, error, "incorrect headerByteCount")                                   \
    ROW(incorrectIndexByteCount, layoutBase, 9, error, "incorrect indexByteCount")                                     \
    ROW(adjacentFillItems, layoutBase, 10, warning, "adjacent fill items should be concatenated")

BRYX_ENGINE_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings

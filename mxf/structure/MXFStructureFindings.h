#pragma once

#include "klv/Finding.h"

/// @file
/// The findings about the outer frame of a file: partition packs, random index pack, run-in.

namespace bryx::mxfutil::findings {

/// Partitions and the random index, by MXFStructureValidator and where packs are decoded.
inline constexpr util::uuid structureBase{
    {0x46, 0xee, 0xa1, 0x25, 0x26, 0xe9, 0x4c, 0x6c, 0xb1, 0x73, 0x13, 0x99, 0x96, 0x0e, 0x3d, 0x00}};

/// The run-in.
inline constexpr util::uuid runInBase{
    {0x36, 0x45, 0x5d, 0xaa, 0x59, 0x81, 0x42, 0x9e, 0x9a, 0x57, 0x5e, 0x13, 0x4d, 0xc3, 0x01, 0x00}};

/// The rows of the table: name, base, index, level, message. A partition after a random index pack and a random index
/// pack that is out of place share an identifier.
#define BRYX_STRUCTURE_FINDINGS(ROW)                                                                                   \
    ROW(missingHeaderPartition, structureBase, 1, error, "missing header partition")                                   \
    ROW(unexpectedHeaderPartition, structureBase, 2, error, "unexpected header partition")                             \
    ROW(unexpectedPartition, structureBase, 3, error, "unexpected partition")                                          \
    ROW(partitionAfterRandomIndex, structureBase, 4, error, "unexpected partition")                                    \
    ROW(unexpectedRandomIndex, structureBase, 4, error, "unexpected random index")                                     \
    ROW(generalizedPatternWithRunIn, structureBase, 5, error, "generalized operational pattern with run-in")           \
    ROW(invalidVersion, structureBase, 6, error, "invalid version")                                                    \
    ROW(incompatibleVersion, structureBase, 7, error, "incompatible version")                                          \
    ROW(earlierVersion, structureBase, 8, warning, "earlier version")                                                  \
    ROW(laterVersion, structureBase, 9, warning, "later version")                                                      \
    ROW(incorrectThisPartition, structureBase, 10, warning, "incorrect thisPartition")                                 \
    ROW(incorrectPreviousPartition, structureBase, 11, warning, "incorrect previousPartition")                         \
    ROW(inconsistentFooterPartition, structureBase, 12, warning, "inconsistent footerPartition")                       \
    ROW(incorrectFooterPartition, structureBase, 13, warning, "incorrect footerPartition")                             \
    ROW(incorrectPreviousFooterPartition, structureBase, 14, warning, "incorrect previous footerPartition")            \
    ROW(headerByteCountOffKAG, structureBase, 15, warning, "headerByteCount is not a multiple of kagSize")             \
    ROW(indexByteCountOffKAG, structureBase, 16, warning, "indexByteCount is not a multiple of kagSize")               \
    ROW(inconsistentIndexSID, structureBase, 17, warning, "inconsistent indexSID and indexByteCount")                  \
    ROW(inconsistentBodySID, structureBase, 18, warning, "inconsistent bodySID and bodyOffset")                        \
    ROW(bodySIDInFooter, structureBase, 19, warning, "non-zero bodySID in footer")                                     \
    ROW(incorrectRandomIndex, structureBase, 20, warning, "incorrect random index value")                              \
    ROW(missingRandomIndex, structureBase, 21, error,                                                                  \
        "missing random index or non-zero footerPartition in the header partition pack")                               \
    ROW(missingFooterPartition, structureBase, 22, error, "missing footer partition")                                  \
    ROW(invalidPartitionPack, structureBase, 23, error, "invalid partition pack")                                      \
    ROW(invalidRandomIndexPack, structureBase, 24, error, "invalid random index pack")                                 \
    ROW(incorrectRandomIndexPackLength, structureBase, 25, warning, "incorrect random index pack length")              \
    ROW(unannouncedFooterPartition, structureBase, 26, warning, "missing footer partition")                            \
    ROW(invalidRunIn, runInBase, 1, fatal, "invalid run-in")                                                           \
    ROW(unsuccessfulGet, runInBase, 2, fatal, "unsuccessful get()")

BRYX_STRUCTURE_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings

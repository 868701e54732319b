#pragma once

#include "klv/Finding.h"

/// @file
/// The findings about system items.

namespace bryx::mxfutil::findings {

/// System items.
inline constexpr util::uuid systemBase{
    {0x61, 0xc9, 0x05, 0xb2, 0x8e, 0x3a, 0x4d, 0x77, 0xb4, 0x10, 0xd6, 0x2f, 0x93, 0xa8, 0x5c, 0x00}};

/// The rows of the table: name, base, index, level, message; "%" stands for what the finding is about
#define BRYX_SYSTEM_FINDINGS(ROW)                                                                                      \
    ROW(invalidSDTICPSystemElement, systemBase, 1, error, "invalid SDTI-CP system element")                            \
    ROW(missingSDTICPSystemMetadata, systemBase, 2, error, "missing SDTI-CP system metadata")                          \
    ROW(invalidSDTICPSystemMetadata, systemBase, 3, error, "invalid SDTI-CP system metadata size")                     \
    ROW(unexpectedSDTICPMetadata, systemBase, 4, error, "unexpected extra SDTI-CP % metadata")                         \
    ROW(incorrectSDTICPBlockCount, systemBase, 5, error, "incorrect SDTI-CP % block count")                            \
    ROW(missingSDTICPControlData, systemBase, 6, error, "missing SDTI-CP control data")                                \
    ROW(unexpectedSDTICPControlData, systemBase, 7, error, "unexpected SDTI-CP control data")                          \
    ROW(inconsistentPDProxyTimecodes, systemBase, 8, error, "inconsistent frameCount and timecodes")                   \
    ROW(missingPDProxyProperty, systemBase, 9, error, "missing PDProxy %")                                             \
    ROW(invalidPDProxyProperty, systemBase, 10, error, "invalid PDProxy % value")

BRYX_SYSTEM_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings

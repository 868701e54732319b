#pragma once

#include "klv/Finding.h"

/// @file
/// The findings about primer packs and about the local sets that are decoded through them.

namespace bryx::mxfutil::findings {

/// Primer packs and primed sets.
inline constexpr util::uuid primerBase{
    {0xf9, 0x2f, 0x27, 0x14, 0xa3, 0xcd, 0x46, 0x82, 0x96, 0xc6, 0x2d, 0xc9, 0xe8, 0xe4, 0x52, 0x00}};

/// The rows of the table: name, base, index, level, message
#define BRYX_PRIMER_FINDINGS(ROW)                                                                                      \
    ROW(nonStandardPrimerKey, primerBase, 1, error, "non-standard primer key")                                         \
    ROW(nonStandardPrimerTag, primerBase, 2, warning, "non-standard primer tag")                                       \
    ROW(inconsistentPrimerKey, primerBase, 3, error, "inconsistent primer key")                                        \
    ROW(inconsistentDynamicPrimerKey, primerBase, 4, warning, "inconsistent primer key")                               \
    ROW(inconsistentPrimerTag, primerBase, 5, warning, "inconsistent primer tag")                                      \
    ROW(repeatedPrimerTag, primerBase, 6, error, "repeated primer tag")                                                \
    ROW(invalidPrimerValue, primerBase, 7, error, "invalid primer value")                                              \
    ROW(invalidPrimerPack, primerBase, 8, error, "invalid primer pack")                                                \
    ROW(tagMissingInPrimer, primerBase, 9, error, "tag missing in primer")                                             \
    ROW(repeatedProperty, primerBase, 10, error, "unexpected repeated property")                                       \
    ROW(nonStandardItemLength, primerBase, 11, warning, "non-standard local item length type")

BRYX_PRIMER_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings

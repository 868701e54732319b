#pragma once

#include "klv/Finding.h"

/// @file
/// The findings about the elements of a Generic Container.

namespace bryx::mxfutil::findings {

/// Elements of a Generic Container (ST 379-1).
inline constexpr util::uuid gcBase{
    {0x2e, 0x84, 0x6a, 0xf7, 0x15, 0xbb, 0x43, 0x90, 0x9c, 0x61, 0x0b, 0xd8, 0x52, 0xe7, 0x3f, 0x00}};

/// The rows of the table: name, base, index, level, message
#define BRYX_GC_FINDINGS(ROW)                                                                                          \
    ROW(invalidGCElement, gcBase, 1, error, "invalid GC element")                                                      \
    ROW(invalidGCSystemElement, gcBase, 2, error, "invalid GC system element")                                         \
    ROW(invalidGCEssenceElement, gcBase, 3, error, "invalid GC essence element")                                       \
    ROW(unexpectedGCSystemElement, gcBase, 4, error, "unexpected GC system element")                                   \
    ROW(unexpectedGCEssenceElement, gcBase, 5, error, "unexpected GC essence element")                                 \
    ROW(unsupportedGCEssenceLength, gcBase, 6, error, "unsupported GC essence element length")                         \
    ROW(unsupportedGCSystemLength, gcBase, 7, error, "unsupported GC system element length")                           \
    ROW(unsupportedGCSystemItems, gcBase, 8, error, "too many items in GC system element")

BRYX_GC_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings

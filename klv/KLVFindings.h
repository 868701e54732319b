#pragma once

#include "klv/Finding.h"

/// @file
/// The findings of the KLV layer. All of them end the parse as klvutil::parse_error.

namespace bryx::klvutil::findings {

/// Malformed KLV coding (SMPTE ST 336).
inline constexpr util::uuid codingBase{
    {0x5b, 0x1c, 0x0e, 0x3a, 0x94, 0x2d, 0x4f, 0x60, 0x8a, 0x57, 0xd3, 0x66, 0x10, 0xbe, 0x27, 0x00}};

/// Faults of the stream itself.
inline constexpr util::uuid streamBase{
    {0xe2, 0x80, 0x47, 0xf9, 0x3c, 0x15, 0x4b, 0x9e, 0xb1, 0x0d, 0x72, 0xa8, 0x5f, 0x34, 0xc6, 0x00}};

/// The rows of the table: name, base, index, level, message
#define BRYX_KLV_FINDINGS(ROW)                                                                                         \
    ROW(invalidKey, codingBase, 1, fatal, "invalid SMPTE key")                                                         \
    ROW(unimplementedCoding, codingBase, 1, fatal, "unimplemented SMPTE KLV coding")                                   \
    ROW(invalidBERLongForm, codingBase, 2, fatal, "invalid BER long form")                                             \
    ROW(incorrectUniversalSetLength, codingBase, 3, fatal, "incorrect universal set length")                           \
    ROW(incorrectLocalSetLength, codingBase, 4, fatal, "incorrect local set length")                                   \
    ROW(incorrectVariableLengthPackLength, codingBase, 5, fatal, "incorrect variable length pack length")              \
    ROW(invalidVariableLengthPackType, codingBase, 6, fatal, "invalid variable length pack type")                      \
    ROW(invalidWrapperType, codingBase, 7, fatal, "invalid wrapper type")                                              \
    ROW(lengthOutOfRange, codingBase, 8, fatal, "KLV triplet ends beyond the largest stream position")                 \
    ROW(nestingTooDeep, codingBase, 9, fatal, "KLV triplets are nested too deeply")                                    \
    ROW(streamNotGood, streamBase, 1, fatal, "input stream is not good()")                                             \
    ROW(unsuccessfulRead, streamBase, 2, fatal, "unsuccessful read()")                                                 \
    ROW(unsuccessfulSeek, streamBase, 2, fatal, "unsuccessful seekg()")                                                \
    ROW(unsuccessfulIgnore, streamBase, 2, fatal, "unsuccessful ignore()")

BRYX_KLV_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::klvutil::findings

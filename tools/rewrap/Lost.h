#pragma once

#include <cstdint>
#include <string>

#include "klv/Finding.h"
#include "shared/ErrorPrinter.h"

/// Kinds of things that are not copied, or not as they are.
enum class Lost : std::uint8_t { Triplet, Body, Segment, Table, EditRate, Entries };

inline util::uuid idOf(Lost kind) {
    constexpr util::uuid base{
        {0x3f, 0x71, 0x0a, 0xc4, 0x86, 0x5d, 0x4e, 0x29, 0x9b, 0x12, 0x67, 0xe8, 0x50, 0xd3, 0xa1, 0x00}};
    return klvutil::findingId(base, static_cast<std::uint8_t>(kind));
}

/// Tells that @p what, of which there may be many, is not copied.
inline void report(ErrorPrinter& errors, Lost kind, const std::string& what) {
    errors.error(idOf(kind), what + " is not copied");
}

/// Tells what is written in place of something, of which there may be many.
inline void remark(ErrorPrinter& errors, Lost kind, const std::string& message) {
    errors.remark(idOf(kind), message);
}

#pragma once

#include <cstdint>

#include "util/Api.h"

/// How strictly a file is checked while it is read. Each mode makes the checks of those before it as well;
/// docs/validation.md lists them all.
namespace bryx::BRYXValidationMode {

/// The modes, from the mildest to the strictest.
enum Enum : std::uint8_t {
    None = 0,     ///< only what the parsers find by themselves
    Lenient = 1,  ///< what keeps the file from being decoded
    Standard = 2, ///< what the standards say "shall"
    Strict = 3    ///< what they say "should", recommended practice, and sharp consistency
};

} // namespace bryx::BRYXValidationMode

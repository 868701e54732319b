#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "util/Api.h"

/// @file
/// The static local tags of MXF: those below 0x8000, which ST 377-1, its companions and the registers of SMPTE (RP 210,
/// ST 335, ST 395) give to properties once and for all. A primer pack may give tags from 0x8000 up to any property.

namespace bryx::mxfutil {

/// The first tag that is not static.
inline constexpr std::uint16_t firstDynamicTag = 0x8000;

/// The label of the property with static tag @p tag, or null if that is no such tag.
BRYX_API const KLVKey* staticLabel(std::uint16_t tag) noexcept;

/// The static tag of the property with @p label, of whatever version, or 0 if it has none.
BRYX_API std::uint16_t staticTag(const KLVKey& label) noexcept;

/// Whether the property with @p label, which has a static tag, has none in some of the sets that have it, so that a
/// dynamic tag is as right.
BRYX_API bool isElsewhereDynamic(const KLVKey& label) noexcept;

} // namespace bryx::mxfutil

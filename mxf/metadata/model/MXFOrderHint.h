#pragma once

#include "klv/KLVKey.h"
#include "util/Api.h"

/// @file
/// The labels of dark properties that tell a coder of a model how to write it, and are not written themselves. See
/// MXFMetadataModelCoder.

namespace bryx::mxfutil {

/// The label of the dark property that fixes the order of sets.
inline constexpr KLVKey orderHintLabel = klvutil::key("9cef38e7.d80425c1.c3010102.9cad11e0");

/// Whether @p label belongs to the private family whose properties are never written: 9C EF 38 E7 D8 04 25 C1 C3 D2 xx
/// xx 9C AD 11 E0, with any octets 7, 10 and 11.
BRYX_API bool isPrivateLabel(const KLVKey& label) noexcept;

} // namespace bryx::mxfutil

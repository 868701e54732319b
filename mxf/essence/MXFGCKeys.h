#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// What an essence element of a Generic Container holds, as its key tells (ST 379-1).
enum class MXFGCEssenceKind : std::uint8_t { None, Picture, Sound, Data, Compound };

namespace mxfutil {

/// Whether @p key is that of a system element, of the CP or the GC variety: octets 0 to 4, 6 and 8 to 11 tell, and
/// octet 12, which is 04 or 14.
BRYX_API bool isGCSystemElement(const KLVKey& key) noexcept;

/// Whether @p key is that of an essence element of any kind: octets 0 to 6 and 8 to 11 tell.
BRYX_API bool isGCEssenceElement(const KLVKey& key) noexcept;

/// What the essence element with @p key holds: octet 12, the item type, tells. None if it is no essence element, or of
/// an item type that ST 379-1 does not define.
BRYX_API MXFGCEssenceKind gcEssenceKind(const KLVKey& key) noexcept;

} // namespace mxfutil

} // namespace bryx

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// An item of a system element that is a local set or a variable-length pack. Its octets are valid during the call.
struct MXFGCItem {
    std::uint32_t tag = 0; ///< 0 in a pack
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};
/// Those of one system element, in their order there.
using MXFGCItems = std::vector<MXFGCItem>;

/// Receives the system elements of a Generic Container (ST 379-1). Whoever writes a container makes the same calls.
class BRYX_API MXFGCSystemHandler {
public:
    virtual ~MXFGCSystemHandler();

    /// Whether the element with @p key is wanted; if not, it is skipped.
    virtual bool wantsSystemElement(const KLVKey& key) = 0;

    // A wanted element, whole.

    /// Items with tags.
    virtual void localSet(const KLVKey& key, const MXFGCItems& items) = 0;
    /// The value of a pack; @p data is valid during the call.
    virtual void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) = 0;
    /// Items without tags.
    virtual void variableLengthPack(const KLVKey& key, const MXFGCItems& items) = 0;
};

} // namespace bryx

#pragma once

#include <cstdint>

#include "klv/KLVCoding.h"
#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// Receives essence elements in chunks of its own choosing: for elements too long to be in memory, as clip-wrapped
/// essence is. An MXFGCEssenceHandler that is this too is asked for each element that it wants without a buffer.
class BRYX_API MXFGCChunkedEssenceHandler {
public:
    /// The length of an element whose length is not known yet.
    static constexpr std::uint64_t UNKNOWN_KLV_LENGTH = klvutil::unknownLength;

    virtual ~MXFGCChunkedEssenceHandler();

    /// A chunk of an element begins.
    ///
    /// @param length of the element
    /// @param offset of the chunk in the element; 0 for its first
    /// @param[out] size preset to 0, which stands for all that is left; the most octets of the chunk. The last chunk of
    ///     an element has as many as are left.
    /// @param[out] buffer preset to null. If set, it has room for @p size octets, which must not be 0: the chunk is read
    ///     straight into it, and delivered in one piece. Else it is delivered in pieces of the reader's choosing.
    /// @return false to have the element delivered at once if that is at the first chunk, else to skip the rest
    virtual bool startChunkedElement(const KLVKey& key, std::uint64_t length, std::uint64_t offset, std::uint64_t& size,
                                     std::uint8_t*& buffer) = 0;
};

} // namespace bryx

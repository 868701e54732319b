#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// Receives the structure of a Generic Container (ST 379-1): content packages and the elements in them. Whoever writes
/// a container makes the same calls, and those that place elements on the KLV alignment grid as well.
class BRYX_API MXFGCStructureHandler {
public:
    virtual ~MXFGCStructureHandler();

    /// @param kagSize octets of the KLV alignment grid when writing; 0 when reading
    virtual void startStream(std::uint64_t kagSize) = 0;
    virtual void endStream() = 0;

    /// A content package begins: the elements of one edit unit, or of a whole clip.
    virtual void startContentPackage() = 0;
    virtual void endContentPackage() = 0;

    /// A system or essence element begins, and ends, whether anybody wants its content or not.
    virtual void startElement(const KLVKey& key) = 0;
    virtual void endElement(const KLVKey& key) = 0;

    // Not called when reading. What comes between a start and its end is followed by fill; the two do not overlap.

    /// The fill ends @p extraSize octets before the grid: when that many have followed it, such as a key and a length,
    /// the next octet is on the grid.
    virtual void startPad(std::uint64_t extraSize) = 0;
    virtual void endPad() = 0;

    /// The fill ends at a multiple of @p alignment octets, counted from the origin of the grid; 0 stands for the grid.
    virtual void startAlign(std::uint64_t alignment) = 0;
    virtual void endAlign() = 0;
};

} // namespace bryx

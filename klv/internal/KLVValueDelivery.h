#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "klv/KLVHandler.h"
#include "util/assertion_failure.h"

namespace klvutil {

/// Passes a value of @p length octets from @p source to @p handler, chunk by chunk as the handler asks.
///
/// A source has `skip(size)`, `read(to, size)` and `readPiece(size)`, which returns the octets in a place that stays as it
/// is until the next call, and a `pieceSize` that readPiece is never asked to go beyond.
///
/// Requires "valid chunk offset": that the handler asks for octets that are still to come.
template <class Source, class Handler>
void deliverValue(Source& source, Handler& handler, std::uint64_t length) {
    std::uint64_t passed = 0;
    while (passed < length) {
        std::uint64_t offset = passed;
        std::uint64_t size = length - passed;
        std::uint8_t* buffer = nullptr;
        if (!handler.getValueBuffer(length, offset, size, buffer)) {
            source.skip(length - passed);
            return;
        }
        util::require(offset >= passed && offset <= length && size >= 1 && size <= length - offset,
                      "valid chunk offset");
        if (offset > passed) {
            source.skip(offset - passed);
        }
        passed = offset + size;
        if (buffer != nullptr) {
            source.read(buffer, size);
            handler.value(buffer, size);
            continue;
        }
        while (size > 0) {
            const std::uint64_t piece = std::min<std::uint64_t>(size, Source::pieceSize);
            handler.value(source.readPiece(piece), piece);
            size -= piece;
        }
    }
}

/// Octets in memory as deliverValue() takes them.
class MemorySource {
public:
    static constexpr std::uint64_t pieceSize = std::numeric_limits<std::uint64_t>::max();

    explicit MemorySource(const std::uint8_t* data) : next_(data) {}

    void skip(std::uint64_t size) { next_ += size; }
    void read(std::uint8_t* to, std::uint64_t size) { std::copy_n(readPiece(size), size, to); }
    const std::uint8_t* readPiece(std::uint64_t size) {
        const std::uint8_t* const piece = next_;
        next_ += size;
        return piece;
    }

private:
    const std::uint8_t* next_;
};

} // namespace klvutil

#pragma once

#include <algorithm>
#include <cstdint>

#include "klv/KLVHandler.h"
#include "util/assertion_failure.h"

namespace bryx::klvutil {

/// Passes a value of @p length octets from @p source to @p handler, chunk by chunk as the handler asks.
///
/// A source has `skip(size)`, `read(to, size)` and `readPiece(size)`, which returns the octets in a place that stays as it
/// is until the next call, and a `pieceSize` that readPiece is never asked to go beyond.
///
/// Requires "valid chunk offset": that the handler asks for octets that are still to come.
template <class Source>
void deliverValue(Source& source, KLVHandler& handler, std::uint64_t length) {
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

} // namespace bryx::klvutil

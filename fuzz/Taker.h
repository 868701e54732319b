#pragma once

#include <algorithm>

#include "support/Recorders.h"

/// Logs events, and wants of each value what its length suggests: nothing, all of it in pieces, or a chunk in a buffer
/// of its own.
class Taker : public EventRecorder {
public:
    explicit Taker(Log& log, std::string prefix = {}) : EventRecorder(log, std::move(prefix)) {
        chunk = [this](std::uint64_t length, std::uint64_t& offset, std::uint64_t& size, std::uint8_t*& buffer) {
            if (length % 3 == 1 && size > 2) {
                offset += 1;
                size = std::min<std::uint64_t>(size - 2, sizeof own_);
                buffer = own_;
            }
            return length % 3 != 2;
        };
    }

private:
    std::uint8_t own_[32] = {};
};

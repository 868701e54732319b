#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "klv/KLVKey.h"

/// Which elements are meant: those with a key, or those whose key ends in a track number; in one essence container, or in
/// whatever it is.
class Selection {
public:
    /// @param text KEY|TRACKNUMBER[@BODYSID]; throws std::logic_error if it is neither
    explicit Selection(std::string text);

    bool includes(const KLVKey& key) const;

    const std::optional<std::uint32_t>& bodySID() const { return bodySID_; }

private:
    std::optional<KLVKey> key_;
    std::uint32_t trackNumber_ = 0;
    std::optional<std::uint32_t> bodySID_;
};

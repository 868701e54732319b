#pragma once

#include <cstddef>
#include <cstdint>

#include "mxf/structure/MXFRandomIndex.h"

namespace bryx::mxfutil {

/// The longest value of a partition pack that is read: room for some 65,000 essence containers. What is longer is
/// damage, and is not collected in memory.
inline constexpr std::uint64_t maxPartitionPackSize = std::uint64_t{1} << 20U;

/// The longest value of a random index pack that is read: room for 1.4 million partitions.
inline constexpr std::uint64_t maxRandomIndexPackSize = std::uint64_t{1} << 24U;

/// The most entries that a random index pack of that length holds.
inline constexpr std::size_t maxRandomIndexEntries = maxRandomIndexPackSize / randomIndexEntrySize;

} // namespace bryx::mxfutil

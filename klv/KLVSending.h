#pragma once

#include <cstdint>
#include <vector>

#include "klv/KLVHandler.h"
#include "util/Api.h"

namespace bryx::klvutil {

/// Sends a value that is in memory to @p handler, chunk by chunk as the handler asks: what stands between the start and
/// the end event of an item, for those who make events themselves.
///
/// Requires "valid chunk offset": that the handler asks for octets that are still to come.
BRYX_API void sendValue(KLVHandler& handler, const std::uint8_t* data, std::uint64_t size);

/// Sends an individual item that is in memory: start event, value if it is wanted, end event.
BRYX_API void sendIndividualItem(KLVHandler& handler, const KLVKey& key, const std::uint8_t* data, std::uint64_t size);

/// Sends an item of a local set whole: start event, value if it is wanted, end event.
BRYX_API void sendLocalItem(KLVHandler& handler, std::uint32_t tag, const std::vector<std::uint8_t>& value);

} // namespace bryx::klvutil

#include "klv/KLVSending.h"

#include "klv/internal/KLVValueDelivery.h"

namespace klvutil {

void sendValue(KLVHandler& handler, const std::uint8_t* data, std::uint64_t size) {
    MemorySource source(data);
    deliverValue(source, handler, size);
}

void sendIndividualItem(KLVHandler& handler, const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
    if (handler.startIndividualItem(key, size)) {
        sendValue(handler, data, size);
    }
    handler.endIndividualItem(key);
}

void sendLocalItem(KLVHandler& handler, std::uint32_t tag, const std::vector<std::uint8_t>& value) {
    if (handler.startLocalItem(tag, value.size())) {
        sendValue(handler, value.data(), value.size());
    }
    handler.endLocalItem(tag);
}

} // namespace klvutil

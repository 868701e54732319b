#include "klv/KLVHandler.h"

#include "klv/KLVSending.h"

KLVHandler::~KLVHandler() = default;

void KLVHandler::individualItem(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
    if (startIndividualItem(key, size)) {
        klvutil::sendValue(*this, data, size);
    }
    endIndividualItem(key);
}

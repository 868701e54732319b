#include "klv/KLVFillItemKeyFilter.h"

namespace bryx {

void KLVFillItemKeyFilter::setKeyVersion(std::uint8_t version) {
    util::require(version == 1 || version == 2, "valid fill item key version");
    version_ = version;
}

KLVKey KLVFillItemKeyFilter::versioned(const KLVKey& key) const {
    KLVKey result = key;
    if (key == klvutil::fillKey) {
        result[7] = version_;
    }
    return result;
}

bool KLVFillItemKeyFilter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    return version_ == 0 ? next().startIndividualItem(key, length) : next().startIndividualItem(versioned(key), length);
}

void KLVFillItemKeyFilter::endIndividualItem(const KLVKey& key) {
    return version_ == 0 ? next().endIndividualItem(key) : next().endIndividualItem(versioned(key));
}

} // namespace bryx

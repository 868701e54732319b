#pragma once

#include <cstdint>

#include "klv/KLVCoding.h"
#include "klv/Locator.h"

namespace bryx {

/// Where a triplet stands in its stream, as its start event tells.
struct MXFTripletPosition {
    std::uint64_t start = 0;      ///< first octet of the key
    std::uint64_t valueStart = 0; ///< first octet after the length field
    std::uint64_t end = 0;        ///< first octet after the value

    /// The position of a triplet whose start event comes now. @p form is the BER length form in force.
    static MXFTripletPosition of(const Locator& locator, std::uint8_t form, std::uint64_t length) {
        MXFTripletPosition position = ofLabel(locator);
        position.valueStart += klvutil::berLengthFieldSize(form);
        position.end = position.valueStart + length;
        return position;
    }

    /// The position of a label, which has neither length nor value.
    static MXFTripletPosition ofLabel(const Locator& locator) {
        const auto start = static_cast<std::uint64_t>(std::streamoff{locator.streampos()});
        return {start, start + klvutil::keySize, start + klvutil::keySize};
    }
};

} // namespace bryx

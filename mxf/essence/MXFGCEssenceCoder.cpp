#include "mxf/essence/MXFGCEssenceCoder.h"

#include "klv/KLVHandler.h"
#include "util/assertion_failure.h"

namespace bryx {

using util::require;

MXFGCEssenceCoder::~MXFGCEssenceCoder() = default;

bool MXFGCEssenceCoder::startElement(const KLVKey& /*key*/, std::uint64_t /*length*/, std::uint8_t*& /*buffer*/,
                                     std::uint64_t& /*size*/) {
    return true;
}

void MXFGCEssenceCoder::setLengthForm(std::uint8_t form) {
    require(form == klvutil::automaticBERLengthForm || klvutil::isValidBERLengthForm(form), "valid BER length form");
    form_ = isFormFixed_ ? form_ : form;
}

void MXFGCEssenceCoder::setFixedLengthForm(std::uint8_t form) {
    require(klvutil::isValidBERLengthForm(form), "valid BER length form");
    form_ = form;
    isFormFixed_ = true;
}

void MXFGCEssenceCoder::startTriplet(const KLVKey& key, std::uint64_t length) {
    // A length that is not known is longer than any.
    receiver_.berLengthForm(klvutil::fittingBERLengthForm(form_, length));
    require(receiver_.startIndividualItem(key, length), "wants essence");
}

void MXFGCEssenceCoder::element(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
    require(data != nullptr || size == 0, "element has data");
    if (!isChunked_) {
        startTriplet(key, size);
        if (size > 0) {
            receiver_.value(data, size);
        }
        receiver_.endIndividualItem(key);
        return;
    }
    require(key == key_, "correct chunked essence key");
    require(length_ == UNKNOWN_KLV_LENGTH || size <= length_ - offset_, "correct chunked length");
    if (size > 0) {
        receiver_.value(data, size);
    }
    offset_ += size;
    if (offset_ == length_) {
        endChunkedElement();
    }
}

void MXFGCEssenceCoder::endChunkedElement() {
    isChunked_ = false;
    receiver_.endIndividualItem(key_);
}

bool MXFGCEssenceCoder::startChunkedElement(const KLVKey& key, std::uint64_t length, std::uint64_t offset,
                                            std::uint64_t& /*size*/, std::uint8_t*& /*buffer*/) {
    // An element of unknown length may turn out to be empty.
    const bool endsEmpty = isChunked_ && length_ == UNKNOWN_KLV_LENGTH && offset_ == 0 && length == 0;
    if (offset == 0 && !endsEmpty) {
        require(!isChunked_, "not in chunked essence");
        startTriplet(key, length);
        isChunked_ = true;
        key_ = key;
        length_ = length;
        offset_ = 0;
    } else {
        require(isChunked_ && key == key_, "in chunked essence");
        require(offset == offset_, "correct chunk offset");
        require(length_ == UNKNOWN_KLV_LENGTH ? length >= offset_ : length == length_, "correct chunked length");
        length_ = length;
    }
    if (offset_ == length_) {
        endChunkedElement();
    }
    return true;
}

void MXFGCEssenceCoder::pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                                       std::uint64_t /*offset*/) {
    element(key, data, size);
}

void MXFGCEssenceCoder::soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                                     std::uint64_t /*offset*/) {
    element(key, data, size);
}

void MXFGCEssenceCoder::dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                                    std::uint64_t /*offset*/) {
    element(key, data, size);
}

void MXFGCEssenceCoder::compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                                        std::uint64_t /*offset*/) {
    element(key, data, size);
}

} // namespace bryx

#include "extract/Extractor.h"

#include <algorithm>

Extractor::Extractor(const Selection& selection, Output& out, ProgressBar& progress, const ErrorPrinter& positions)
    : selection_(selection), out_(out), progress_(progress), positions_(positions), buffer_(1U << 20U),
      container_(selection.bodySID()) {}

void Extractor::startPartition(const KLVKey& /*key*/, const MXFPartitionPack& pack, std::uint64_t /*headerStart*/) {
    bodySID_ = pack.bodySID;
}

bool Extractor::startElement(const KLVKey& key, std::uint64_t /*length*/, std::uint8_t*& /*buffer*/,
                             std::uint64_t& /*size*/) {
    progress_.reached(positions_.position());
    if (!selection_.includes(key)) {
        return false;
    }
    if (!container_) {
        container_ = bodySID_;
    }
    if (*container_ != bodySID_) {
        otherContainer_ = bodySID_;
        return false;
    }
    ++elements_;
    return true;
}

bool Extractor::startChunkedElement(const KLVKey& /*key*/, std::uint64_t length, std::uint64_t offset,
                                    std::uint64_t& size, std::uint8_t*& buffer) {
    progress_.reached(positions_.position() + offset);
    size = std::min<std::uint64_t>(buffer_.size(), length - offset);
    buffer = buffer_.data();
    return true;
}

void Extractor::pictureElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                               std::uint64_t /*offset*/) {
    out_.write(data, size);
}

void Extractor::soundElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                             std::uint64_t /*offset*/) {
    out_.write(data, size);
}

void Extractor::dataElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                            std::uint64_t /*offset*/) {
    out_.write(data, size);
}

void Extractor::compoundElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                                std::uint64_t /*offset*/) {
    out_.write(data, size);
}

void Extractor::setLengthForm(std::uint8_t /*form*/) {}

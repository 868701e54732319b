#include "klv/GenericKLVWriter.h"

#include <algorithm>
#include <limits>
#include <ostream>

#include "util/assertion_failure.h"
#include "util/byte_order.h"

using util::require;

namespace {

/// Stores a tag or a length in a fixed number of octets.
std::uint8_t putField(std::uint8_t* field, KLVFieldForm form, std::uint64_t value) {
    const std::uint8_t size = klvutil::fieldSize(form);
    require(value >> (8U * size) == 0, "correct local item type and length");
    util::storeBigEndian(field, value, size);
    return size;
}

} // namespace

GenericKLVWriter::~GenericKLVWriter() = default;

void GenericKLVWriter::setLocator(const Locator& /*locator*/) {}

void GenericKLVWriter::requireStarted() const {
    require(started_, "has started");
}

void GenericKLVWriter::startStream(bool accurateLengths) {
    require(!started_, "has not started");
    require(accurateLengths, "unbuffered output is possible");
    started_ = true;
    isLengthUnknown_ = false;
}

void GenericKLVWriter::endStream(bool /*stopped*/) {
    requireStarted();
    started_ = false;
    require(static_cast<bool>(stream_.flush()), "successful write()");
}

void GenericKLVWriter::berLengthForm(std::uint8_t form) {
    requireStarted();
    require(klvutil::isValidBERLengthForm(form), "valid form");
    form_ = form;
}

void GenericKLVWriter::write(const std::uint8_t* octets, std::uint64_t size) {
    // A stream that has failed takes nothing more.
    require(static_cast<bool>(stream_.write(reinterpret_cast<const char*>(octets), static_cast<std::streamsize>(size))),
            "successful write()");
}

bool GenericKLVWriter::startTriplet(const KLVKey& key, std::uint64_t length) {
    requireStarted();
    std::uint8_t head[klvutil::keySize + 9];
    std::copy(key.octets.begin(), key.octets.end(), head);
    write(head, klvutil::keySize + klvutil::storeBERLength(head + klvutil::keySize, form_, length));
    return true;
}

bool GenericKLVWriter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    if (length != klvutil::unknownLength) {
        return startTriplet(key, length);
    }
    const std::streamoff position = stream_.tellp();
    require(position >= 0, "unbuffered output is possible");
    startTriplet(key, 0);
    isLengthUnknown_ = true;
    lengthPosition_ = position + static_cast<std::streamoff>(klvutil::keySize);
    valueSize_ = 0;
    return true;
}

void GenericKLVWriter::endIndividualItem(const KLVKey& /*key*/) {
    requireStarted();
    if (!isLengthUnknown_) {
        return;
    }
    isLengthUnknown_ = false;
    std::uint8_t field[9];
    const std::uint8_t size = klvutil::storeBERLength(field, form_, valueSize_);
    const std::streampos end = stream_.tellp();
    stream_.seekp(lengthPosition_);
    write(field, size);
    require(static_cast<bool>(stream_.seekp(end)), "successful write()");
}

bool GenericKLVWriter::startLabel(const KLVKey& key) {
    requireStarted();
    write(key.octets.data(), klvutil::keySize);
    return true;
}

void GenericKLVWriter::endLabel(const KLVKey& /*key*/) {
    requireStarted();
}

bool GenericKLVWriter::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    return startTriplet(key, length);
}

void GenericKLVWriter::endUniversalSet(const KLVKey& /*key*/) {
    requireStarted();
}

bool GenericKLVWriter::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                     KLVFieldForm lengthForm) {
    tagForm_ = tagForm;
    itemLengthForm_ = lengthForm;
    return startTriplet(key, length);
}

void GenericKLVWriter::endLocalSet(const KLVKey& /*key*/) {
    requireStarted();
}

std::uint8_t GenericKLVWriter::putItemLength(std::uint8_t* field, std::uint64_t length) const {
    return itemLengthForm_ == KLVFieldForm::BER ? klvutil::storeBERLength(field, form_, length)
                                                : putField(field, itemLengthForm_, length);
}

bool GenericKLVWriter::startLocalItem(std::uint32_t tag, std::uint64_t length) {
    requireStarted();
    std::uint8_t head[4 + 9];
    const std::uint8_t tagSize = putField(head, tagForm_, tag);
    write(head, tagSize + putItemLength(head + tagSize, length));
    return true;
}

void GenericKLVWriter::endLocalItem(std::uint32_t /*tag*/) {
    requireStarted();
}

bool GenericKLVWriter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    return startTriplet(key, length);
}

void GenericKLVWriter::endFixedLengthPack(const KLVKey& /*key*/) {
    requireStarted();
}

bool GenericKLVWriter::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    itemLengthForm_ = itemLengthForm;
    return startTriplet(key, length);
}

void GenericKLVWriter::endVariableLengthPack(const KLVKey& /*key*/) {
    requireStarted();
}

bool GenericKLVWriter::startVariableLengthPackItem(std::uint64_t length) {
    requireStarted();
    std::uint8_t field[9];
    write(field, putItemLength(field, length));
    return true;
}

void GenericKLVWriter::endVariableLengthPackItem() {
    requireStarted();
}

bool GenericKLVWriter::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind /*kind*/) {
    return startTriplet(key, length);
}

void GenericKLVWriter::endWrapper(const KLVKey& /*key*/) {
    requireStarted();
}

bool GenericKLVWriter::getValueBuffer(std::uint64_t /*length*/, std::uint64_t& /*offset*/, std::uint64_t& /*size*/,
                                      std::uint8_t*& /*buffer*/) {
    requireStarted();
    return true;
}

void GenericKLVWriter::value(const std::uint8_t* data, std::uint64_t size) {
    requireStarted();
    require(size <= static_cast<std::uint64_t>(std::numeric_limits<std::streamsize>::max()), "valid streamsize");
    write(data, size);
    valueSize_ += size;
}

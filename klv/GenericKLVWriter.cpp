#include "klv/GenericKLVWriter.h"

#include <algorithm>
#include <limits>
#include <ostream>

#include "klv/internal/StreamAccess.h"
#include "util/assertion_failure.h"

namespace bryx {

using util::require;

namespace {

/// The length of what is written straight through must be known: only that of an individual item is told later.
void requireKnown(std::uint64_t length) {
    require(length != klvutil::unknownLength, "unbuffered output is possible");
}

void requireFits(KLVFieldForm form, std::uint64_t value) {
    require(value >> (8U * klvutil::fieldSize(form)) == 0, "correct local item type and length");
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
    const klvutil::StreamExceptionsOff exceptionsOff(stream_);
    require(static_cast<bool>(stream_.flush()), "successful write()");
}

void GenericKLVWriter::berLengthForm(std::uint8_t form) {
    requireStarted();
    require(klvutil::isValidBERLengthForm(form), "valid form");
    form_ = form;
}

void GenericKLVWriter::write(const std::uint8_t* octets, std::uint64_t size) {
    // A stream that has failed takes nothing more.
    require(klvutil::put(stream_, octets, size), "successful write()");
}

bool GenericKLVWriter::startTriplet(const KLVKey& key, std::uint64_t length) {
    requireStarted();
    requireKnown(length);
    std::uint8_t head[klvutil::keySize + 9];
    std::copy(key.octets.begin(), key.octets.end(), head);
    write(head, klvutil::keySize + klvutil::storeBERLength(head + klvutil::keySize, form_, length));
    return true;
}

bool GenericKLVWriter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    if (length != klvutil::unknownLength) {
        return startTriplet(key, length);
    }
    const klvutil::StreamExceptionsOff exceptionsOff(stream_);
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
    const klvutil::StreamExceptionsOff exceptionsOff(stream_);
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

void GenericKLVWriter::requireItemLength(std::uint64_t length) const {
    requireStarted();
    if (itemLengthForm_ == KLVFieldForm::BER) {
        requireKnown(length);
    } else {
        requireFits(itemLengthForm_, length);
    }
}

void GenericKLVWriter::writeItemLength(std::uint64_t length) {
    if (itemLengthForm_ == KLVFieldForm::BER) {
        std::uint8_t field[klvutil::longestBERLengthField];
        write(field, klvutil::storeBERLength(field, form_, length));
    } else {
        klvutil::writeField(stream_, itemLengthForm_, static_cast<std::uint32_t>(length));
    }
}

bool GenericKLVWriter::startLocalItem(std::uint32_t tag, std::uint64_t length) {
    requireItemLength(length);
    requireFits(tagForm_, tag);
    klvutil::writeField(stream_, tagForm_, tag);
    writeItemLength(length);
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
    requireItemLength(length);
    writeItemLength(length);
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

} // namespace bryx

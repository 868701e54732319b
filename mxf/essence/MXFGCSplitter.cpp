#include "mxf/essence/MXFGCSplitter.h"

#include <algorithm>
#include <string>
#include <utility>

#include "klv/ErrorHandler.h"
#include "klv/KLVCoding.h"
#include "klv/KLVSending.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCFindings.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"
#include "util/hex.h"
#include "util/internal/octets.h"

namespace bryx {

namespace findings = mxfutil::findings;
using util::require;

namespace {

/// The longest element that is held in memory.
constexpr std::uint64_t longestHeld = 0xFFFFFF;
/// Up to here an element is delivered where the reader has it, if it comes in one piece. The pieces of a reader are no
/// longer.
constexpr std::uint64_t longestInPlace = 65536;
/// The octets for which there is memory before the first of them has come.
constexpr std::uint64_t firstHeld = std::uint64_t{1} << 20U;

/// The most items of a system element.
constexpr std::size_t maxItems = 65536;

/// "key - 0x" and the length in hexadecimal digits.
std::string lengthText(const KLVKey& key, std::uint64_t length) {
    std::uint8_t octets[8];
    util::storeBigEndian(octets, length, sizeof octets);
    std::string digits;
    util::appendHex(digits, octets, sizeof octets);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    return toString(key) + " - 0x" + digits;
}

} // namespace

MXFGCSplitter::MXFGCSplitter() : MXFGCSplitter(nullptr, nullptr, nullptr) {}

MXFGCSplitter::MXFGCSplitter(MXFGCStructureHandler* structureHandler, MXFGCSystemHandler* systemHandler,
                             MXFGCEssenceHandler* essenceHandler)
    : structureHandler_(structureHandler), systemHandler_(systemHandler), form_(klvutil::automaticBERLengthForm),
      passedForm_(klvutil::automaticBERLengthForm) {
    setEssenceHandler(essenceHandler);
}

MXFGCSplitter::~MXFGCSplitter() = default;

MXFGCStructureHandler& MXFGCSplitter::getStructureHandler() const {
    require(structureHandler_ != nullptr, "structure handler is present");
    return *structureHandler_;
}

MXFGCSystemHandler& MXFGCSplitter::getSystemHandler() const {
    require(systemHandler_ != nullptr, "system handler is present");
    return *systemHandler_;
}

void MXFGCSplitter::setEssenceHandler(MXFGCEssenceHandler* handler) {
    essenceHandler_ = handler;
    chunkedHandler_ = dynamic_cast<MXFGCChunkedEssenceHandler*>(handler);
}

MXFGCEssenceHandler& MXFGCSplitter::getEssenceHandler() const {
    require(essenceHandler_ != nullptr, "essence handler is present");
    return *essenceHandler_;
}

// ---- What keys mean ----

bool MXFGCSplitter::isSystemElement(const KLVKey& key) const {
    return mxfutil::isGCSystemElement(key);
}
bool MXFGCSplitter::isEssenceElement(const KLVKey& key) const {
    return mxfutil::isGCEssenceElement(key);
}
bool MXFGCSplitter::isPictureElement(const KLVKey& key) const {
    return mxfutil::gcEssenceKind(key) == MXFGCEssenceKind::Picture;
}
bool MXFGCSplitter::isSoundElement(const KLVKey& key) const {
    return mxfutil::gcEssenceKind(key) == MXFGCEssenceKind::Sound;
}
bool MXFGCSplitter::isDataElement(const KLVKey& key) const {
    return mxfutil::gcEssenceKind(key) == MXFGCEssenceKind::Data;
}
bool MXFGCSplitter::isCompoundElement(const KLVKey& key) const {
    return mxfutil::gcEssenceKind(key) == MXFGCEssenceKind::Compound;
}
bool MXFGCSplitter::allowsSecondKind() const {
    return false;
}

MXFGCEssenceKind MXFGCSplitter::classify(const KLVKey& key) const {
    return !isEssenceElement(key)   ? MXFGCEssenceKind::None
           : isPictureElement(key)  ? MXFGCEssenceKind::Picture
           : isSoundElement(key)    ? MXFGCEssenceKind::Sound
           : isDataElement(key)     ? MXFGCEssenceKind::Data
           : isCompoundElement(key) ? MXFGCEssenceKind::Compound
                                    : MXFGCEssenceKind::None;
}

// ---- The stream, and what can be in it ----

void MXFGCSplitter::setLocator(const Locator& /*locator*/) {
    isLocated_ = true;
}

void MXFGCSplitter::startStream(bool accurateLengths) {
    require(std::exchange(isLocated_, false) || state_ == State::GCBeforeStart, "before start");
    require(accurateLengths, "has accurate lengths");
    form_ = passedForm_ = klvutil::automaticBERLengthForm;
    packageOpen_ = inElement_ = false;
    delivery_ = Delivery::None;
    invalidKeys_.clear();
    knownKinds_.clear();
    state_ = State::GCStarted;
    if (structureHandler_ != nullptr) {
        structureHandler_->startStream(0);
    }
}

void MXFGCSplitter::endStream(bool /*stopped*/) {
    if (!isRunning()) {
        return;
    }
    if (structureHandler_ != nullptr) {
        if (packageOpen_) {
            structureHandler_->endContentPackage();
        }
        structureHandler_->endStream();
    }
    state_ = State::GCBeforeStart;
}

bool MXFGCSplitter::startLabel(const KLVKey& key) {
    invalidKeys_.report(errorHandler_, findings::invalidGCElement, key);
    return false;
}

bool MXFGCSplitter::startUniversalSet(const KLVKey& key, std::uint64_t /*length*/) {
    return startLabel(key);
}

bool MXFGCSplitter::startWrapper(const KLVKey& key, std::uint64_t /*length*/, KLVWrapperKind /*kind*/) {
    return startLabel(key);
}

inline void MXFGCSplitter::startElement(const KLVKey& key) {
    key_ = key;
    inElement_ = true;
    filled_ = 0;
    delivery_ = Delivery::None;
    if (!packageOpen_) {
        firstKey_ = key;
    }
    if (structureHandler_ != nullptr) {
        tellOfElement();
    }
    packageOpen_ = true;
}

void MXFGCSplitter::tellOfElement() {
    if (!packageOpen_ || key_ == firstKey_) {
        if (packageOpen_) {
            structureHandler_->endContentPackage();
        }
        structureHandler_->startContentPackage();
    }
    structureHandler_->startElement(key_);
}

/// Tells the essence handler of a length form that it has not been told of.
inline void MXFGCSplitter::passLengthForm() {
    if (essenceHandler_ != nullptr && form_ != passedForm_) {
        essenceHandler_->setLengthForm(form_);
        passedForm_ = form_;
    }
}

inline void MXFGCSplitter::endElement(const KLVKey& key) {
    inElement_ = false;
    if (structureHandler_ != nullptr) {
        structureHandler_->endElement(key);
    }
}

// ---- System elements ----

bool MXFGCSplitter::startSystemElement(const KLVKey& key, std::uint64_t length) {
    if (!isSystemElement(key)) {
        invalidKeys_.report(errorHandler_, findings::invalidGCSystemElement, key);
        return false;
    }
    startElement(key);
    require(isRunning(), "before GC system element");
    if (state_ == State::GCEssenceOnly) {
        klvutil::report(errorHandler_, findings::unexpectedGCSystemElement, toString(key));
    }
    state_ = State::GCInSystemItem;
    passLengthForm(); // who writes elements writes system elements with the same form
    if (systemHandler_ == nullptr || !systemHandler_->wantsSystemElement(key)) {
        return false;
    }
    if (length > longestHeld) {
        klvutil::report(errorHandler_, findings::unsupportedGCSystemLength, lengthText(key, length));
        return false;
    }
    own_.clear();
    itemPlaces_.clear();
    delivery_ = Delivery::System;
    return true;
}

/// Delivers a wanted element before it ends, as essence elements are.
template <class Deliver>
void MXFGCSplitter::endSystemElement(const KLVKey& key, Deliver deliver) {
    if (!inElement_) {
        return;
    }
    if (delivery_ == Delivery::System) {
        deliver();
    }
    endElement(key);
}

bool MXFGCSplitter::startItem(std::uint32_t tag) {
    if (delivery_ == Delivery::None) {
        return false;
    }
    if (itemPlaces_.size() == maxItems) {
        klvutil::report(errorHandler_, findings::unsupportedGCSystemItems, toString(key_));
        delivery_ = Delivery::None;
        return false;
    }
    itemPlaces_.push_back({tag, own_.size()});
    return true;
}

const MXFGCItems& MXFGCSplitter::items() {
    items_.clear();
    for (std::size_t i = 0; i < itemPlaces_.size(); ++i) {
        const std::size_t start = itemPlaces_[i].start;
        const std::size_t end = i + 1 < itemPlaces_.size() ? itemPlaces_[i + 1].start : own_.size();
        items_.push_back({itemPlaces_[i].tag, own_.data() + start, end - start});
    }
    return items_;
}

bool MXFGCSplitter::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm /*tagForm*/,
                                  KLVFieldForm /*lengthForm*/) {
    require(isRunning(), "expected local set");
    return startSystemElement(key, length);
}

void MXFGCSplitter::endLocalSet(const KLVKey& key) {
    endSystemElement(key, [&] { systemHandler_->localSet(key, items()); });
}

bool MXFGCSplitter::startLocalItem(std::uint32_t tag, std::uint64_t /*length*/) {
    return startItem(tag);
}

bool MXFGCSplitter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    require(isRunning(), "expected fixed length pack");
    return startSystemElement(key, length);
}

void MXFGCSplitter::endFixedLengthPack(const KLVKey& key) {
    endSystemElement(key, [&] { systemHandler_->fixedLengthPack(key, own_.data(), own_.size()); });
}

bool MXFGCSplitter::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm /*itemLengthForm*/) {
    require(isRunning(), "expected variable length pack");
    return startSystemElement(key, length);
}

void MXFGCSplitter::endVariableLengthPack(const KLVKey& key) {
    endSystemElement(key, [&] { systemHandler_->variableLengthPack(key, items()); });
}

bool MXFGCSplitter::startVariableLengthPackItem(std::uint64_t /*length*/) {
    return startItem(0);
}

// ---- Essence elements ----

/// Essence comes first, or after something else.
void MXFGCSplitter::enterEssence() {
    if (state_ == State::GCStarted) {
        state_ = State::GCEssenceOnly;
        onlyKind_ = kind_;
        return;
    }
    const bool isSecondKind = state_ == State::GCEssenceOnly;
    state_ = State::GCEssenceAfterSystem;
    if (isSecondKind && !allowsSecondKind()) {
        klvutil::report(errorHandler_, findings::unexpectedGCEssenceElement, toString(key_));
    }
}

inline bool MXFGCSplitter::startEssence(const KLVKey& key, std::uint64_t length) {
    if (key == klvutil::fillKey) {
        return false;
    }
    require(isRunning(), "expected individual item");
    const MXFGCEssenceKind kind = knownKinds_.kindOf(key, [this](const KLVKey& k) { return classify(k); });
    if (kind == MXFGCEssenceKind::None) {
        invalidKeys_.report(errorHandler_, findings::invalidGCEssenceElement, key);
        return false;
    }
    startElement(key);
    kind_ = kind;
    if (state_ != State::GCEssenceAfterSystem && !(state_ == State::GCEssenceOnly && kind_ == onlyKind_)) {
        enterEssence();
    }
    if (essenceHandler_ == nullptr) {
        return false;
    }
    passLengthForm();
    callersBuffer_ = nullptr;
    callersSize_ = 0;
    if (!essenceHandler_->startElement(key, length, callersBuffer_, callersSize_)) {
        return false;
    }
    length_ = length;
    delivery_ = callersBuffer_ != nullptr                   ? Delivery::CallersBuffer
                : chunkedHandler_ != nullptr && length != 0 ? Delivery::Chunks
                                                            : wholeDelivery();
    return true;
}

bool MXFGCSplitter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    return startEssence(key, length);
}

/// How an element is delivered at once that no buffer is given for.
inline MXFGCSplitter::Delivery MXFGCSplitter::wholeDelivery() const {
    return length_ <= longestInPlace ? Delivery::InPlace : Delivery::OwnBuffer;
}

inline void MXFGCSplitter::deliver(const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) {
    switch (kind_) {
    case MXFGCEssenceKind::Picture:
        return essenceHandler_->pictureElement(key_, data, size, offset);
    case MXFGCEssenceKind::Sound:
        return essenceHandler_->soundElement(key_, data, size, offset);
    case MXFGCEssenceKind::Data:
        return essenceHandler_->dataElement(key_, data, size, offset);
    case MXFGCEssenceKind::Compound:
        return essenceHandler_->compoundElement(key_, data, size, offset);
    case MXFGCEssenceKind::None:
        util::failAssertion("valid GC essence element key");
    }
}

/// Asks the chunked handler for the chunk that begins at @p offset. @return whether it takes one
bool MXFGCSplitter::asksForChunk(std::uint64_t length, std::uint64_t offset) {
    chunkBuffer_ = nullptr;
    chunkSize_ = 0;
    if (!chunkedHandler_->startChunkedElement(key_, length, offset, chunkSize_, chunkBuffer_)) {
        return false;
    }
    require(chunkBuffer_ == nullptr || chunkSize_ != 0, "valid length");
    return true;
}

bool MXFGCSplitter::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                   std::uint8_t*& buffer) {
    if (delivery_ == Delivery::Chunks && !asksForChunk(length, offset)) {
        delivery_ = offset == 0 ? wholeDelivery() : Delivery::None;
    }
    switch (delivery_) {
    case Delivery::None:
        return false;
    case Delivery::System:
        return true;
    case Delivery::FirstChunk:
    case Delivery::Chunks:
        delivery_ = Delivery::Chunks;
        filled_ = offset;
        size = chunkSize_ == 0 ? size : std::min(chunkSize_, size);
        buffer = chunkBuffer_;
        return true;
    case Delivery::InPlace:
        require(offset == filled_, "valid chunk offset");
        return true;
    case Delivery::CallersBuffer:
        require(offset == 0, "valid chunk offset");
        require(callersSize_ >= length, "valid length");
        buffer = callersBuffer_;
        return true;
    case Delivery::OwnBuffer:
        require(offset == filled_, "valid chunk offset");
        if (length <= longestHeld) {
            // Memory follows the octets that are there, not those that the length claims.
            own_.resize(std::min(length, std::max<std::uint64_t>(own_.capacity(), offset + firstHeld)));
            buffer = own_.data() + offset;
            size = own_.size() - offset;
            return true;
        }
        klvutil::report(errorHandler_, findings::unsupportedGCEssenceLength, lengthText(key_, length));
        deliver(nullptr, length, 0);
        delivery_ = Delivery::None;
        return false;
    }
    return false;
}

void MXFGCSplitter::value(const std::uint8_t* data, std::uint64_t size) {
    switch (delivery_) {
    case Delivery::System:
        util::append(own_, data, size);
        break;
    case Delivery::Chunks:
        deliver(data, size, filled_);
        break;
    case Delivery::InPlace:
        require(size <= length_ - filled_, "valid essence buffer size");
        if (size == length_) {
            deliver(data, size, 0);
            delivery_ = Delivery::None;
            break;
        }
        if (filled_ == 0) {
            own_.clear();
        }
        util::append(own_, data, size);
        break;
    case Delivery::CallersBuffer:
    case Delivery::OwnBuffer: {
        // Read in place as a rule; a sender may have the octets elsewhere.
        std::uint8_t* const to = (delivery_ == Delivery::OwnBuffer ? own_.data() : callersBuffer_) + filled_;
        const std::uint64_t room = delivery_ == Delivery::OwnBuffer ? own_.size() : callersSize_;
        require(size <= room - filled_, "valid essence buffer size");
        if (data != to) {
            std::copy(data, data + size, to);
        }
        break;
    }
    case Delivery::FirstChunk:
    case Delivery::None:
        util::failAssertion("expected value");
    }
    filled_ += size;
}

/// Delivers what has not been delivered yet.
inline void MXFGCSplitter::finishElement(const KLVKey& key) {
    if (delivery_ == Delivery::CallersBuffer || delivery_ == Delivery::OwnBuffer || delivery_ == Delivery::InPlace) {
        const std::uint8_t* const octets = delivery_ == Delivery::CallersBuffer ? callersBuffer_ : own_.data();
        deliver(filled_ == 0 ? nullptr : octets, filled_, 0);
    }
    endElement(key);
}

void MXFGCSplitter::endIndividualItem(const KLVKey& key) {
    if (!inElement_ || key == klvutil::fillKey) {
        return;
    }
    require(key == key_, "correct essence key");
    finishElement(key);
}

void MXFGCSplitter::individualItem(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
    if (!startEssence(key, size)) {
        return endIndividualItem(key);
    }
    if (delivery_ == Delivery::Chunks) {
        delivery_ = asksForChunk(size, 0) ? Delivery::FirstChunk : wholeDelivery();
    }
    if (delivery_ == Delivery::InPlace && size != 0) {
        deliver(data, size, 0);
        delivery_ = Delivery::None;
    } else {
        klvutil::sendValue(*this, data, size);
    }
    finishElement(key);
}

} // namespace bryx

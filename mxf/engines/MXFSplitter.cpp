#include "mxf/engines/MXFSplitter.h"

#include <algorithm>
#include <limits>

#include "klv/ErrorHandler.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFEngineFindings.h"
#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "mxf/structure/MXFStructureValidator.h"
#include "util/assertion_failure.h"

namespace findings = mxfutil::findings;

namespace {

/// The sum, or the largest number where it would wrap: a region that ends there is found to be wrong when the next
/// pack or the end of the stream comes.
std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) {
    return b > std::numeric_limits<std::uint64_t>::max() - a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

} // namespace

const std::streampos& MXFSplitter::DelegatedLocator::streampos() const {
    return held_ || locator_ == nullptr ? position_ : locator_->streampos();
}

void MXFSplitter::DelegatedLocator::follow(const Locator* locator) {
    if (locator == nullptr) {
        position_ = streampos();
    }
    locator_ = locator;
    held_ = false;
}

void MXFSplitter::DelegatedLocator::hold(std::streampos position) {
    position_ = position;
    held_ = true;
}

MXFSplitter::MXFSplitter(MXFStructureHandler* structureHandler, KLVHandler* headerMetadataHandler,
                         KLVHandler* indexHandler, KLVHandler* bodyHandler, bool validate)
    : structureHandler_(structureHandler), headerMetadataHandler_(headerMetadataHandler), indexHandler_(indexHandler),
      bodyHandler_(bodyHandler) {
    util::require(structureHandler != nullptr, "structure handler is present");
    util::require(headerMetadataHandler != nullptr, "header metadata handler is present");
    util::require(indexHandler != nullptr, "index handler is present");
    util::require(bodyHandler != nullptr, "body handler is present");
    if (validate) {
        validator_ = std::make_unique<MXFStructureValidator>(structureHandler);
        structureHandler_ = validator_.get();
    }
}

MXFSplitter::~MXFSplitter() = default;

void MXFSplitter::setErrorHandler(ErrorHandler* errorHandler) {
    errorHandler_ = errorHandler;
    if (validator_) {
        validator_->setErrorHandler(errorHandler);
    }
}

void MXFSplitter::runIn(std::uint64_t length) {
    util::require(state_ == State::BeforeStart, "before start");
    runIn_ = length;
    structureHandler_->runIn(length);
}

void MXFSplitter::setBase(std::uint64_t base) {
    util::require(state_ == State::BeforeStart, "before start");
    base_ = base;
    baseGiven_ = true;
}

void MXFSplitter::setLocator(const Locator& locator) {
    locator_ = &locator;
}

const Locator& MXFSplitter::locator() const {
    util::require(locator_ != nullptr, "has locator");
    return *locator_;
}

void MXFSplitter::startStream(bool accurateLengths) {
    util::require(state_ == State::BeforeStart, "before start");
    const auto start = static_cast<std::uint64_t>(std::streamoff{locator().streampos()});
    util::require(accurateLengths, "has accurate lengths");
    if (!baseGiven_) {
        base_ = start - std::min(runIn_, start);
    }
    delegatedLocator_.follow(locator_);
    if (validator_) {
        validator_->setLocator(delegatedLocator_);
    }
    if (errorHandler_ != nullptr) {
        errorHandler_->setLocator(delegatedLocator_);
    }
    form_ = klvutil::automaticBERLengthForm;
    depth_ = 0;
    delegateStarted_ = false;
    partitionOpen_ = false;
    previousWasFill_ = false;
    state_ = State::InStream;
    structureHandler_->startStructure();
}

void MXFSplitter::endStream(bool stopped) {
    util::require(locator_ != nullptr, "has locator");
    if (!stopped) {
        if (state_ == State::AfterPartitionPack) {
            openPartition();
        }
        if (state_ == State::InHeaderMetadata) {
            findAtEnd(findings::incorrectHeaderByteCount);
        } else if (state_ == State::InIndex) {
            findAtEnd(findings::incorrectIndexByteCount);
        }
    }
    endPartition(stopped);
    if (state_ != State::BeforeStart) {
        if (validator_ && stopped) {
            validator_->stopRequested();
        }
        structureHandler_->endStructure();
    }
    state_ = State::BeforeStart;
    runIn_ = 0;
    baseGiven_ = false;
    delegatedLocator_.follow(nullptr);
    locator_ = nullptr;
}

void MXFSplitter::berLengthForm(std::uint8_t form) {
    form_ = form;
    if (delegateStarted_) {
        delegate().berLengthForm(form);
    }
}

bool MXFSplitter::isDelegating() const {
    return state_ == State::InHeaderMetadata || state_ == State::InIndex || state_ == State::InBody;
}

KLVHandler& MXFSplitter::delegate() {
    switch (state_) {
    case State::InHeaderMetadata:
        return *headerMetadataHandler_;
    case State::InIndex:
        return *indexHandler_;
    case State::InBody:
        return genericStream_ ? skippedBody_ : *bodyHandler_;
    default:
        util::failAssertion("is delegating state");
    }
}

KLVHandler& MXFSplitter::startedDelegate() {
    KLVHandler& handler = delegate();
    if (!delegateStarted_) {
        handler.setLocator(delegatedLocator_);
        handler.startStream(true);
        delegateStarted_ = true;
        if (form_ != klvutil::automaticBERLengthForm) {
            handler.berLengthForm(form_);
        }
    }
    return handler;
}

void MXFSplitter::endDelegate(bool stopped) {
    if (delegateStarted_) {
        delegateStarted_ = false;
        delegate().endStream(stopped);
    }
}

/// A triplet other than a pack begins at the outermost level.
void MXFSplitter::enterRegion(const KLVKey& key, const klvutil::Finding& unexpected) {
    previousWasFill_ = false;
    if (state_ == State::AfterPartitionPack) {
        openPartition();
    }
    if (!isDelegating()) {
        fail(unexpected, &key);
    }
}

template <class Start>
bool MXFSplitter::startElement(const KLVKey& key, std::uint64_t length, const klvutil::Finding& unexpected,
                               Start forward) {
    if (depth_++ == 0) {
        triplet_ = MXFTripletPosition::of(locator(), form_, length);
        enterRegion(key, unexpected);
    }
    return forward(startedDelegate());
}

template <class End>
void MXFSplitter::endElement(const KLVKey& key, const char* expected, End forward) {
    util::require(isDelegating(), expected);
    forward(delegate());
    if (--depth_ == 0) {
        checkRegion(triplet_.end, &key);
    }
}

/// Ends the region that ends at stream position @p end, where the triplet with @p key ends.
void MXFSplitter::checkRegion(std::uint64_t end, const KLVKey* key) {
    if (state_ == State::InHeaderMetadata && end >= headerEnd_) {
        if (end > headerEnd_) {
            fail(findings::incorrectHeaderByteCount, key);
        }
        endDelegate(false);
        state_ = State::InIndex;
    }
    if (state_ == State::InIndex && end >= indexEnd_) {
        if (end > indexEnd_) {
            fail(findings::incorrectIndexByteCount, key);
        }
        endDelegate(false);
        state_ = State::InBody;
    }
}

void MXFSplitter::openPartition() {
    util::require(!partitionOpen_, "is not in partition");
    state_ = State::InHeaderMetadata;
    partitionOpen_ = true;
    genericStream_ = mxfutil::partitionStatus(packKey_) == MXFPartitionStatus::GenericStream;
    headerEnd_ = saturatingSum(headerStart_, pack_.headerByteCount);
    indexEnd_ = saturatingSum(headerEnd_, pack_.indexByteCount);
    delegatedLocator_.hold(static_cast<std::streamoff>(packStart_));
    structureHandler_->startPartition(packKey_, pack_, headerStart_ - base_);
    delegatedLocator_.release();
    checkRegion(headerStart_, nullptr);
}

void MXFSplitter::endPartition(bool stopped) {
    endDelegate(stopped);
    if (partitionOpen_) {
        partitionOpen_ = false;
        structureHandler_->endPartition(packKey_);
    }
}

bool MXFSplitter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    const bool partition = mxfutil::isPartitionPackKey(key);
    if (depth_ == 0 && (partition || key == mxfutil::randomIndexPackKey)) {
        return startPack(key, length, partition);
    }
    return startElement(key, length, findings::unexpectedFixedLengthPack,
                        [&](KLVHandler& next) { return next.startFixedLengthPack(key, length); });
}

/// A partition pack or the random index pack begins.
bool MXFSplitter::startPack(const KLVKey& key, std::uint64_t length, bool partition) {
    if (state_ == State::AfterPartitionPack) {
        openPartition();
    }
    if (state_ != State::InStream && !isDelegating()) {
        fail(findings::unexpectedFixedLengthPack, &key);
    }
    if (state_ == State::InHeaderMetadata) {
        klvutil::report(errorHandler_, findings::incorrectHeaderByteCount, toString(key));
    } else if (state_ == State::InIndex) {
        klvutil::report(errorHandler_, findings::incorrectIndexByteCount, toString(key));
    }
    endPartition(false);
    ++depth_;
    triplet_ = MXFTripletPosition::of(locator(), form_, length);
    state_ = partition ? State::InPartitionPack : State::InRandomIndexPack;
    octets_.clear();
    packCollected_ = length <= (partition ? mxfutil::maxPartitionPackSize : mxfutil::maxRandomIndexPackSize);
    if (!packCollected_) {
        if (partition) {
            fail(findings::invalidPartitionPack, &key);
        }
        klvutil::report(errorHandler_, findings::invalidRandomIndexPack, toString(key));
    }
    return packCollected_;
}

void MXFSplitter::endFixedLengthPack(const KLVKey& key) {
    util::require(locator_ != nullptr, "has locator");
    previousWasFill_ = false;
    if (state_ == State::InPartitionPack) {
        --depth_;
        decodePartitionPack(key);
    } else if (state_ == State::InRandomIndexPack) {
        util::require(key == mxfutil::randomIndexPackKey, "expected fixed length pack");
        --depth_;
        state_ = State::AfterRandomIndexPack;
        if (packCollected_) {
            decodeRandomIndexPack();
        }
    } else {
        endElement(key, "expected fixed length pack", [&](KLVHandler& next) { next.endFixedLengthPack(key); });
    }
}

void MXFSplitter::decodePartitionPack(const KLVKey& key) {
    packKey_ = key;
    pack_ = {};
    if (!mxfutil::readPartitionPack(octets_.data(), octets_.size(), pack_)) {
        fail(findings::invalidPartitionPack, &key);
    }
    packStart_ = triplet_.start;
    headerStart_ = triplet_.end;
    state_ = State::AfterPartitionPack;
}

void MXFSplitter::decodeRandomIndexPack() {
    MXFRandomIndex index;
    if (!mxfutil::readRandomIndex(octets_.data(), octets_.size(), form_, index)) {
        klvutil::report(errorHandler_, findings::incorrectRandomIndexPackLength);
    }
    if (!index.empty()) {
        structureHandler_->randomIndex(index);
    }
}

bool MXFSplitter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    if (state_ == State::AfterPartitionPack && key == klvutil::fillKey) {
        triplet_ = MXFTripletPosition::of(locator(), form_, length);
        if (previousWasFill_) {
            klvutil::report(errorHandler_, findings::adjacentFillItems);
        }
        return false;
    }
    return startElement(key, length, findings::unexpectedIndividualItem,
                        [&](KLVHandler& next) { return next.startIndividualItem(key, length); });
}

void MXFSplitter::endIndividualItem(const KLVKey& key) {
    if (state_ == State::AfterPartitionPack) {
        util::require(key == klvutil::fillKey, "expected individual item");
        headerStart_ = triplet_.end;
        previousWasFill_ = true;
        return;
    }
    endElement(key, "expected individual item", [&](KLVHandler& next) { next.endIndividualItem(key); });
}

bool MXFSplitter::startLabel(const KLVKey& key) {
    if (depth_++ == 0) {
        triplet_ = MXFTripletPosition::ofLabel(locator());
        enterRegion(key, findings::unexpectedLabel);
    }
    return startedDelegate().startLabel(key);
}

void MXFSplitter::endLabel(const KLVKey& key) {
    endElement(key, "expected label", [&](KLVHandler& next) { next.endLabel(key); });
}

bool MXFSplitter::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    return startElement(key, length, findings::unexpectedUniversalSet,
                        [&](KLVHandler& next) { return next.startUniversalSet(key, length); });
}

void MXFSplitter::endUniversalSet(const KLVKey& key) {
    endElement(key, "expected universal set", [&](KLVHandler& next) { next.endUniversalSet(key); });
}

bool MXFSplitter::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                KLVFieldForm lengthForm) {
    return startElement(key, length, findings::unexpectedLocalSet,
                        [&](KLVHandler& next) { return next.startLocalSet(key, length, tagForm, lengthForm); });
}

void MXFSplitter::endLocalSet(const KLVKey& key) {
    endElement(key, "expected local set", [&](KLVHandler& next) { next.endLocalSet(key); });
}

bool MXFSplitter::startLocalItem(std::uint32_t tag, std::uint64_t length) {
    util::require(isDelegating(), "expected local item");
    return delegate().startLocalItem(tag, length);
}

void MXFSplitter::endLocalItem(std::uint32_t tag) {
    util::require(isDelegating(), "expected local item");
    delegate().endLocalItem(tag);
}

bool MXFSplitter::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    return startElement(key, length, findings::unexpectedVariableLengthPack,
                        [&](KLVHandler& next) { return next.startVariableLengthPack(key, length, itemLengthForm); });
}

void MXFSplitter::endVariableLengthPack(const KLVKey& key) {
    endElement(key, "expected variable length pack", [&](KLVHandler& next) { next.endVariableLengthPack(key); });
}

bool MXFSplitter::startVariableLengthPackItem(std::uint64_t length) {
    util::require(isDelegating(), "expected variable length item");
    return delegate().startVariableLengthPackItem(length);
}

void MXFSplitter::endVariableLengthPackItem() {
    util::require(isDelegating(), "expected variable length item");
    delegate().endVariableLengthPackItem();
}

bool MXFSplitter::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) {
    return startElement(key, length, findings::unexpectedWrapper,
                        [&](KLVHandler& next) { return next.startWrapper(key, length, kind); });
}

void MXFSplitter::endWrapper(const KLVKey& key) {
    endElement(key, "expected wrapper", [&](KLVHandler& next) { next.endWrapper(key); });
}

bool MXFSplitter::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                 std::uint8_t*& buffer) {
    if (state_ == State::InPartitionPack || state_ == State::InRandomIndexPack) {
        return true;
    }
    util::require(isDelegating(), "expected value");
    return delegate().getValueBuffer(length, offset, size, buffer);
}

void MXFSplitter::value(const std::uint8_t* data, std::uint64_t size) {
    if (state_ == State::InPartitionPack || state_ == State::InRandomIndexPack) {
        octets_.insert(octets_.end(), data, data + size);
        return;
    }
    util::require(isDelegating(), "expected value");
    delegate().value(data, size);
}

/// At the end of the stream there is nothing to go on with: reporting is enough, but somebody must hear it.
void MXFSplitter::findAtEnd(const klvutil::Finding& finding) const {
    if (errorHandler_ == nullptr) {
        throw klvutil::parse_error(finding, locator().streampos());
    }
    klvutil::report(errorHandler_, finding);
}

void MXFSplitter::fail(const klvutil::Finding& finding, const KLVKey* key) const {
    const std::string detail = key == nullptr ? std::string() : toString(*key);
    klvutil::report(errorHandler_, finding, detail);
    throw klvutil::parse_error(finding, delegatedLocator_.streampos(), detail);
}

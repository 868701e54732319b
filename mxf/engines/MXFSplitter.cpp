#include "mxf/engines/MXFSplitter.h"

#include <algorithm>
#include <limits>

#include "klv/ErrorHandler.h"
#include "klv/KLVSending.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFEngineFindings.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "mxf/structure/MXFStructureValidator.h"
#include "mxf/structure/internal/MXFPartitionTracker.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;
using Pack = MXFPartitionTracker::Pack;

namespace {

/// The sum, or the largest number where it would wrap: a region that ends there is found to be wrong when the next
/// pack or the end of the stream comes.
std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) {
    return b > std::numeric_limits<std::uint64_t>::max() - a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

} // namespace

MXFSplitter::MXFSplitter(MXFStructureHandler* structureHandler, KLVHandler* headerMetadataHandler,
                         KLVHandler* indexHandler, KLVHandler* bodyHandler, bool validate)
    : headerMetadataHandler_(headerMetadataHandler), indexHandler_(indexHandler), bodyHandler_(bodyHandler),
      bodyItemHandler_(dynamic_cast<KLVIndividualItemHandler*>(bodyHandler)) {
    util::require(structureHandler != nullptr, "structure handler is present");
    util::require(headerMetadataHandler != nullptr, "header metadata handler is present");
    util::require(indexHandler != nullptr, "index handler is present");
    util::require(bodyHandler != nullptr, "body handler is present");
    if (validate) {
        validator_ = std::make_unique<MXFStructureValidator>(structureHandler);
        structureHandler = validator_.get();
    }
    tracker_ = std::make_unique<MXFPartitionTracker>(*structureHandler);
}

MXFSplitter::~MXFSplitter() = default;

void MXFSplitter::setErrorHandler(ErrorHandler* errorHandler) {
    errorHandler_ = errorHandler;
    tracker_->setErrorHandler(errorHandler);
    if (validator_) {
        validator_->setErrorHandler(errorHandler);
    }
}

void MXFSplitter::setGenericStreamHandler(KLVHandler* handler) {
    util::require(state_ == State::BeforeStart, "before start");
    genericStreamHandler_ = handler;
}

void MXFSplitter::runIn(std::uint64_t length) {
    util::require(state_ == State::BeforeStart, "before start");
    runIn_ = length;
    tracker_->structureHandler().runIn(length);
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
    tracker_->start(baseGiven_ ? base_ : start - std::min(runIn_, start));
    tracker_->locator().follow(*locator_);
    if (errorHandler_ != nullptr) {
        errorHandler_->setLocator(tracker_->locator());
    }
    form_ = klvutil::automaticBERLengthForm;
    depth_ = 0;
    delegateStarted_ = false;
    previousWasFill_ = false;
    adjacentFill_.clear();
    enter(State::InStream);
    tracker_->structureHandler().startStructure();
}

void MXFSplitter::endStream(bool stopped) {
    util::require(locator_ != nullptr, "has locator");
    const klvutil::Finding* missing = nullptr;
    if (!stopped) {
        if (state_ == State::AfterPartitionPack) {
            openPartition();
        }
        if (state_ == State::InHeaderMetadata) {
            missing = &findings::incorrectHeaderByteCount;
        } else if (state_ == State::InIndex) {
            missing = &findings::incorrectIndexByteCount;
        }
        if (missing != nullptr) {
            klvutil::report(errorHandler_, *missing);
        }
    }
    endPartition(stopped);
    if (state_ != State::BeforeStart) {
        tracker_->endStructure(stopped);
    }
    enter(State::BeforeStart);
    runIn_ = 0;
    baseGiven_ = false;
    tracker_->locator().unfollow();
    locator_ = nullptr;
    // There is nothing left to go on with, so a report is enough; but somebody must hear of it.
    if (missing != nullptr && errorHandler_ == nullptr) {
        throw klvutil::parse_error(*missing, tracker_->locator().streampos());
    }
}

void MXFSplitter::berLengthForm(std::uint8_t form) {
    form_ = form;
    if (delegateStarted_) {
        delegate_->berLengthForm(form);
    }
}

void MXFSplitter::enter(State state) {
    state_ = state;
    switch (state) {
    case State::InHeaderMetadata:
        delegate_ = headerMetadataHandler_;
        break;
    case State::InIndex:
        delegate_ = indexHandler_;
        break;
    case State::InBody:
        delegate_ = !genericStream_                    ? bodyHandler_
                    : genericStreamHandler_ != nullptr ? genericStreamHandler_
                                                       : &skippedBody_;
        break;
    default:
        delegate_ = nullptr;
    }
    itemDelegate_ = state == State::InBody && delegate_ == bodyHandler_ ? bodyItemHandler_ : nullptr;
}

KLVHandler& MXFSplitter::delegate(const char* expected) const {
    util::require(delegate_ != nullptr, expected);
    return *delegate_;
}

KLVHandler& MXFSplitter::startedDelegate() {
    if (!delegateStarted_) {
        startDelegate();
    }
    return *delegate_;
}

void MXFSplitter::startDelegate() {
    delegate("is delegating state").setLocator(tracker_->locator());
    delegate_->startStream(true);
    delegateStarted_ = true;
    if (form_ != klvutil::automaticBERLengthForm) {
        delegate_->berLengthForm(form_);
    }
}

void MXFSplitter::endDelegate(bool stopped) {
    if (delegateStarted_) {
        delegateStarted_ = false;
        delegate_->endStream(stopped);
    }
}

/// A triplet other than a pack begins at the outermost level, not in a body: there it may stand, and need not end anywhere.
void MXFSplitter::enterRegion(const KLVKey& key, const MXFTripletPosition& position,
                              const klvutil::Finding& unexpected) {
    triplet_ = position;
    if (state_ == State::AfterPartitionPack) {
        openPartition();
    }
    if (delegate_ == nullptr) {
        fail(unexpected, &key);
    }
}

template <class Start>
bool MXFSplitter::startElement(const KLVKey& key, std::uint64_t length, const klvutil::Finding& unexpected,
                               Start forward) {
    if (depth_++ == 0 && state_ != State::InBody) {
        enterRegion(key, MXFTripletPosition::of(locator(), form_, length), unexpected);
    }
    return forward(startedDelegate());
}

template <class End>
void MXFSplitter::endElement(const KLVKey& key, const char* expected, End forward) {
    forward(delegate(expected));
    if (--depth_ == 0 && state_ != State::InBody) {
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
        enter(State::InIndex);
    }
    if (state_ == State::InIndex && end >= indexEnd_) {
        if (end > indexEnd_) {
            fail(findings::incorrectIndexByteCount, key);
        }
        endDelegate(false);
        enter(State::InBody);
    }
}

void MXFSplitter::openPartition() {
    enter(State::InHeaderMetadata);
    genericStream_ = mxfutil::partitionStatus(tracker_->key()) == MXFPartitionStatus::GenericStream;
    headerEnd_ = saturatingSum(tracker_->headerStart(), tracker_->pack().headerByteCount);
    indexEnd_ = saturatingSum(headerEnd_, tracker_->pack().indexByteCount);
    tracker_->openPartition();
    checkRegion(tracker_->headerStart(), nullptr);
}

void MXFSplitter::endPartition(bool stopped) {
    endDelegate(stopped);
    tracker_->closePartition();
}

bool MXFSplitter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    if (depth_ == 0 && MXFPartitionTracker::packOf(key) != Pack::None) {
        return startPack(key, length);
    }
    return startElement(key, length, findings::unexpectedFixedLengthPack,
                        [&](KLVHandler& next) { return next.startFixedLengthPack(key, length); });
}

/// A partition pack or the random index pack begins.
bool MXFSplitter::startPack(const KLVKey& key, std::uint64_t length) {
    if (state_ == State::AfterPartitionPack) {
        openPartition();
    }
    if (state_ != State::InStream && delegate_ == nullptr) {
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
    const Pack pack = MXFPartitionTracker::packOf(key);
    enter(pack == Pack::Partition ? State::InPartitionPack : State::InRandomIndexPack);
    const bool wanted = tracker_->startPack(pack, length, triplet_);
    if (pack == Pack::Partition && !wanted) {
        fail(findings::invalidPartitionPack, &key);
    }
    return wanted;
}

void MXFSplitter::endFixedLengthPack(const KLVKey& key) {
    util::require(locator_ != nullptr, "has locator");
    previousWasFill_ = false;
    if (state_ != State::InPartitionPack && state_ != State::InRandomIndexPack) {
        return endElement(key, "expected fixed length pack", [&](KLVHandler& next) { next.endFixedLengthPack(key); });
    }
    const bool partition = state_ == State::InPartitionPack;
    util::require(partition || key == mxfutil::randomIndexPackKey, "expected fixed length pack");
    --depth_;
    enter(partition ? State::AfterPartitionPack : State::AfterRandomIndexPack);
    if (!tracker_->endPack(key, form_)) {
        fail(findings::invalidPartitionPack, &key);
    }
}

bool MXFSplitter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    if (state_ == State::AfterPartitionPack && key == klvutil::fillKey) {
        triplet_ = MXFTripletPosition::of(locator(), form_, length);
        if (previousWasFill_) {
            adjacentFill_.report(errorHandler_, findings::adjacentFillItems, triplet_.start, {});
        }
        return false;
    }
    return startElement(key, length, findings::unexpectedIndividualItem,
                        [&](KLVHandler& next) { return next.startIndividualItem(key, length); });
}

void MXFSplitter::endIndividualItem(const KLVKey& key) {
    if (state_ == State::AfterPartitionPack) {
        util::require(key == klvutil::fillKey, "expected individual item");
        tracker_->fill(triplet_.end);
        previousWasFill_ = true;
        return;
    }
    endElement(key, "expected individual item", [&](KLVHandler& next) { next.endIndividualItem(key); });
}

bool MXFSplitter::startLabel(const KLVKey& key) {
    if (depth_++ == 0 && state_ != State::InBody) {
        enterRegion(key, MXFTripletPosition::ofLabel(locator()), findings::unexpectedLabel);
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
    return delegate("expected local item").startLocalItem(tag, length);
}

void MXFSplitter::endLocalItem(std::uint32_t tag) {
    delegate("expected local item").endLocalItem(tag);
}

bool MXFSplitter::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    return startElement(key, length, findings::unexpectedVariableLengthPack,
                        [&](KLVHandler& next) { return next.startVariableLengthPack(key, length, itemLengthForm); });
}

void MXFSplitter::endVariableLengthPack(const KLVKey& key) {
    endElement(key, "expected variable length pack", [&](KLVHandler& next) { next.endVariableLengthPack(key); });
}

bool MXFSplitter::startVariableLengthPackItem(std::uint64_t length) {
    return delegate("expected variable length item").startVariableLengthPackItem(length);
}

void MXFSplitter::endVariableLengthPackItem() {
    delegate("expected variable length item").endVariableLengthPackItem();
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
    if (delegate_ != nullptr) {
        return delegate_->getValueBuffer(length, offset, size, buffer);
    }
    util::require(tracker_->collecting(), "expected value");
    return true;
}

void MXFSplitter::value(const std::uint8_t* data, std::uint64_t size) {
    if (delegate_ != nullptr) {
        return delegate_->value(data, size);
    }
    util::require(tracker_->collecting(), "expected value");
    tracker_->value(data, size);
}

void MXFSplitter::individualItem(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
    if (itemDelegate_ != nullptr && delegateStarted_ && depth_ == 0) {
        return itemDelegate_->individualItem(key, data, size);
    }
    klvutil::sendIndividualItem(*this, key, data, size);
}

void MXFSplitter::fail(const klvutil::Finding& finding, const KLVKey* key) const {
    klvutil::fail(errorHandler_, finding, tracker_->locator().streampos(), key == nullptr ? "" : toString(*key));
}

} // namespace bryx

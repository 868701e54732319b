#include "mxf/structure/MXFPartitionFilter.h"

#include <algorithm>
#include <vector>

#include "klv/ErrorHandler.h"
#include "klv/KLVSending.h"
#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "mxf/structure/internal/MXFPartitionTracker.h"

namespace bryx {

namespace findings = mxfutil::findings;
using Pack = MXFPartitionTracker::Pack;

namespace {

MXFStructureHandler& present(MXFStructureHandler* handler) {
    util::require(handler != nullptr, "structure handler is present");
    return *handler;
}

} // namespace

MXFPartitionFilter::MXFPartitionFilter(MXFStructureHandler* structureHandler)
    : tracker_(std::make_unique<MXFPartitionTracker>(present(structureHandler))) {}

MXFPartitionFilter::~MXFPartitionFilter() = default;

void MXFPartitionFilter::setErrorHandler(ErrorHandler* errorHandler) {
    tracker_->setErrorHandler(errorHandler);
}

const Locator& MXFPartitionFilter::getLocator() const {
    return tracker_->locator();
}

void MXFPartitionFilter::setLocator(const Locator& locator) {
    locator_ = &locator;
    locate();
    next().setLocator(locator);
}

/// Keeps the position: when an exception ends the stream, which no handler is told of, the stream's locator goes.
void MXFPartitionFilter::locate() {
    tracker_->locator().show(locator_->streampos());
}

void MXFPartitionFilter::startStream(bool accurateLengths) {
    util::require(accurateLengths, "has accurate lengths");
    util::require(locator_ != nullptr, "has locator");
    locate();
    form_ = klvutil::automaticBERLengthForm;
    depth_ = 0;
    tracker_->start(0);
    if (ErrorHandler* const errorHandler = tracker_->errorHandler()) {
        errorHandler->setLocator(tracker_->locator());
    }
    tracker_->structureHandler().startStructure();
    next().startStream(accurateLengths);
}

void MXFPartitionFilter::endStream(bool stopped) {
    locate();
    if (!stopped) {
        openPending();
    }
    tracker_->closePartition();
    tracker_->endStructure(stopped);
    next().endStream(stopped);
    locator_ = nullptr;
}

void MXFPartitionFilter::berLengthForm(std::uint8_t form) {
    form_ = form;
    next().berLengthForm(form);
}

void MXFPartitionFilter::openPending() {
    if (tracker_->pending()) {
        tracker_->openPartition();
    }
}

/// A triplet other than a pack or the fill after it begins.
void MXFPartitionFilter::enter() {
    locate();
    if (depth_++ == 0) {
        openPending();
    }
}

bool MXFPartitionFilter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    const Pack pack = depth_ == 0 ? MXFPartitionTracker::packOf(key) : Pack::None;
    enter();
    if (pack == Pack::None) {
        return next().startFixedLengthPack(key, length);
    }
    tracker_->closePartition();
    nextWantsPack_ = next().startFixedLengthPack(key, length);
    return tracker_->startPack(pack, length, MXFTripletPosition::of(*locator_, form_, length)) || nextWantsPack_;
}

void MXFPartitionFilter::endFixedLengthPack(const KLVKey& key) {
    leave();
    if (depth_ == 0 && MXFPartitionTracker::packOf(key) != Pack::None) {
        const bool collected = tracker_->collecting();
        if (!tracker_->endPack(key, form_)) {
            klvutil::report(tracker_->errorHandler(), findings::invalidPartitionPack, toString(key));
        }
        if (collected && nextWantsPack_) {
            klvutil::sendValue(next(), tracker_->octets().data(), tracker_->octets().size());
        }
    }
    next().endFixedLengthPack(key);
}

bool MXFPartitionFilter::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                        std::uint8_t*& buffer) {
    return tracker_->collecting() || next().getValueBuffer(length, offset, size, buffer);
}

void MXFPartitionFilter::value(const std::uint8_t* data, std::uint64_t size) {
    if (tracker_->collecting()) {
        tracker_->value(data, size);
    } else {
        next().value(data, size);
    }
}

/// A triplet ends.
void MXFPartitionFilter::leave() {
    locate();
    --depth_;
}

bool MXFPartitionFilter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    if (depth_ == 0 && tracker_->pending() && key == klvutil::fillKey) {
        locate();
        tracker_->fill(MXFTripletPosition::of(*locator_, form_, length).end);
        ++depth_;
    } else {
        enter();
    }
    return next().startIndividualItem(key, length);
}
void MXFPartitionFilter::endIndividualItem(const KLVKey& key) {
    leave();
    next().endIndividualItem(key);
}
bool MXFPartitionFilter::startLabel(const KLVKey& key) {
    locate();
    if (depth_ == 0) {
        openPending();
    }
    return next().startLabel(key);
}
bool MXFPartitionFilter::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    enter();
    return next().startUniversalSet(key, length);
}
void MXFPartitionFilter::endUniversalSet(const KLVKey& key) {
    leave();
    next().endUniversalSet(key);
}
bool MXFPartitionFilter::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                       KLVFieldForm lengthForm) {
    enter();
    return next().startLocalSet(key, length, tagForm, lengthForm);
}
void MXFPartitionFilter::endLocalSet(const KLVKey& key) {
    leave();
    next().endLocalSet(key);
}
bool MXFPartitionFilter::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    enter();
    return next().startVariableLengthPack(key, length, itemLengthForm);
}
void MXFPartitionFilter::endVariableLengthPack(const KLVKey& key) {
    leave();
    next().endVariableLengthPack(key);
}
bool MXFPartitionFilter::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) {
    enter();
    return next().startWrapper(key, length, kind);
}
void MXFPartitionFilter::endWrapper(const KLVKey& key) {
    leave();
    next().endWrapper(key);
}

} // namespace bryx

#include "mxf/structure/internal/MXFPartitionTracker.h"

#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "mxf/structure/MXFStructureValidator.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;

MXFPartitionTracker::Pack MXFPartitionTracker::packOf(const KLVKey& key) {
    if (mxfutil::isPartitionPackKey(key)) {
        return Pack::Partition;
    }
    return key == mxfutil::randomIndexPackKey ? Pack::RandomIndex : Pack::None;
}

MXFPartitionTracker::MXFPartitionTracker(MXFStructureHandler& structureHandler)
    : structureHandler_(structureHandler), validator_(dynamic_cast<MXFStructureValidator*>(&structureHandler)) {}

void MXFPartitionTracker::start(std::uint64_t base) {
    base_ = base;
    collecting_ = Pack::None;
    pending_ = false;
    open_ = false;
    locator_.release();
    if (validator_ != nullptr) {
        validator_->setLocator(locator_);
    }
}

void MXFPartitionTracker::endStructure(bool stopped) {
    if (validator_ != nullptr && stopped) {
        validator_->stopRequested();
    }
    structureHandler_.endStructure();
}

bool MXFPartitionTracker::startPack(Pack pack, std::uint64_t length, const MXFTripletPosition& position) {
    octets_.clear();
    position_ = position;
    const std::uint64_t longest =
        pack == Pack::Partition ? mxfutil::maxPartitionPackSize : mxfutil::maxRandomIndexPackSize;
    collecting_ = length <= longest ? pack : Pack::None;
    if (!collecting() && pack == Pack::RandomIndex) {
        klvutil::report(errorHandler_, findings::invalidRandomIndexPack);
    }
    return collecting();
}

bool MXFPartitionTracker::endPack(const KLVKey& key, std::uint8_t form) {
    const Pack collected = collecting_;
    collecting_ = Pack::None;
    if (packOf(key) == Pack::Partition) {
        key_ = key;
        pack_ = {};
        headerStart_ = position_.end;
        pending_ = collected == Pack::Partition && mxfutil::readPartitionPack(octets_.data(), octets_.size(), pack_);
        return pending_;
    }
    if (collected == Pack::None) {
        return true;
    }
    MXFRandomIndex index;
    if (!mxfutil::readRandomIndex(octets_.data(), octets_.size(), form, index)) {
        klvutil::report(errorHandler_, findings::incorrectRandomIndexPackLength);
    }
    if (!index.empty()) {
        structureHandler_.randomIndex(index);
    }
    return true;
}

void MXFPartitionTracker::openPartition() {
    util::require(!open_, "is not in partition");
    pending_ = false;
    open_ = true;
    locator_.hold(static_cast<std::streamoff>(position_.start));
    structureHandler_.startPartition(key_, pack_, headerStart_ - base_);
    locator_.release();
}

void MXFPartitionTracker::closePartition() {
    if (open_) {
        open_ = false;
        structureHandler_.endPartition(key_);
    }
}

} // namespace bryx

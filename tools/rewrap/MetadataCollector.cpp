#include "rewrap/MetadataCollector.h"

#include "rewrap/Lost.h"

MetadataCollector::MetadataCollector(ErrorPrinter& errors) : errors_(errors), others_(errors) {
    parser_.setErrorHandler(this);
    parser_.setOtherHandler(&others_);
    // The factory shares its error handler. This one is nobody's to delete.
    factory_.setErrorHandler({std::shared_ptr<void>(), static_cast<ErrorHandler*>(&remarks_)});
}

void MetadataCollector::startMetadata() {
    region_ = {};
    isWhole_ = true;
}

void MetadataCollector::endMetadata() {
    region_.isModelWhole = isWhole_ && region_.root != nullptr;
    const int rank = status_ == MXFPartitionStatus::ClosedComplete     ? 3
                     : status_ == MXFPartitionStatus::ClosedIncomplete ? 2
                     : status_ == MXFPartitionStatus::OpenComplete     ? 1
                                                                       : 0;
    if (rank >= rank_) {
        rank_ = rank;
        found_ = std::move(region_);
        hasFound_ = true;
    }
}

void MetadataCollector::model(const Model& model) {
    // What nothing owns is not coded with the root.
    isWhole_ = isWhole_ && model.size() == 1;
    region_.root = std::dynamic_pointer_cast<Preface>(model.front());
}

void MetadataCollector::warning(const util::uuid& /*id*/, const std::string& /*message*/) {
    isWhole_ = false;
}

void MetadataCollector::error(const util::uuid& id, const std::string& message) {
    isWhole_ = false;
    errors_.error(id, message);
}

bool MetadataCollector::Others::startIndividualItem(const KLVKey& key, std::uint64_t /*length*/) {
    return key != klvutil::fillKey && lost(key);
}

bool MetadataCollector::Others::lost(const KLVKey& key) {
    report(errors_, Lost::Triplet, "the triplet with key " + toString(key) + " in the header metadata");
    return false;
}

#include "mxf/engines/MXFMuxer.h"

#include "klv/KLVFilter.h"
#include "klv/KLVMonitor.h"
#include "mxf/structure/MXFStructureCoder.h"

namespace bryx {

MXFMuxer::MXFMuxer()
    : monitor_(std::make_unique<KLVMonitor>(KLVMonitor::UnknownLengths::Counted)),
      body_(std::make_unique<KLVStreamFilter>()), headerMetadata_(std::make_unique<KLVStreamPadder>(grid_)),
      index_(std::make_unique<KLVStreamPadder>(grid_)) {
    body_->setHandler(monitor_.get());
    auto filler = std::make_unique<KLVFiller>(grid_);
    filler->setHandler(monitor_.get());
    for (KLVStreamPadder* padder : {headerMetadata_.get(), index_.get()}) {
        padder->setHandler(body_.get());
    }
    structure_ = std::make_unique<MXFStructureCoder>(std::move(filler), monitor_->getLocator(), grid_, *headerMetadata_,
                                                     *index_);
}

MXFMuxer::~MXFMuxer() = default;

void MXFMuxer::setKLVWriter(KLVHandler* writer) {
    monitor_->setHandler(writer);
    for (KLVStreamPadder* padder : {headerMetadata_.get(), index_.get()}) {
        padder->setLocator(monitor_->getLocator());
    }
}

KLVHandler* MXFMuxer::getKLVWriter() const {
    return monitor_->getHandler();
}

MXFStructureCoder& MXFMuxer::structureReceiver() {
    return *structure_;
}

KLVStreamPadder& MXFMuxer::headerMetadataReceiver() {
    return *headerMetadata_;
}

KLVStreamPadder& MXFMuxer::indexReceiver() {
    return *index_;
}

KLVHandler& MXFMuxer::bodyReceiver() {
    return *body_;
}

const Locator& MXFMuxer::getLocator() const {
    return monitor_->getLocator();
}

} // namespace bryx

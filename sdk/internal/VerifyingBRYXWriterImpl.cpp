#include "sdk/internal/VerifyingBRYXWriterImpl.h"

#include <utility>

#include "klv/internal/StreamAccess.h"
#include "sdk/internal/BRYXFileVerifier.h"

namespace bryx {

VerifyingBRYXWriterImpl::VerifyingBRYXWriterImpl(std::shared_ptr<std::iostream> stream)
    : stream_(std::move(stream)), writer_(std::make_shared<BRYXWriterImpl>(stream_, stream_.get())) {}

VerifyingBRYXWriterImpl::~VerifyingBRYXWriterImpl() = default;

void VerifyingBRYXWriterImpl::setConfiguration(const BRYXWriterConfiguration& configuration) {
    writer_->setConfiguration(configuration);
}
void VerifyingBRYXWriterImpl::start(const BRYXHeaderMetadata& metadata) {
    const auto self = shared_from_this();
    const klvutil::StreamExceptionsOff exceptionsOff(*stream_);
    const std::streampos start = stream_->tellp();
    writer_->start(metadata); // it is no start where this fails
    start_ = start;
}
void VerifyingBRYXWriterImpl::startEssence(const BRYXEssenceContainer& container) {
    writer_->startEssence(container);
}
MXFGCStructureHandler& VerifyingBRYXWriterImpl::structureReceiver() {
    return writer_->structureReceiver();
}
MXFGCSystemHandler& VerifyingBRYXWriterImpl::systemReceiver() {
    return writer_->systemReceiver();
}
MXFGCEssenceHandler& VerifyingBRYXWriterImpl::essenceReceiver() {
    return writer_->essenceReceiver();
}
KLVHandler& VerifyingBRYXWriterImpl::bodyReceiver() {
    return writer_->bodyReceiver();
}
void VerifyingBRYXWriterImpl::startBodyPartition() {
    writer_->startBodyPartition();
}
void VerifyingBRYXWriterImpl::endEssence() {
    writer_->endEssence();
}
KLVHandler& VerifyingBRYXWriterImpl::startGenericStream(std::uint32_t bodySID) {
    return writer_->startGenericStream(bodySID);
}
void VerifyingBRYXWriterImpl::endGenericStream() {
    writer_->endGenericStream();
}
std::uint64_t VerifyingBRYXWriterImpl::position() const {
    return writer_->position();
}

bool VerifyingBRYXWriterImpl::finish(const BRYXHeaderMetadata& metadata) {
    const auto self = shared_from_this();
    const bool isClosed = writer_->finish(metadata);
    const klvutil::StreamExceptionsOff exceptionsOff(*stream_);
    const std::streampos end = stream_->tellp();
    verifyFile(*stream_, start_, writer_->indexedContainers());
    stream_->seekp(end);
    return isClosed;
}

} // namespace bryx

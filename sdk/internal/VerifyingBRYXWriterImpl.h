#pragma once

#include <istream>
#include <memory>

#include "sdk/internal/BRYXWriterImpl.h"

namespace bryx {

/// Reads the file as a whole when it is finished.
class VerifyingBRYXWriterImpl : public VerifyingBRYXWriter,
                                public std::enable_shared_from_this<VerifyingBRYXWriterImpl> {
public:
    explicit VerifyingBRYXWriterImpl(std::shared_ptr<std::iostream> stream);
    ~VerifyingBRYXWriterImpl() override;

    void setConfiguration(const BRYXWriterConfiguration& configuration) override;
    void start(const BRYXHeaderMetadata& metadata) override;
    void startEssence(const BRYXEssenceContainer& container) override;
    MXFGCStructureHandler& structureReceiver() override;
    MXFGCSystemHandler& systemReceiver() override;
    MXFGCEssenceHandler& essenceReceiver() override;
    KLVHandler& bodyReceiver() override;
    void startBodyPartition() override;
    void endEssence() override;
    KLVHandler& startGenericStream(std::uint32_t bodySID) override;
    void endGenericStream() override;
    bool finish(const BRYXHeaderMetadata& metadata) override;
    std::uint64_t position() const override;

private:
    std::shared_ptr<std::iostream> stream_;
    std::streampos start_ = 0;
    std::shared_ptr<BRYXWriterImpl> writer_; ///< whose calls hold it
};

} // namespace bryx

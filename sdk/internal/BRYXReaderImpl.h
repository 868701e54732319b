#pragma once

#include <istream>
#include <memory>

#include "sdk/BRYXReader.h"
#include "validation/BRYXOverridableLocator.h"

namespace bryx {

/// Keeps the stream, the mode and the handlers; the pipeline is built for each reading.
class BRYXReaderImpl final : public BRYXReader {
public:
    BRYXReaderImpl(std::shared_ptr<std::istream> stream, BRYXValidationMode::Enum mode);

    void setMetadataFactory(std::shared_ptr<MXFMetadataFactory> factory) override;
    void setEssenceKeyClassifier(std::shared_ptr<BRYXGCEssenceKeyClassifier> classifier) override;
    void setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) override;
    void setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) override;
    void setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) override;
    void setGCStructureHandler(std::shared_ptr<MXFGCStructureHandler> handler) override;
    void setSDTICPSystemHandler(std::shared_ptr<MXFSDTICPSystemHandler> handler) override;
    void setPDProxySystemHandler(std::shared_ptr<MXFPDProxySystemHandler> handler) override;
    void setEssenceHandler(std::shared_ptr<MXFGCEssenceHandler> handler) override;
    void setErrorHandler(std::shared_ptr<ErrorHandler> handler) override;
    void read() override;
    void setGenericStreamHandler(std::shared_ptr<KLVHandler> handler) override;

private:
    class Pipeline;

    /// What the caller has set.
    struct Slots {
        std::shared_ptr<MXFMetadataFactory> metadataFactory;
        std::shared_ptr<BRYXGCEssenceKeyClassifier> essenceKeyClassifier;
        std::shared_ptr<MXFStructureHandler> structureHandler;
        std::shared_ptr<MXFMetadataHandler> metadataHandler;
        std::shared_ptr<MXFIndexHandler> indexHandler;
        std::shared_ptr<MXFGCStructureHandler> gcStructureHandler;
        std::shared_ptr<MXFSDTICPSystemHandler> sdtiCPSystemHandler;
        std::shared_ptr<MXFPDProxySystemHandler> pdProxySystemHandler;
        std::shared_ptr<MXFGCEssenceHandler> essenceHandler;
        std::shared_ptr<ErrorHandler> errorHandler;
        std::shared_ptr<KLVHandler> genericStreamHandler;
    };

    std::shared_ptr<std::istream> stream_;
    BRYXValidationMode::Enum mode_;
    Slots slots_;

    /// For all readings: the error handler may still ask it afterwards.
    std::shared_ptr<BRYXOverridableLocator> locator_ = std::make_shared<BRYXOverridableLocator>();
};

} // namespace bryx

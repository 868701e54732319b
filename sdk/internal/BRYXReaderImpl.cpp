#include "sdk/internal/BRYXReaderImpl.h"

#include <optional>
#include <utility>

#include "mxf/engines/MXFReader.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/structure/MXFIndexParser.h"
#include "sdk/BRYXSystemParser.h"
#include "sdk/internal/BRYXMetadataChain.h"
#include "util/assertion_failure.h"
#include "validation/BRYXOverridableLocator.h"
#include "validation/internal/BRYXCrossValidator.h"
#include "validation/internal/BRYXIndexValidator.h"
#include "validation/internal/BRYXMetadataValidator.h"
#include "validation/internal/BRYXStructureValidator.h"
#include "validation/internal/BRYXSystemValidator.h"

namespace {

/// Knows which system parser to tell of the end of a body.
class BodySplitter final : public BRYXEssenceSplitter {
public:
    void setSystemParser(BRYXSystemParser& parser) {
        systemParser_ = &parser;
        setSystemHandler(&parser);
    }

    void endStream(bool stopped) override {
        BRYXEssenceSplitter::endStream(stopped);
        if (systemParser_ != nullptr && !stopped) {
            systemParser_->endSystemItems();
        }
    }

private:
    BRYXSystemParser* systemParser_ = nullptr;
};

} // namespace

/// What reads one file. Its parts are made in the order in which they stand here, and destroyed in the reverse one.
class BRYXReaderImpl::Pipeline {
public:
    explicit Pipeline(const BRYXReaderImpl& reader) : reader_(reader), locator_(reader.locator_) {
        if (reader.errorHandler_ != nullptr) {
            errorHandler_ = std::make_shared<BRYXOverridableLocator::ErrorHandler>(reader.errorHandler_, locator_);
            if (reader.mode_ != BRYXValidationMode::None) {
                makeValidators();
            }
        }
        makeParsers();
        makeSplitter();
    }

    void read(std::istream& stream) {
        MXFReader engine;
        engine.setStructureHandler(structureHandler());
        engine.setHeaderMetadataHandler(metadata_ ? &metadata_->handler() : nullptr);
        engine.setIndexHandler(index_ ? &*index_ : nullptr);
        engine.setBodyHandler(splitter_ ? &*splitter_ : nullptr);
        engine.setGenericStreamHandler(reader_.genericStreamHandler_.get());
        engine.setErrorHandler(errorHandler_.get());
        engine.read(stream);
    }

private:
    template <class Validator, class... Arguments>
    void make(std::optional<Validator>& validator, Arguments&&... arguments) {
        validator.emplace(std::forward<Arguments>(arguments)...);
        validator->setErrorHandler(errorHandler_);
        validator->setLocator(locator_);
    }

    /// Those of what the caller has handlers for.
    void makeValidators() {
        const BRYXValidationMode::Enum mode = reader_.mode_;
        if (reader_.structureHandler_ == nullptr && reader_.metadataHandler_ == nullptr &&
            reader_.indexHandler_ == nullptr && reader_.sdtiCPSystemHandler_ == nullptr) {
            return;
        }
        make(crossValidator_, mode);
        if (reader_.structureHandler_ != nullptr) {
            make(structureValidator_, *reader_.structureHandler_, *crossValidator_, mode);
        }
        if (reader_.metadataHandler_ != nullptr) {
            make(metadataValidator_, *reader_.metadataHandler_, *crossValidator_, mode);
        }
        if (reader_.indexHandler_ != nullptr) {
            make(indexValidator_, *reader_.indexHandler_, *crossValidator_, mode);
        }
        if (reader_.sdtiCPSystemHandler_ != nullptr) {
            auto* const structure = reader_.gcStructureHandler_.get();
            make(systemValidator_, *reader_.sdtiCPSystemHandler_,
                 structure != nullptr ? *structure : static_cast<MXFGCStructureHandler&>(dullGCStructure_),
                 *crossValidator_, mode);
            systemValidator_->setNextPDProxySystemHandler(reader_.pdProxySystemHandler_.get());
        }
    }

    void makeParsers() {
        if (reader_.metadataHandler_ != nullptr) {
            metadata_.emplace(reader_.metadataFactory_, orCallers(metadataValidator_, *reader_.metadataHandler_),
                              errorHandler_);
        }
        if (reader_.indexHandler_ != nullptr) {
            index_.emplace(orCallers(indexValidator_, *reader_.indexHandler_)).setErrorHandler(errorHandler_.get());
        }
    }

    void makeSplitter() {
        const bool wantsSystem = reader_.sdtiCPSystemHandler_ != nullptr || reader_.pdProxySystemHandler_ != nullptr;
        if (!wantsSystem && reader_.gcStructureHandler_ == nullptr && reader_.essenceHandler_ == nullptr) {
            return;
        }
        splitter_.emplace().setEssenceKeyClassifier(reader_.essenceKeyClassifier_.get());
        splitter_->setStructureHandler(systemValidator_ ? &*systemValidator_ : reader_.gcStructureHandler_.get());
        if (wantsSystem) {
            system_.setSDTICPSystemHandler(systemValidator_ ? &*systemValidator_ : reader_.sdtiCPSystemHandler_.get());
            const bool wantsProxy = reader_.pdProxySystemHandler_ != nullptr;
            system_.setPDProxySystemHandler(systemValidator_ && wantsProxy ? &*systemValidator_
                                                                           : reader_.pdProxySystemHandler_.get());
            system_.setErrorHandler(errorHandler_.get());
            splitter_->setSystemParser(system_);
        }
        splitter_->setEssenceHandler(reader_.essenceHandler_.get());
        splitter_->setErrorHandler(errorHandler_.get());
    }

    template <class Validator, class Handler>
    static Handler& orCallers(std::optional<Validator>& validator, Handler& callers) {
        return validator ? static_cast<Handler&>(*validator) : callers;
    }

    /// Of the engine. The cross validator learns by it of partitions and of the end of the file, if nobody else does.
    MXFStructureHandler* structureHandler() {
        if (structureValidator_) {
            return &*structureValidator_;
        }
        return crossValidator_ ? &*crossValidator_ : reader_.structureHandler_.get();
    }

    const BRYXReaderImpl& reader_;
    std::shared_ptr<BRYXOverridableLocator> locator_;
    std::shared_ptr<ErrorHandler> errorHandler_; ///< in front of the caller's; empty without one
    DullMXFGCStructureHandler dullGCStructure_;
    std::optional<BRYXCrossValidator> crossValidator_;
    std::optional<BRYXStructureValidator> structureValidator_;
    std::optional<BRYXMetadataValidator> metadataValidator_;
    std::optional<BRYXIndexValidator> indexValidator_;
    std::optional<BRYXSystemValidator> systemValidator_;
    std::optional<BRYXMetadataChain> metadata_;
    std::optional<MXFIndexParser> index_;
    BRYXSystemParser system_;
    std::optional<BodySplitter> splitter_;
};

BRYXReaderImpl::BRYXReaderImpl(std::shared_ptr<std::istream> stream, BRYXValidationMode::Enum mode)
    : stream_(std::move(stream)), mode_(mode) {
    util::require(stream_ != nullptr, "stream is present");
}

void BRYXReaderImpl::setMetadataFactory(std::shared_ptr<MXFMetadataFactory> factory) {
    metadataFactory_ = std::move(factory);
}

void BRYXReaderImpl::setEssenceKeyClassifier(std::shared_ptr<BRYXGCEssenceKeyClassifier> classifier) {
    essenceKeyClassifier_ = std::move(classifier);
}

void BRYXReaderImpl::setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) {
    structureHandler_ = std::move(handler);
}

void BRYXReaderImpl::setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) {
    metadataHandler_ = std::move(handler);
}

void BRYXReaderImpl::setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) {
    indexHandler_ = std::move(handler);
}

void BRYXReaderImpl::setGCStructureHandler(std::shared_ptr<MXFGCStructureHandler> handler) {
    gcStructureHandler_ = std::move(handler);
}

void BRYXReaderImpl::setSDTICPSystemHandler(std::shared_ptr<MXFSDTICPSystemHandler> handler) {
    sdtiCPSystemHandler_ = std::move(handler);
}

void BRYXReaderImpl::setPDProxySystemHandler(std::shared_ptr<MXFPDProxySystemHandler> handler) {
    pdProxySystemHandler_ = std::move(handler);
}

void BRYXReaderImpl::setEssenceHandler(std::shared_ptr<MXFGCEssenceHandler> handler) {
    essenceHandler_ = std::move(handler);
}

void BRYXReaderImpl::setErrorHandler(std::shared_ptr<ErrorHandler> handler) {
    errorHandler_ = std::move(handler);
}

void BRYXReaderImpl::setGenericStreamHandler(std::shared_ptr<KLVHandler> handler) {
    genericStreamHandler_ = std::move(handler);
}

void BRYXReaderImpl::read() {
    locator_ = std::make_shared<BRYXOverridableLocator>();
    Pipeline(*this).read(*stream_);
}

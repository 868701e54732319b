#include "sdk/internal/BRYXReaderImpl.h"

#include <optional>
#include <utility>

#include "mxf/engines/MXFReader.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/index/MXFIndexParser.h"
#include "sdk/BRYXSystemParser.h"
#include "sdk/internal/BRYXMetadataChain.h"
#include "util/assertion_failure.h"
#include "validation/BRYXOverridableLocator.h"
#include "validation/internal/BRYXCrossValidator.h"
#include "validation/internal/BRYXIndexValidator.h"
#include "validation/internal/BRYXMetadataValidator.h"
#include "validation/internal/BRYXStructureValidator.h"
#include "validation/internal/BRYXSystemValidator.h"

namespace bryx {

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
    Pipeline(const Slots& slots, BRYXValidationMode::Enum mode, std::shared_ptr<BRYXOverridableLocator> locator)
        : slots_(slots), mode_(mode), locator_(std::move(locator)) {
        if (slots_.errorHandler != nullptr) {
            errorHandler_ = std::make_shared<BRYXOverridableLocator::ErrorHandler>(slots_.errorHandler, locator_);
            if (mode_ != BRYXValidationMode::None) {
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
        engine.setGenericStreamHandler(slots_.genericStreamHandler.get());
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
        if (slots_.structureHandler == nullptr && slots_.metadataHandler == nullptr && slots_.indexHandler == nullptr &&
            slots_.sdtiCPSystemHandler == nullptr) {
            return;
        }
        make(crossValidator_, mode_);
        if (slots_.structureHandler != nullptr) {
            make(structureValidator_, *slots_.structureHandler, *crossValidator_, mode_);
        }
        if (slots_.metadataHandler != nullptr) {
            make(metadataValidator_, *slots_.metadataHandler, *crossValidator_, mode_);
        }
        if (slots_.indexHandler != nullptr) {
            make(indexValidator_, *slots_.indexHandler, *crossValidator_, mode_);
        }
        if (slots_.sdtiCPSystemHandler != nullptr) {
            auto* const structure = slots_.gcStructureHandler.get();
            make(systemValidator_, *slots_.sdtiCPSystemHandler,
                 structure != nullptr ? *structure : static_cast<MXFGCStructureHandler&>(dullGCStructure_),
                 *crossValidator_, mode_);
            systemValidator_->setNextPDProxySystemHandler(slots_.pdProxySystemHandler.get());
        }
    }

    void makeParsers() {
        if (slots_.metadataHandler != nullptr) {
            metadata_.emplace(slots_.metadataFactory, orCallers(metadataValidator_, *slots_.metadataHandler),
                              errorHandler_);
        }
        if (slots_.indexHandler != nullptr) {
            index_.emplace(orCallers(indexValidator_, *slots_.indexHandler)).setErrorHandler(errorHandler_.get());
        }
    }

    void makeSplitter() {
        const bool wantsSystem = slots_.sdtiCPSystemHandler != nullptr || slots_.pdProxySystemHandler != nullptr;
        if (!wantsSystem && slots_.gcStructureHandler == nullptr && slots_.essenceHandler == nullptr) {
            return;
        }
        splitter_.emplace().setEssenceKeyClassifier(slots_.essenceKeyClassifier.get());
        splitter_->setStructureHandler(systemValidator_ ? &*systemValidator_ : slots_.gcStructureHandler.get());
        if (wantsSystem) {
            system_.setSDTICPSystemHandler(systemValidator_ ? &*systemValidator_ : slots_.sdtiCPSystemHandler.get());
            system_.setPDProxySystemHandler(systemValidator_ ? &*systemValidator_ : slots_.pdProxySystemHandler.get());
            system_.setErrorHandler(errorHandler_.get());
            splitter_->setSystemParser(system_);
        }
        splitter_->setEssenceHandler(slots_.essenceHandler.get());
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
        return crossValidator_ ? &*crossValidator_ : slots_.structureHandler.get();
    }

    const Slots slots_; ///< handlers may set others while this reads
    BRYXValidationMode::Enum mode_;
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
    slots_.metadataFactory = std::move(factory);
}

void BRYXReaderImpl::setEssenceKeyClassifier(std::shared_ptr<BRYXGCEssenceKeyClassifier> classifier) {
    slots_.essenceKeyClassifier = std::move(classifier);
}

void BRYXReaderImpl::setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) {
    slots_.structureHandler = std::move(handler);
}

void BRYXReaderImpl::setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) {
    slots_.metadataHandler = std::move(handler);
}

void BRYXReaderImpl::setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) {
    slots_.indexHandler = std::move(handler);
}

void BRYXReaderImpl::setGCStructureHandler(std::shared_ptr<MXFGCStructureHandler> handler) {
    slots_.gcStructureHandler = std::move(handler);
}

void BRYXReaderImpl::setSDTICPSystemHandler(std::shared_ptr<MXFSDTICPSystemHandler> handler) {
    slots_.sdtiCPSystemHandler = std::move(handler);
}

void BRYXReaderImpl::setPDProxySystemHandler(std::shared_ptr<MXFPDProxySystemHandler> handler) {
    slots_.pdProxySystemHandler = std::move(handler);
}

void BRYXReaderImpl::setEssenceHandler(std::shared_ptr<MXFGCEssenceHandler> handler) {
    slots_.essenceHandler = std::move(handler);
}

void BRYXReaderImpl::setErrorHandler(std::shared_ptr<ErrorHandler> handler) {
    slots_.errorHandler = std::move(handler);
}

void BRYXReaderImpl::setGenericStreamHandler(std::shared_ptr<KLVHandler> handler) {
    slots_.genericStreamHandler = std::move(handler);
}

void BRYXReaderImpl::read() {
    const std::shared_ptr<std::istream> stream = stream_; // a handler may drop the last reference to this
    Pipeline(slots_, mode_, locator_).read(*stream);
}

} // namespace bryx

#include "sdk/BRYXMetadataParser.h"

#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"

namespace bryx {

namespace {

/// Calls the handler, and the parser of the model.
class Both final : public MXFMetadataHandler {
public:
    /// @param models null if nobody wants models
    Both(MXFMetadataHandler& handler, MXFMetadataModelParser* models) : handler_(handler), models_(models) {}

    void startMetadata() override {
        handler_.startMetadata();
        if (models_ != nullptr) {
            models_->startMetadata();
        }
    }

    void endMetadata() override {
        if (models_ != nullptr) {
            models_->endMetadata();
        }
        handler_.endMetadata();
    }

    void primer(const Primer& primer) override { handler_.primer(primer); }

    bool handlesSet(const KLVKey& key) override {
        // Both are asked, since the model reports what it does not know.
        const bool isOfModel = models_ != nullptr && models_->handlesSet(key);
        return handler_.handlesSet(key) || isOfModel;
    }

    void primedSet(MXFPrimedSet& set) override {
        if (handler_.handlesSet(set.key)) {
            // Whoever gets a set may take its contents.
            MXFPrimedSet copy = set;
            handler_.primedSet(copy);
        } else {
            handler_.unhandledSet(set);
        }
        if (models_ == nullptr) {
            return;
        }
        if (models_->handlesSet(set.key)) {
            models_->primedSet(set);
        } else {
            models_->unhandledSet(set);
        }
    }

    void unhandledSet(const MXFPrimedSet& set) override {
        handler_.unhandledSet(set);
        if (models_ != nullptr) {
            models_->unhandledSet(set);
        }
    }

private:
    MXFMetadataHandler& handler_;
    MXFMetadataModelParser* models_;
};

/// Passes models on; start and end are those of the region.
class ModelFace final : public MXFMetadataModelHandler {
public:
    explicit ModelFace(MXFMetadataModelHandler* handler) : handler_(handler) {}
    void startMetadata() override {}
    void endMetadata() override {}
    void model(const Model& model) override { handler_->model(model); }

private:
    MXFMetadataModelHandler* handler_;
};

} // namespace

class BRYXMetadataParser::Chain {
public:
    Chain(MXFMetadataFactory& factory, MXFMetadataHandler& handler, MXFMetadataModelHandler* modelHandler)
        : modelFace(modelHandler), modelParser(factory, modelFace),
          both(handler, modelHandler != nullptr ? &modelParser : nullptr), headerParser(both) {}

    ModelFace modelFace;
    MXFMetadataModelParser modelParser;
    Both both;
    MXFHeaderMetadataParser headerParser;
};

BRYXMetadataParser::BRYXMetadataParser(MXFMetadataFactory& factory, MXFMetadataHandler& handler)
    : chain_(std::make_unique<Chain>(factory, handler, dynamic_cast<MXFMetadataModelHandler*>(&handler))) {}

BRYXMetadataParser::~BRYXMetadataParser() = default;

void BRYXMetadataParser::setErrorHandler(ErrorHandler* errorHandler) {
    chain_->modelParser.setErrorHandler(errorHandler);
    chain_->headerParser.setErrorHandler(errorHandler);
}

void BRYXMetadataParser::setOtherHandler(KLVHandler* handler) {
    chain_->headerParser.setHandler(handler);
}

KLVHandler& BRYXMetadataParser::handler() {
    return chain_->headerParser;
}

} // namespace bryx

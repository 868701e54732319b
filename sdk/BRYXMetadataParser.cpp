#include "sdk/BRYXMetadataParser.h"

BRYXMetadataParser::BRYXMetadataParser(MXFMetadataFactory& factory, MXFMetadataHandler& handler)
    : modelFace_(dynamic_cast<MXFMetadataModelHandler*>(&handler)), modelParser_(factory, modelFace_),
      both_(handler, dynamic_cast<MXFMetadataModelHandler*>(&handler) != nullptr ? &modelParser_ : nullptr),
      headerParser_(both_) {}

BRYXMetadataParser::~BRYXMetadataParser() = default;

void BRYXMetadataParser::setErrorHandler(ErrorHandler* errorHandler) {
    modelParser_.setErrorHandler(errorHandler);
    headerParser_.setErrorHandler(errorHandler);
}

void BRYXMetadataParser::ModelFace::model(const Model& model) {
    handler_->model(model);
}

void BRYXMetadataParser::Both::startMetadata() {
    handler_.startMetadata();
    if (models_ != nullptr) {
        models_->startMetadata();
    }
}

void BRYXMetadataParser::Both::endMetadata() {
    if (models_ != nullptr) {
        models_->endMetadata();
    }
    handler_.endMetadata();
}

void BRYXMetadataParser::Both::primer(const Primer& primer) {
    handler_.primer(primer);
}

bool BRYXMetadataParser::Both::handlesSet(const KLVKey& key) {
    // Both are asked, since the model reports what it does not know.
    const bool isOfModel = models_ != nullptr && models_->handlesSet(key);
    return handler_.handlesSet(key) || isOfModel;
}

void BRYXMetadataParser::Both::primedSet(MXFPrimedSet& set) {
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

void BRYXMetadataParser::Both::unhandledSet(const MXFPrimedSet& set) {
    handler_.unhandledSet(set);
    if (models_ != nullptr) {
        models_->unhandledSet(set);
    }
}

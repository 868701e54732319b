#pragma once

#include <memory>

#include "sdk/BRYXMetadataFactory.h"
#include "sdk/BRYXMetadataParser.h"

namespace bryx {

/// What reads header metadata for one handler, with a factory of its own if none is given.
class BRYXMetadataChain {
public:
    /// @param factory may be empty
    /// @param handler not owned
    BRYXMetadataChain(std::shared_ptr<MXFMetadataFactory> factory, MXFMetadataHandler& handler,
                      const std::shared_ptr<ErrorHandler>& errorHandler)
        : factory_(factory != nullptr ? std::move(factory) : ownFactory(errorHandler)), parser_(*factory_, handler) {
        parser_.setErrorHandler(errorHandler.get());
    }

    KLVHandler& handler() { return parser_.handler(); }

private:
    static std::shared_ptr<MXFMetadataFactory> ownFactory(const std::shared_ptr<ErrorHandler>& errorHandler) {
        auto factory = std::make_shared<BRYXMetadataFactory>();
        factory->setErrorHandler(errorHandler);
        return factory;
    }

    std::shared_ptr<MXFMetadataFactory> factory_;
    BRYXMetadataParser parser_;
};

} // namespace bryx

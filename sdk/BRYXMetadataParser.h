#pragma once

#include <memory>

#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class KLVHandler;
class MXFMetadataFactory;
class MXFMetadataHandler;

/// Reads header metadata regions for one handler, which gets the primer and the sets that it wants; and the model of each
/// region, between the last set and the end, if it is an MXFMetadataModelHandler as well.
class BRYX_API BRYXMetadataParser {
public:
    /// @param factory makes the sets of models; not owned, as is @p handler
    BRYXMetadataParser(MXFMetadataFactory& factory, MXFMetadataHandler& handler);
    ~BRYXMetadataParser();
    BRYXMetadataParser(const BRYXMetadataParser&) = delete;
    BRYXMetadataParser& operator=(const BRYXMetadataParser&) = delete;

    /// Where findings go about primer, sets and model; those about single values go to the factory's error handler. Not
    /// owned.
    void setErrorHandler(ErrorHandler* errorHandler);

    /// Gets what is neither the primer nor a set; not owned. Null, as it is unless set, if nobody does.
    void setOtherHandler(KLVHandler* handler);

    /// The header metadata handler of an MXFReader.
    KLVHandler& handler();

private:
    class Chain;
    std::unique_ptr<Chain> chain_;
};

} // namespace bryx

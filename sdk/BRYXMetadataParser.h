#pragma once

#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"
#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "util/Api.h"

class ErrorHandler;
class MXFMetadataFactory;

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
    void setOtherHandler(KLVHandler* handler) { headerParser_.setHandler(handler); }

    /// The header metadata handler of an MXFReader.
    KLVHandler& handler() { return headerParser_; }

private:
    /// Calls the handler, and the parser of the model.
    class Both final : public MXFMetadataHandler {
    public:
        Both(MXFMetadataHandler& handler, MXFMetadataModelParser* models) : handler_(handler), models_(models) {}
        void startMetadata() override;
        void endMetadata() override;
        void primer(const Primer& primer) override;
        bool handlesSet(const KLVKey& key) override;
        void primedSet(MXFPrimedSet& set) override;
        void unhandledSet(const MXFPrimedSet& set) override;

    private:
        MXFMetadataHandler& handler_;
        MXFMetadataModelParser* models_; ///< null if nobody wants models
    };

    /// Passes models on; start and end are those of the region.
    class ModelFace final : public MXFMetadataModelHandler {
    public:
        explicit ModelFace(MXFMetadataModelHandler* handler) : handler_(handler) {}
        void startMetadata() override {}
        void endMetadata() override {}
        void model(const Model& model) override;

    private:
        MXFMetadataModelHandler* handler_;
    };

    ModelFace modelFace_;
    MXFMetadataModelParser modelParser_;
    Both both_;
    MXFHeaderMetadataParser headerParser_;
};

#pragma once

#include "mxf/metadata/parsing/MXFMetadataHandler.h"
#include "mxf/metadata/parsing/MXFMetadataModelHandler.h"

/// Does nothing, and wants no set. Derive from it and override model(): whoever reads header metadata for a handler that is
/// an MXFMetadataModelHandler as well, as BRYXReader does, makes the models.
class BRYX_API DullMXFMetadataModelHandler : public MXFMetadataHandler, public MXFMetadataModelHandler {
public:
    void startMetadata() override;
    void endMetadata() override;
    void primer(const Primer& primer) override;
    bool handlesSet(const KLVKey& key) override;
    void primedSet(MXFPrimedSet& set) override;
    void model(const Model& model) override;
};

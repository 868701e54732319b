#pragma once

#include "mxf/metadata/model/DullMXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"

namespace bryx {

/// Does nothing, and wants no set. Derive from it and override model(): whoever reads header metadata for a handler that is
/// an MXFMetadataModelHandler as well, as BRYXReader does, makes the models.
class BRYX_API DullMXFMetadataModelHandler : public DullMXFMetadataHandler, public MXFMetadataModelHandler {
public:
    ~DullMXFMetadataModelHandler() override;
    void startMetadata() override {}
    void endMetadata() override {}
    void model(const Model& model) override;
};

} // namespace bryx

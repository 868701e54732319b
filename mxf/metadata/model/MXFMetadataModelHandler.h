#pragma once

#include <memory>
#include <vector>

#include "util/Api.h"

namespace bryx {

class MetadataRoot;

/// Receives the models that the header metadata of one partition after the other make.
class BRYX_API MXFMetadataModelHandler {
public:
    /// The root, which is the Preface in a file as it should be, and after it the sets that nothing owns.
    using Model = std::vector<std::shared_ptr<MetadataRoot>>;

    virtual ~MXFMetadataModelHandler();

    /// The header metadata of a partition begins.
    virtual void startMetadata() = 0;
    virtual void endMetadata() = 0;

    /// The model of the sets since startMetadata; not called if there is no set of a known class. The callee may keep
    /// it.
    virtual void model(const Model& model) = 0;
};

} // namespace bryx

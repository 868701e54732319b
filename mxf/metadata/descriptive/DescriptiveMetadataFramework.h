#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// The top of a description (ST 377-1).
class BRYX_API DescriptiveMetadataFramework : public MetadataObject {
    BRYX_ABSTRACT_SET(DescriptiveMetadataFramework, MetadataObject, "060e2b34.02530101.0d010401.00000000");

    /// Names the DMSegment that the framework belongs to, by its dmPlugInID (ST 377-1).
    BRYX_OPTIONAL(LinkedDMPlugInID, linkedDMPlugInID, MXFUID, "060e2b34.0101010c.05200701.0c000000");

protected:
    DescriptiveMetadataFramework() = default;
};

using DescriptiveMetadataFrameworkFactory = MXFSetFactory<DescriptiveMetadataFramework>;

} // namespace bryx

#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// A part of a description below its framework (ST 377-1).
class BRYX_API DescriptiveMetadataObject : public MetadataObject {
    BRYX_ABSTRACT_SET(DescriptiveMetadataObject, MetadataObject, "060e2b34.02530101.0d010400.00000000");

    /// Names the DMSegment that the object belongs to, by its dmPlugInID (ST 377-1).
    BRYX_OPTIONAL(LinkedDMPlugInID, linkedDMPlugInID, MXFUID, "060e2b34.0101010c.05200701.11000000");

protected:
    DescriptiveMetadataObject() = default;
};

using DescriptiveMetadataObjectFactory = MXFSetFactory<DescriptiveMetadataObject>;

} // namespace bryx

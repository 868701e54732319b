#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// What adds to a descriptor (ST 377-1).
class BRYX_API SubDescriptor : public MetadataObject {
    BRYX_ABSTRACT_SET(SubDescriptor, MetadataObject, "060e2b34.02530101.0d010101.01015900");

protected:
    SubDescriptor() = default;
};

using SubDescriptorFactory = MXFSetFactory<SubDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptors/DataDescriptor.h"

namespace bryx {

/// Describes ancillary data packets (ST 436-1).
class BRYX_API ANCDataDescriptor : public DataDescriptor {
    BRYX_SET(ANCDataDescriptor, DataDescriptor, "060e2b34.02530101.0d010101.01015c00");

protected:
    ANCDataDescriptor() = default;
};

using ANCDataDescriptorFactory = MXFSetFactory<ANCDataDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptors/SubDescriptor.h"

namespace bryx {

/// Says that an essence container keeps the constraints of ST 379-2.
class BRYX_API ContainerConstraintsSubDescriptor : public SubDescriptor {
    BRYX_SET(ContainerConstraintsSubDescriptor, SubDescriptor, "060e2b34.02530101.0d010101.01016700");

protected:
    ContainerConstraintsSubDescriptor() = default;
};

using ContainerConstraintsSubDescriptorFactory = MXFSetFactory<ContainerConstraintsSubDescriptor>;

} // namespace bryx

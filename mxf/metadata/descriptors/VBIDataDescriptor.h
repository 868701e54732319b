#pragma once

#include "mxf/metadata/descriptors/DataDescriptor.h"

namespace bryx {

/// Describes lines of the vertical blanking interval (ST 436-1).
class BRYX_API VBIDataDescriptor : public DataDescriptor {
    BRYX_SET(VBIDataDescriptor, DataDescriptor, "060e2b34.02530101.0d010101.01015b00");

protected:
    VBIDataDescriptor() = default;
};

using VBIDataDescriptorFactory = MXFSetFactory<VBIDataDescriptor>;

} // namespace bryx

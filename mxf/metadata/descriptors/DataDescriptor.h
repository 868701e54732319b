#pragma once

#include "mxf/metadata/descriptors/FileDescriptor.h"

namespace bryx {

/// Describes data essence (ST 377-1).
class BRYX_API DataDescriptor : public FileDescriptor {
    BRYX_SET(DataDescriptor, FileDescriptor, "060e2b34.02530101.0d010101.01014300");

    /// The label of the coding of the data.
    BRYX_OPTIONAL(DataEssenceCoding, dataEssenceCoding, KLVKey, 0x3E01);

protected:
    DataDescriptor() = default;
};

using DataDescriptorFactory = MXFSetFactory<DataDescriptor>;

} // namespace bryx

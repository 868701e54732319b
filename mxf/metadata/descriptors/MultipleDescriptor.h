#pragma once

#include "mxf/metadata/descriptors/FileDescriptor.h"

namespace bryx {

/// Describes interleaved essence, by one descriptor for each kind (ST 377-1).
class BRYX_API MultipleDescriptor : public FileDescriptor {
    BRYX_SET(MultipleDescriptor, FileDescriptor, "060e2b34.02530101.0d010101.01014400");

    BRYX_STRONG_REFERENCES(SubDescriptor, subDescriptors, FileDescriptor, 0x3F01);

protected:
    MultipleDescriptor() = default;
};

using MultipleDescriptorFactory = MXFSetFactory<MultipleDescriptor>;

} // namespace bryx

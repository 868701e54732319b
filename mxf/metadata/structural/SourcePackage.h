#pragma once

#include "mxf/metadata/descriptors/GenericDescriptor.h"
#include "mxf/metadata/structural/GenericPackage.h"

namespace bryx {

/// A package that stands for essence: a file package, which describes an essence container, or a physical one, which
/// says where that came from (ST 377-1).
class BRYX_API SourcePackage : public GenericPackage {
    BRYX_SET(SourcePackage, GenericPackage, "060e2b34.02530101.0d010101.01013700");

    /// A FileDescriptor makes it a file package.
    BRYX_STRONG_REFERENCE(Descriptor, descriptor, GenericDescriptor, 0x4701);

protected:
    SourcePackage() = default;
};

using SourcePackageFactory = MXFSetFactory<SourcePackage>;

} // namespace bryx

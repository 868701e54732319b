#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// Where essence outside the file may be found (ST 377-1).
class BRYX_API GenericLocator : public MetadataObject {
    BRYX_ABSTRACT_SET(GenericLocator, MetadataObject, "060e2b34.02530101.0d010101.01013100");

protected:
    GenericLocator() = default;
};

using GenericLocatorFactory = MXFSetFactory<GenericLocator>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptors/SubDescriptor.h"
#include "mxf/metadata/model/MetadataObject.h"
#include "mxf/metadata/structural/GenericLocator.h"

namespace bryx {

/// Describes the essence that a source package stands for (ST 377-1).
class BRYX_API GenericDescriptor : public MetadataObject {
    BRYX_ABSTRACT_SET(GenericDescriptor, MetadataObject, "060e2b34.02530101.0d010101.01012400");

    /// Where the essence may be found if it is not in the file.
    BRYX_OPTIONAL_STRONG_REFERENCES(Locator, locators, GenericLocator, 0x2F01);
    BRYX_OPTIONAL_STRONG_REFERENCES(GenericSubDescriptor, genericSubDescriptors, SubDescriptor,
                                    "060e2b34.01010109.06010104.06100000");

protected:
    GenericDescriptor() = default;
};

using GenericDescriptorFactory = MXFSetFactory<GenericDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptive/DescriptiveMetadataFramework.h"
#include "mxf/metadata/descriptive/TextBasedObject.h"

namespace bryx {

/// A description that is a text (RP 2057).
class BRYX_API TextBasedDMFramework : public DescriptiveMetadataFramework {
    BRYX_SET(TextBasedDMFramework, DescriptiveMetadataFramework, "060e2b34.02530101.0d010401.04010100");

    BRYX_OPTIONAL_STRONG_REFERENCE(TextBasedObject, textBasedObject, TextBasedObject,
                                   "060e2b34.0101010d.06010104.05410100");

protected:
    TextBasedDMFramework() = default;
};

using TextBasedDMFrameworkFactory = MXFSetFactory<TextBasedDMFramework>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptive/DescriptiveMetadataFramework.h"

namespace bryx {

/// A description that divides a programme into parts (AS-11).
class BRYX_API DMSegmentationFramework : public DescriptiveMetadataFramework {
    BRYX_ABSTRACT_SET(DMSegmentationFramework, DescriptiveMetadataFramework, "060e2b34.02530101.0d010701.01010100");

protected:
    DMSegmentationFramework() = default;
};

using DMSegmentationFrameworkFactory = MXFSetFactory<DMSegmentationFramework>;

} // namespace bryx

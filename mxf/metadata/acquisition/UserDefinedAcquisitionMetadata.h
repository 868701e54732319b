#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// Acquisition metadata of a maker's own (RDD 18): further properties with tags from 0xE000 to 0xEFFF are dark.
class BRYX_API UserDefinedAcquisitionMetadata : public AcquisitionMetadataObject {
    BRYX_SET(UserDefinedAcquisitionMetadata, AcquisitionMetadataObject, "060e2b34.02530101.0c020101.7f010000");

    /// Says whose set it is, and of which kind.
    BRYX_REQUIRED(UDAMSetIdentifier, udamSetIdentifier, MXFUID, 0xE000, "060e2b34.0101010d.04060805.00000000");
    /// 256 times the major number plus the minor one.
    BRYX_OPTIONAL(UDAMSetVersion, udamSetVersion, std::uint16_t, 0xE010, "060e2b34.0101010e.04060807.00000000");

protected:
    UserDefinedAcquisitionMetadata() = default;
};

using UserDefinedAcquisitionMetadataFactory = MXFSetFactory<UserDefinedAcquisitionMetadata>;

} // namespace bryx

#pragma once

#include "mxf/metadata/model/MetadataRoot.h"

namespace bryx {

/// A set of ST 377-1 or of descriptive metadata.
class BRYX_API MetadataObject : public MetadataRoot {
    BRYX_ABSTRACT_SET(MetadataObject, MetadataRoot, "060e2b34.02530101.0d010101.01010100");

public:
    ~MetadataObject() override;

    /// The generation of the file in which the set was last changed: the thisGenerationUID of an Identification.
    BRYX_OPTIONAL(GenerationUID, generationUID, MXFUID, 0x0102);
    /// The class of the set in AAF files.
    BRYX_OPTIONAL(ObjectClass, objectClass, KLVKey, 0x0101);
    /// The instance UIDs of the plug-in objects by which applications extend the set (ST 377-1 Annex C).
    BRYX_OPTIONAL(ApplicationPlugInObjects, applicationPlugInObjects, std::vector<MXFUID>,
                  "060e2b34.0101010c.06010104.020e0000");

protected:
    MetadataObject() = default;
};

/// A set of acquisition metadata (RDD 18), which carries no generation.
class BRYX_API AcquisitionMetadataObject : public MetadataRoot {
    BRYX_ABSTRACT_SET(AcquisitionMetadataObject, MetadataRoot, "00000000.00000000.00000000.00000000");

public:
    ~AcquisitionMetadataObject() override;

protected:
    AcquisitionMetadataObject() = default;
};

using MetadataObjectFactory = MXFSetFactory<MetadataObject>;
using AcquisitionMetadataObjectFactory = MXFSetFactory<AcquisitionMetadataObject>;

} // namespace bryx

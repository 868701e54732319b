#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// Where in the file the essence of a file package is (ST 377-1).
class BRYX_API EssenceContainerData : public MetadataObject {
    BRYX_SET(EssenceContainerData, MetadataObject, "060e2b34.02530101.0d010101.01012300");

    /// The UMID of the file package.
    BRYX_REQUIRED(LinkedPackageUID, linkedPackageUID, UMID, 0x2701);
    /// The stream ID of the index table in the partitions; 0 or absent for none.
    BRYX_OPTIONAL(IndexSID, indexSID, std::uint32_t, 0x3F06);
    /// The stream ID of the essence container in the partitions.
    BRYX_REQUIRED(BodySID, bodySID, std::uint32_t, 0x3F07);
    /// Whether parts of the index table are left out.
    BRYX_OPTIONAL(Sparse, sparse, bool, "060e2b34.0101010e.04040506.00000000");
    /// Whether each partition holds essence or index, and not both.
    BRYX_OPTIONAL(SingularPartitionUsage, singularPartitionUsage, bool, "060e2b34.0101010e.04060207.00000000");
    /// Whether index table segments come before the essence that they index.
    BRYX_OPTIONAL(PrecedingIndexTable, precedingIndexTable, bool, "060e2b34.0101010e.04040504.00000000");
    /// Whether index table segments come after the essence that they index.
    BRYX_OPTIONAL(FollowingIndexTable, followingIndexTable, bool, "060e2b34.0101010e.04040505.00000000");
    /// The essence itself, in AAF files.
    BRYX_OPTIONAL(EssenceStream, essenceStream, std::vector<std::uint8_t>, 0x2702);
    /// An index of the essence, in AAF files.
    BRYX_OPTIONAL(SampleIndex, sampleIndex, std::vector<std::uint8_t>, 0x2B01);

protected:
    EssenceContainerData() = default;
};

using EssenceContainerDataFactory = MXFSetFactory<EssenceContainerData>;

} // namespace bryx

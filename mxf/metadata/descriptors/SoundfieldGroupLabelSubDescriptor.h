#pragma once

#include "mxf/metadata/descriptors/MCALabelSubDescriptor.h"

namespace bryx {

/// Labels a soundfield group: channels that are heard together (ST 377-4).
class BRYX_API SoundfieldGroupLabelSubDescriptor : public MCALabelSubDescriptor {
    BRYX_SET(SoundfieldGroupLabelSubDescriptor, MCALabelSubDescriptor, "060e2b34.02530101.0d010101.01016c00");

    /// The link IDs of the groups of soundfield groups that it belongs to.
    BRYX_OPTIONAL(GroupOfSoundfieldGroups, groupOfSoundfieldGroups, std::vector<MXFUID>,
                  "060e2b34.0101010e.01030701.04000000");

protected:
    SoundfieldGroupLabelSubDescriptor() = default;
};

using SoundfieldGroupLabelSubDescriptorFactory = MXFSetFactory<SoundfieldGroupLabelSubDescriptor>;

} // namespace bryx

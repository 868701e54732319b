#pragma once

#include "mxf/metadata/descriptors/MCALabelSubDescriptor.h"

namespace bryx {

/// Labels a group of soundfield groups, such as those of one programme (ST 377-4).
class BRYX_API GroupOfSoundfieldGroupsLabelSubDescriptor : public MCALabelSubDescriptor {
    BRYX_SET(GroupOfSoundfieldGroupsLabelSubDescriptor, MCALabelSubDescriptor, "060e2b34.02530101.0d010101.01016d00");

protected:
    GroupOfSoundfieldGroupsLabelSubDescriptor() = default;
};

using GroupOfSoundfieldGroupsLabelSubDescriptorFactory = MXFSetFactory<GroupOfSoundfieldGroupsLabelSubDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// A part of what is on a track (ST 377-1).
class BRYX_API Component : public MetadataObject {
    BRYX_ABSTRACT_SET(Component, MetadataObject, "060e2b34.02530101.0d010101.01010200");

    /// The label of the kind of data: picture, sound, timecode and so on.
    BRYX_REQUIRED(DataDefinition, dataDefinition, KLVKey, 0x0201);
    /// In edit units of the track; -1 when it is not known.
    BRYX_OPTIONAL(Duration, duration, std::int64_t, 0x0202);
    /// The instance UIDs of KLVData sets (AAF).
    BRYX_OPTIONAL(ComponentKLVData, componentKLVData, std::vector<MXFUID>, 0x0203);
    /// The instance UIDs of TaggedValue sets that hold comments of users (AAF).
    BRYX_OPTIONAL(ComponentUserComments, componentUserComments, std::vector<MXFUID>, 0x0204);
    /// The instance UIDs of TaggedValue sets that hold attributes (AAF).
    BRYX_OPTIONAL(ComponentAttributes, componentAttributes, std::vector<MXFUID>, 0x0205);

protected:
    Component() = default;
};

using ComponentFactory = MXFSetFactory<Component>;

} // namespace bryx

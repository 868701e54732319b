#pragma once

#include <string>

#include "mxf/metadata/descriptive/DescriptiveMetadataFramework.h"
#include "mxf/metadata/structural/CommentMarker.h"

namespace bryx {

/// A part of a track of descriptive metadata (ST 377-1).
class BRYX_API DMSegment : public CommentMarker {
    BRYX_SET(DMSegment, CommentMarker, "060e2b34.02530101.0d010101.01014100");

    /// The IDs of the tracks of the package that are described; absent for all of them.
    BRYX_OPTIONAL(TargetTrackIDs, targetTrackIDs, std::vector<std::uint32_t>, 0x6102);
    /// The description.
    BRYX_OPTIONAL_STRONG_REFERENCE(DMFramework, dmFramework, DescriptiveMetadataFramework, 0x6101);
    /// Identifies the description for links to it (ST 377-1).
    BRYX_OPTIONAL(DMPlugInID, dmPlugInID, MXFUID, "060e2b34.0101010c.05200701.0e000000");
    /// The label of the scheme of the description.
    BRYX_OPTIONAL(DMScheme, dmScheme, KLVKey, "060e2b34.0101010c.04060804.00000000");
    /// The application that can make use of the description.
    BRYX_OPTIONAL(DMApplicationEnvironmentID, dmApplicationEnvironmentID, std::wstring,
                  "060e2b34.0101010c.05200701.10000000");

protected:
    DMSegment() = default;
};

using DMSegmentFactory = MXFSetFactory<DMSegment>;

} // namespace bryx

#pragma once

#include "mxf/metadata/structural/SourceClip.h"

namespace bryx {

/// A part of a track of descriptive metadata that comes from another package (ST 377-1).
class BRYX_API DMSourceClip : public SourceClip {
    BRYX_SET(DMSourceClip, SourceClip, "060e2b34.02530101.0d010101.01014500");

    /// The IDs of the tracks of the package that are described; absent for all of them.
    BRYX_OPTIONAL(TargetTrackIDs, targetTrackIDs, std::vector<std::uint32_t>, 0x6103);

protected:
    DMSourceClip() = default;
};

using DMSourceClipFactory = MXFSetFactory<DMSourceClip>;

} // namespace bryx

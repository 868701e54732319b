#pragma once

#include "mxf/metadata/structural/Segment.h"

namespace bryx {

/// A segment that leads to a track of another package.
class BRYX_API SourceReference : public Segment {
    BRYX_ABSTRACT_SET(SourceReference, Segment, "060e2b34.02530101.0d010101.01011000");

    /// The UMID of the package; all zero where the chain of sources ends.
    BRYX_REQUIRED(SourcePackageID, sourcePackageID, UMID, 0x1101);
    /// The track of that package; 0 where the chain of sources ends.
    BRYX_REQUIRED(SourceTrackID, sourceTrackID, std::uint32_t, 0x1102);
    /// The channels of the source that are meant, where it has more of them than the track.
    BRYX_OPTIONAL(ChannelIDs, channelIDs, std::vector<std::uint32_t>, 0x1103);
    /// The tracks of the source that are meant, where the track has more channels than each of them.
    BRYX_OPTIONAL(MonoSourceTrackIDs, monoSourceTrackIDs, std::vector<std::uint32_t>, 0x1104);

protected:
    SourceReference() = default;
};

using SourceReferenceFactory = MXFSetFactory<SourceReference>;

} // namespace bryx

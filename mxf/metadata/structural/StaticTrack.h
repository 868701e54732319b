#pragma once

#include "mxf/metadata/structural/Track.h"

namespace bryx {

/// A track of what holds at all times (ST 377-1).
class BRYX_API StaticTrack : public Track {
    BRYX_SET(StaticTrack, Track, "060e2b34.02530101.0d010101.01013a00");

protected:
    StaticTrack() = default;
};

using StaticTrackFactory = MXFSetFactory<StaticTrack>;

} // namespace bryx

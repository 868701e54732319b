#pragma once

#include "mxf/metadata/structural/Track.h"

namespace bryx {

/// A track of events, which may overlap and leave gaps (ST 377-1).
class BRYX_API EventTrack : public Track {
    BRYX_SET(EventTrack, Track, "060e2b34.02530101.0d010101.01013900");

    /// Edit units per second, in which the positions of events count.
    BRYX_REQUIRED(EditRate, editRate, Rational, 0x4901);
    /// The edit unit at which the track begins to be played, counted from its start.
    BRYX_OPTIONAL(Origin, origin, std::int64_t, 0x4902);

protected:
    EventTrack() = default;
};

using EventTrackFactory = MXFSetFactory<EventTrack>;

} // namespace bryx

#pragma once

#include "mxf/metadata/structural/Track.h"

namespace bryx {

/// A track without gaps or overlaps, counted in edit units (ST 377-1).
class BRYX_API TimelineTrack : public Track {
    BRYX_SET(TimelineTrack, Track, "060e2b34.02530101.0d010101.01013b00");

    /// Edit units per second.
    BRYX_REQUIRED(EditRate, editRate, Rational, 0x4B01);
    /// The edit unit at which the track begins to be played, counted from its start.
    BRYX_REQUIRED(Origin, origin, std::int64_t, 0x4B02);
    /// Edit units that mark a part of the track (AAF).
    BRYX_OPTIONAL(MarkIn, markIn, std::int64_t, 0x4B03);
    BRYX_OPTIONAL(MarkOut, markOut, std::int64_t, 0x4B04);
    /// The edit unit where an application's cursor stands (AAF).
    BRYX_OPTIONAL(UserPosition, userPosition, std::int64_t, 0x4B05);
    /// Edit units that mark a part of the package.
    BRYX_OPTIONAL(PackageMarkInPosition, packageMarkInPosition, std::int64_t, 0x4B06);
    BRYX_OPTIONAL(PackageMarkOutPosition, packageMarkOutPosition, std::int64_t, 0x4B07);

protected:
    TimelineTrack() = default;
};

using TimelineTrackFactory = MXFSetFactory<TimelineTrack>;

} // namespace bryx

#pragma once

#include "mxf/metadata/structural/Segment.h"

namespace bryx {

/// A part of a timecode track (ST 377-1).
class BRYX_API TimecodeComponent : public Segment {
    BRYX_SET(TimecodeComponent, Segment, "060e2b34.02530101.0d010101.01011400");

    /// The nearest whole number of frames per second.
    BRYX_REQUIRED(RoundedTimecodeBase, roundedTimecodeBase, std::uint16_t, 0x1502);
    /// The timecode at the start, as a count of frames.
    BRYX_REQUIRED(StartTimecode, startTimecode, std::int64_t, 0x1501);
    /// Whether timecodes are dropped (ST 12-1), as at 30000/1001 frames per second.
    BRYX_REQUIRED(DropFrame, dropFrame, bool, 0x1503);

protected:
    TimecodeComponent() = default;
};

using TimecodeComponentFactory = MXFSetFactory<TimecodeComponent>;

} // namespace bryx

#pragma once

#include <string>

#include "mxf/metadata/structural/Segment.h"

namespace bryx {

/// Something at a certain time on an event track.
class BRYX_API Event : public Segment {
    BRYX_ABSTRACT_SET(Event, Segment, "060e2b34.02530101.0d010101.01010600");

    /// Where it begins, in edit units of the track.
    BRYX_OPTIONAL(Position, position, std::int64_t, 0x0601);
    BRYX_OPTIONAL(Comment, comment, std::wstring, 0x0602);

protected:
    Event() = default;
};

using EventFactory = MXFSetFactory<Event>;

} // namespace bryx

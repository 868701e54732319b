#pragma once

#include "mxf/metadata/structural/Component.h"

namespace bryx {

/// A component that may stand alone on a track.
class BRYX_API Segment : public Component {
    BRYX_ABSTRACT_SET(Segment, Component, "060e2b34.02530101.0d010101.01010300");

protected:
    Segment() = default;
};

using SegmentFactory = MXFSetFactory<Segment>;

} // namespace bryx

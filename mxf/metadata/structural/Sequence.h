#pragma once

#include "mxf/metadata/structural/Segment.h"

namespace bryx {

/// Components that follow one another (ST 377-1). Its duration is the sum of theirs.
class BRYX_API Sequence : public Segment {
    BRYX_SET(Sequence, Segment, "060e2b34.02530101.0d010101.01010f00");

    BRYX_STRONG_REFERENCES(Component, components, Component, 0x1001);

protected:
    Sequence() = default;
};

using SequenceFactory = MXFSetFactory<Sequence>;

} // namespace bryx

#pragma once

#include "mxf/metadata/structural/Component.h"

namespace bryx {

/// A part of a track where there is nothing. It stands in a Sequence, never alone on a track.
class BRYX_API Filler : public Component {
    BRYX_SET(Filler, Component, "060e2b34.02530101.0d010101.01010900");

protected:
    Filler() = default;
};

using FillerFactory = MXFSetFactory<Filler>;

} // namespace bryx

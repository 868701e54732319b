#pragma once

#include "mxf/metadata/structural/SourceReference.h"

namespace bryx {

/// A fade at the start or end of a clip (AAF).
enum class MXFFadeType : std::uint8_t { None = 0, LinearAmplitude = 1, LinearPower = 2 };

/// A part of a track that comes from a track of another package (ST 377-1).
class BRYX_API SourceClip : public SourceReference {
    BRYX_SET(SourceClip, SourceReference, "060e2b34.02530101.0d010101.01011100");

    /// Where the clip starts in the source, in edit units of this track.
    BRYX_REQUIRED(StartPosition, startPosition, std::int64_t, 0x1201);
    /// In edit units, as the fade-out (AAF).
    BRYX_OPTIONAL(FadeInLength, fadeInLength, std::int64_t, 0x1202);
    BRYX_OPTIONAL(FadeInType, fadeInType, MXFFadeType, 0x1203);
    BRYX_OPTIONAL(FadeOutLength, fadeOutLength, std::int64_t, 0x1204);
    BRYX_OPTIONAL(FadeOutType, fadeOutType, MXFFadeType, 0x1205);

protected:
    SourceClip() = default;
};

using SourceClipFactory = MXFSetFactory<SourceClip>;

} // namespace bryx

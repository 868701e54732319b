#pragma once

#include "mxf/metadata/structural/Event.h"
#include "mxf/metadata/structural/SourceReference.h"

namespace bryx {

/// An event with a comment.
class BRYX_API CommentMarker : public Event {
    BRYX_SET(CommentMarker, Event, "060e2b34.02530101.0d010101.01010800");

    /// Leads to more than fits a comment.
    BRYX_OPTIONAL_STRONG_REFERENCE(Annotation, annotation, SourceReference, 0x0901);

protected:
    CommentMarker() = default;
};

using CommentMarkerFactory = MXFSetFactory<CommentMarker>;

} // namespace bryx

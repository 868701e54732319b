#pragma once

#include <string>

#include "mxf/metadata/model/MetadataObject.h"
#include "mxf/metadata/structural/Segment.h"

namespace bryx {

/// A track of a package (ST 377-1).
class BRYX_API Track : public MetadataObject {
    BRYX_ABSTRACT_SET(Track, MetadataObject, "060e2b34.02530101.0d010101.01013800");

    /// Names the track within its package.
    BRYX_REQUIRED(TrackID, trackID, std::uint32_t, 0x4801);
    BRYX_OPTIONAL(TrackName, trackName, std::wstring, 0x4802);
    /// In a file package, octets 12 to 15 of the keys of the essence elements of the track (ST 379-1).
    BRYX_OPTIONAL(TrackNumber, trackNumber, std::uint32_t, 0x4804);
    /// What is on the track, usually a Sequence.
    BRYX_STRONG_REFERENCE(Segment, segment, Segment, 0x4803);

protected:
    Track() = default;
};

using TrackFactory = MXFSetFactory<Track>;

} // namespace bryx

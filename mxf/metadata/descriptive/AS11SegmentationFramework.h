#pragma once

#include "mxf/metadata/descriptive/DMSegmentationFramework.h"

namespace bryx {

/// One part of a programme, described on the segmentation track (AS-11).
class BRYX_API AS11SegmentationFramework : public DMSegmentationFramework {
    BRYX_SET(AS11SegmentationFramework, DMSegmentationFramework, "060e2b34.02530101.0d010701.0b020100");

    /// The number of the part, from 1.
    BRYX_REQUIRED(PartNumber, partNumber, std::uint16_t, "060e2b34.01010101.0d010701.0b020101");
    /// The number of parts in the programme, or 0 if it is not known.
    BRYX_REQUIRED(PartTotal, partTotal, std::uint16_t, "060e2b34.01010101.0d010701.0b020102");

protected:
    AS11SegmentationFramework() = default;
};

using AS11SegmentationFrameworkFactory = MXFSetFactory<AS11SegmentationFramework>;

} // namespace bryx

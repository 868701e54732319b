#pragma once

#include "mxf/metadata/descriptors/PictureDescriptor.h"

namespace bryx {

/// Where the samples of colour difference stand among those of luminance (ST 377-1).
enum class MXFColourSiting : std::uint8_t {
    CoSiting = 0,
    HorizontalMidpoint = 1,
    ThreeTap = 2,
    Quincunx = 3,
    Rec601 = 4,
    LineAlternating = 5,
    VerticalMidpoint = 6,
    Unknown = 255
};

/// Describes pictures of luminance and colour difference components (ST 377-1).
class BRYX_API CDCIPictureDescriptor : public PictureDescriptor {
    BRYX_SET(CDCIPictureDescriptor, PictureDescriptor, "060e2b34.02530101.0d010101.01012800");

    /// Significant bits of a sample.
    BRYX_REQUIRED(ComponentDepth, componentDepth, std::uint32_t, 0x3301);
    /// Samples of luminance to each of colour difference, along a line and from line to line.
    BRYX_REQUIRED(HorizontalSubsampling, horizontalSubsampling, std::uint32_t, 0x3302);
    BRYX_OPTIONAL(VerticalSubsampling, verticalSubsampling, std::uint32_t, 0x3308);
    BRYX_OPTIONAL(ColourSiting, colourSiting, MXFColourSiting, 0x3303);
    /// Whether luminance comes before colour difference; false for the order of ITU-R BT.601.
    BRYX_OPTIONAL(ReversedByteOrder, reversedByteOrder, bool, 0x330B);
    /// Bits that fill each pixel up.
    BRYX_OPTIONAL(PaddingBits, paddingBits, std::int16_t, 0x3307);
    /// Significant bits of a sample of alpha.
    BRYX_OPTIONAL(AlphaSamplingDepth, alphaSamplingDepth, std::uint32_t, 0x3309);
    BRYX_OPTIONAL(BlackReferenceLevel, blackReferenceLevel, std::uint32_t, 0x3304);
    BRYX_OPTIONAL(WhiteReferenceLevel, whiteReferenceLevel, std::uint32_t, 0x3305);
    /// The number of levels of colour difference.
    BRYX_OPTIONAL(ColourRange, colourRange, std::uint32_t, 0x3306);

protected:
    CDCIPictureDescriptor() = default;
};

using CDCIPictureDescriptorFactory = MXFSetFactory<CDCIPictureDescriptor>;

} // namespace bryx

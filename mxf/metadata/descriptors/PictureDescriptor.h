#pragma once

#include <string>

#include "mxf/metadata/descriptors/FileDescriptor.h"

namespace bryx {

/// How the lines of a frame are stored (ST 377-1).
enum class MXFFrameLayout : std::uint8_t {
    FullFrame = 0,      ///< progressive
    SeparateFields = 1, ///< one field after the other
    OneField = 2,       ///< one field alone, to be shown twice
    MixedFields = 3,    ///< fields interleaved in one picture
    SegmentedFrame = 4  ///< a progressive frame as two fields
};

/// The standard of the video signal (ST 377-1).
enum class MXFSignalStandard : std::uint8_t {
    None = 0,
    ITU601 = 1,
    ITU1358 = 2,
    ST347 = 3,
    ST274 = 4,
    ST296 = 5,
    ST349 = 6,
    ST428 = 7
};

/// Which values of an alpha component are transparent (ST 377-1).
enum class MXFAlphaTransparency : std::uint8_t { MinimumTransparent = 0, MaximumTransparent = 1 };

/// The field whose first line is shown first (ST 377-1).
enum class MXFFieldDominance : std::uint8_t { Unspecified = 0, FieldOne = 1, FieldTwo = 2 };

/// A point of the CIE 1931 diagram in units of 0.00002 (ST 2067-21).
struct MXFChromaticity {
    std::uint16_t x = 0;
    std::uint16_t y = 0;

    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("x", self.x);
        visit("y", self.y);
    }
};
/// Its coordinates as they are coded.
BRYX_API std::string toString(const MXFChromaticity& chromaticity);

/// The primaries of a display (ST 2067-21).
struct MXFThreeChromaticities {
    MXFChromaticity red;
    MXFChromaticity green;
    MXFChromaticity blue;

    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("red", self.red);
        visit("green", self.green);
        visit("blue", self.blue);
    }
};
/// The coordinates of red, green and blue as they are coded.
BRYX_API std::string toString(const MXFThreeChromaticities& primaries);

/// Describes picture essence (ST 377-1). Widths and horizontal offsets count in pixels, heights and vertical offsets in
/// lines, of a field where the frame layout has separate fields.
class BRYX_API PictureDescriptor : public FileDescriptor {
    BRYX_ABSTRACT_SET(PictureDescriptor, FileDescriptor, "060e2b34.02530101.0d010101.01012700");

    BRYX_OPTIONAL(SignalStandard, signalStandard, MXFSignalStandard, 0x3215);
    BRYX_REQUIRED(FrameLayout, frameLayout, MXFFrameLayout, 0x320C);
    /// The size of the picture as it is stored, with all padding.
    BRYX_REQUIRED(StoredWidth, storedWidth, std::uint32_t, 0x3203);
    BRYX_REQUIRED(StoredHeight, storedHeight, std::uint32_t, 0x3202);
    /// How many lines the second field is moved against the first.
    BRYX_OPTIONAL(StoredF2Offset, storedF2Offset, std::int32_t, 0x3216);
    /// The size of the picture that was sampled, and where it stands in the stored one. As large if absent.
    BRYX_OPTIONAL(SampledWidth, sampledWidth, std::uint32_t, 0x3205);
    BRYX_OPTIONAL(SampledHeight, sampledHeight, std::uint32_t, 0x3204);
    BRYX_OPTIONAL(SampledXOffset, sampledXOffset, std::int32_t, 0x3206);
    BRYX_OPTIONAL(SampledYOffset, sampledYOffset, std::int32_t, 0x3207);
    /// The size of the picture to be shown, and where it stands in the sampled one. As large if absent.
    BRYX_OPTIONAL(DisplayHeight, displayHeight, std::uint32_t, 0x3208);
    BRYX_OPTIONAL(DisplayWidth, displayWidth, std::uint32_t, 0x3209);
    BRYX_OPTIONAL(DisplayXOffset, displayXOffset, std::int32_t, 0x320A);
    BRYX_OPTIONAL(DisplayYOffset, displayYOffset, std::int32_t, 0x320B);
    BRYX_OPTIONAL(DisplayF2Offset, displayF2Offset, std::int32_t, 0x3217);
    /// Width to height of the whole picture to be shown.
    BRYX_REQUIRED(AspectRatio, aspectRatio, Rational, 0x320E);
    /// Which part of the picture matters (ST 2016-1).
    BRYX_OPTIONAL(ActiveFormatDescriptor, activeFormatDescriptor, std::uint8_t, 0x3218);
    /// The size of the active part of the picture, and where it stands in the displayed one.
    BRYX_OPTIONAL(ActiveWidth, activeWidth, std::uint32_t, "060e2b34.0101010e.04010501.14000000");
    BRYX_OPTIONAL(ActiveHeight, activeHeight, std::uint32_t, "060e2b34.0101010e.04010501.13000000");
    BRYX_OPTIONAL(ActiveXOffset, activeXOffset, std::uint32_t, "060e2b34.0101010e.04010501.15000000");
    BRYX_OPTIONAL(ActiveYOffset, activeYOffset, std::uint32_t, "060e2b34.0101010e.04010501.16000000");
    /// The line of the signal at which each field begins.
    BRYX_REQUIRED(VideoLineMap, videoLineMap, std::vector<std::int32_t>, 0x320D);
    BRYX_OPTIONAL(AlphaTransparency, alphaTransparency, MXFAlphaTransparency, 0x320F);
    /// The label of the transfer characteristic.
    BRYX_OPTIONAL(CaptureGamma, captureGamma, KLVKey, 0x3210);
    /// The label of the equations by which the components come from red, green and blue.
    BRYX_OPTIONAL(CodingEquations, codingEquations, KLVKey, 0x321A);
    /// The label of the colour primaries.
    BRYX_OPTIONAL(ColourPrimaries, colourPrimaries, KLVKey, 0x3219);
    BRYX_OPTIONAL(FieldDominance, fieldDominance, MXFFieldDominance, 0x3212);
    /// The grid in octets on which stored pictures start; 0 or 1 for none.
    BRYX_OPTIONAL(ImageAlignmentOffset, imageAlignmentOffset, std::uint32_t, 0x3211);
    /// Octets before the first pixel of each picture.
    BRYX_OPTIONAL(ImageStartOffset, imageStartOffset, std::uint32_t, 0x3213);
    /// Octets after the last pixel of each picture.
    BRYX_OPTIONAL(ImageEndOffset, imageEndOffset, std::uint32_t, 0x3214);
    /// The label of the coding of the picture.
    BRYX_OPTIONAL(PictureEssenceCoding, pictureEssenceCoding, KLVKey, 0x3201);
    /// The labels of centre cuts that are fit to be shown.
    BRYX_OPTIONAL(AlternativeCenterCuts, alternativeCenterCuts, std::vector<KLVKey>,
                  "060e2b34.0101010e.04010302.0b000000");
    /// The display that the picture was graded on.
    BRYX_OPTIONAL(MasteringDisplayPrimaries, masteringDisplayPrimaries, MXFThreeChromaticities,
                  "060e2b34.0101010e.04200401.01010000");
    BRYX_OPTIONAL(MasteringDisplayWhitePointChromaticity, masteringDisplayWhitePointChromaticity, MXFChromaticity,
                  "060e2b34.0101010e.04200401.01020000");
    /// Its luminances, in units of 0.0001 candela per square metre.
    BRYX_OPTIONAL(MasteringDisplayMaximumLuminance, masteringDisplayMaximumLuminance, std::uint32_t,
                  "060e2b34.0101010e.04200401.01030000");
    BRYX_OPTIONAL(MasteringDisplayMinimumLuminance, masteringDisplayMinimumLuminance, std::uint32_t,
                  "060e2b34.0101010e.04200401.01040000");

protected:
    PictureDescriptor() = default;
};

using PictureDescriptorFactory = MXFSetFactory<PictureDescriptor>;

} // namespace bryx

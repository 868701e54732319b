#pragma once

#include <array>
#include <string>

#include "klv/ValueCoding.h"
#include "mxf/metadata/descriptors/PictureDescriptor.h"

namespace bryx {

/// A component of a pixel (ST 377-1).
struct MXFPixelComponent {
    char code = 0;          ///< what it is, such as 'R', 'G', 'B' or 'A'; 0 for none
    std::uint8_t depth = 0; ///< in bits

    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("code", self.code);
        visit("depth", self.depth);
    }
};

/// The components of a pixel in their order. Those that are not needed come last and are all zero.
struct MXFPixelLayout {
    std::array<MXFPixelComponent, 8> components{};
};

/// The components that there are, as in "R8G8B8". A code that is no printable character stands as its number in
/// parentheses.
BRYX_API std::string toString(const MXFPixelLayout& layout);

/// The coding of pixel layouts: 16 octets, a code and a depth for each component.
template <>
struct klvutil::ValueCoding<MXFPixelLayout> {
    BRYX_API static void read(OctetReader& from, MXFPixelLayout& layout);
    BRYX_API static void write(OctetWriter& to, const MXFPixelLayout& layout);
};

/// The way in which a picture is scanned (ST 377-1).
enum class MXFScanningDirection : std::uint8_t {
    LeftToRightTopToBottom = 0,
    RightToLeftTopToBottom = 1,
    LeftToRightBottomToTop = 2,
    RightToLeftBottomToTop = 3,
    TopToBottomLeftToRight = 4,
    TopToBottomRightToLeft = 5,
    BottomToTopLeftToRight = 6,
    BottomToTopRightToLeft = 7
};

/// Describes pictures of colour components, or of indices to a palette of them (ST 377-1).
class BRYX_API RGBAPictureDescriptor : public PictureDescriptor {
    BRYX_SET(RGBAPictureDescriptor, PictureDescriptor, "060e2b34.02530101.0d010101.01012900");

    BRYX_OPTIONAL(ComponentMaxReferenceLevel, componentMaxReferenceLevel, std::uint32_t, 0x3406);
    BRYX_OPTIONAL(ComponentMinReferenceLevel, componentMinReferenceLevel, std::uint32_t, 0x3407);
    BRYX_OPTIONAL(AlphaMaxReferenceLevel, alphaMaxReferenceLevel, std::uint32_t, 0x3408);
    BRYX_OPTIONAL(AlphaMinReferenceLevel, alphaMinReferenceLevel, std::uint32_t, 0x3409);
    BRYX_OPTIONAL(ScanningDirection, scanningDirection, MXFScanningDirection, 0x3405);
    BRYX_REQUIRED(PixelLayout, pixelLayout, MXFPixelLayout, 0x3401);
    /// The colours that pixels name by number, coded as the palette layout tells.
    BRYX_OPTIONAL(Palette, palette, std::vector<std::uint8_t>, 0x3403);
    BRYX_OPTIONAL(PaletteLayout, paletteLayout, MXFPixelLayout, 0x3404);

protected:
    RGBAPictureDescriptor() = default;
};

using RGBAPictureDescriptorFactory = MXFSetFactory<RGBAPictureDescriptor>;

} // namespace bryx

#pragma once

#include <string>

#include "mxf/metadata/acquisition/CameraUnitMetadata.h"

namespace bryx {

/// The settings of a lens at the time of a picture (RDD 18).
class BRYX_API LensUnitMetadata : public AcquisitionMetadataObject {
    BRYX_SET(LensUnitMetadata, AcquisitionMetadataObject, "060e2b34.02530101.0c020101.01010000");

    /// The stop, as 65536 times (1 - log2 of the number / 8); of the lens, and of the light that passes it.
    BRYX_OPTIONAL(IrisFNumber, irisFNumber, std::uint16_t, 0x8000, "060e2b34.0101010d.04200202.01000000");
    BRYX_OPTIONAL(IrisTNumber, irisTNumber, std::uint16_t, 0x8008, "060e2b34.0101010e.04200202.08000000");
    /// From 0 for full open to 65535 for closed.
    BRYX_OPTIONAL(IrisRingPosition, irisRingPosition, std::uint16_t, 0x8009, "060e2b34.0101010e.04200202.09000000");
    /// Distances in metres, as RDD 18 codes them: four bits of exponent to ten, twelve of mantissa.
    BRYX_OPTIONAL(FocusPositionFromImagePlane, focusPositionFromImagePlane, std::uint16_t, 0x8001,
                  "060e2b34.0101010d.04200202.02000000");
    BRYX_OPTIONAL(FocusPositionFromFrontLensVertex, focusPositionFromFrontLensVertex, std::uint16_t, 0x8002,
                  "060e2b34.0101010d.04200202.03000000");
    /// From 0 for the closest focus to 65535 for infinity.
    BRYX_OPTIONAL(FocusRingPosition, focusRingPosition, std::uint16_t, 0x800A, "060e2b34.0101010e.04200202.0a000000");
    BRYX_OPTIONAL(MacroSetting, macroSetting, bool, 0x8003, "060e2b34.0101010d.04200202.04000000");
    /// Focal lengths in metres, coded as distances are.
    BRYX_OPTIONAL(LensZoom35mmStillCameraEquivalent, lensZoom35mmStillCameraEquivalent, std::uint16_t, 0x8004,
                  "060e2b34.0101010d.04200202.05000000");
    BRYX_OPTIONAL(LensZoomActualFocalLength, lensZoomActualFocalLength, std::uint16_t, 0x8005,
                  "060e2b34.0101010d.04200202.06000000");
    /// From 0 for wide to 65535 for tele.
    BRYX_OPTIONAL(ZoomRingPosition, zoomRingPosition, std::uint16_t, 0x800B, "060e2b34.0101010e.04200202.0b000000");
    /// In hundredths.
    BRYX_OPTIONAL(AnamorphicLensSqueezeRatio, anamorphicLensSqueezeRatio, std::uint8_t, 0x800C,
                  "060e2b34.0101010e.04200202.0c000000");
    BRYX_OPTIONAL(OpticalInversion, opticalInversion, MXFScanningDirection, 0x800D,
                  "060e2b34.0101010e.04200202.0d000000");
    /// In per cent.
    BRYX_OPTIONAL(OpticalExtenderMagnification, opticalExtenderMagnification, std::uint16_t, 0x8006,
                  "060e2b34.0101010d.04200202.07000000");
    /// Whatever names the lens, in UTF-8.
    BRYX_OPTIONAL(LensAttributes, lensAttributes, std::string, 0x8007, "060e2b34.0101010d.03020302.02100100");

protected:
    LensUnitMetadata() = default;
};

using LensUnitMetadataFactory = MXFSetFactory<LensUnitMetadata>;

} // namespace bryx

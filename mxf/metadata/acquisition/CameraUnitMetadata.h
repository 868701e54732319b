#pragma once

#include <string>

#include "mxf/metadata/descriptors/RGBAPictureDescriptor.h"
#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// The part of the picture that the lens is focused by (RDD 18).
enum class MXFAutoFocusSensingArea : std::uint8_t {
    ManualFocusMode = 0,
    CenterSensitiveAutoFocusMode = 1,
    FullScreenSensingAutoFocusMode = 2,
    MultiSpotSensingAutoFocusMode = 3,
    SingleSpotSensingAutoFocusMode = 4,
    Undefined = 255
};

/// The colour correction filter in use (RDD 18).
enum class MXFColourCorrectionFilter : std::uint8_t {
    CrossEffectFilter = 0,
    CCFilter3200K = 1,
    CCFilter4300K = 2,
    CCFilter6300K = 3,
    CCFilter5600K = 4,
    Undefined = 255
};

/// How the image sensor is read (RDD 18).
enum class MXFImageSensorReadoutMode : std::uint8_t {
    InterlacedField = 0,
    InterlacedFrame = 1,
    ProgressiveFrame = 2,
    Undefined = 255
};

/// How white balance is found (RDD 18).
enum class MXFAutoWhiteBalanceMode : std::uint8_t {
    PresetWhiteBalanceSetup = 0,
    AutomaticWhiteBalanceSetup = 1,
    HoldWhiteBalanceSetup = 2,
    OnePushWhiteBalanceSetup = 3,
    Undefined = 255
};

/// The range of the codes of luminance (RDD 18).
enum class MXFLuminanceCodeRange : std::uint8_t {
    UnknownCode = 0,
    UnknownPicture = 1,
    FullScaledCode = 2,
    FullScaledPicture = 3,
    NormalVideo = 5,
    VideoRangedCode = 6,
    LimitedRangeVideo = 7
};

/// The settings of a camera at the time of a picture (RDD 18).
class BRYX_API CameraUnitMetadata : public AcquisitionMetadataObject {
    BRYX_SET(CameraUnitMetadata, AcquisitionMetadataObject, "060e2b34.02530101.0c020101.02010000");

    /// The label of the way in which exposure is found.
    BRYX_OPTIONAL(AutoExposureMode, autoExposureMode, KLVKey, 0x8100, "060e2b34.0101010d.04200103.01010000");
    /// By ISO 2720.
    BRYX_OPTIONAL(ExposureIndexOfPhotoMeter, exposureIndexOfPhotoMeter, std::uint16_t, 0x8115,
                  "060e2b34.0101010e.04200103.010c0000");
    BRYX_OPTIONAL(ExposureIndexOfPhotoMeterLongInteger, exposureIndexOfPhotoMeterLongInteger, std::uint32_t, 0x8119,
                  "060e2b34.0101010e.04200103.010c0100");
    BRYX_OPTIONAL(AutoFocusSensingAreaSetting, autoFocusSensingAreaSetting, MXFAutoFocusSensingArea, 0x8101,
                  "060e2b34.0101010d.04200103.01020000");
    BRYX_OPTIONAL(ColourCorrectionFilterWheelSetting, colourCorrectionFilterWheelSetting, MXFColourCorrectionFilter,
                  0x8102, "060e2b34.0101010d.04200103.01030000");
    /// The denominator of the part of light that passes.
    BRYX_OPTIONAL(NeutralDensityFilterWheelSetting, neutralDensityFilterWheelSetting, std::uint16_t, 0x8103,
                  "060e2b34.0101010d.04200103.01040000");
    BRYX_OPTIONAL(RotaryShutter, rotaryShutter, bool, 0x811A, "060e2b34.0101010e.04200103.010e0000");
    BRYX_OPTIONAL(OpticalAntiAliasingFilter, opticalAntiAliasingFilter, std::uint8_t, 0x811B,
                  "060e2b34.0101010e.04200103.010f0000");
    /// In micrometres.
    BRYX_OPTIONAL(ImageSensorDimensionEffectiveWidth, imageSensorDimensionEffectiveWidth, std::uint16_t, 0x8104,
                  "060e2b34.0101010d.04200103.01050000");
    /// In micrometres.
    BRYX_OPTIONAL(ImageSensorDimensionEffectiveHeight, imageSensorDimensionEffectiveHeight, std::uint16_t, 0x8105,
                  "060e2b34.0101010d.04200103.01060000");
    /// Frames per second.
    BRYX_OPTIONAL(CaptureFrameRate, captureFrameRate, Rational, 0x8106, "060e2b34.0101010d.04010301.03010000");
    BRYX_OPTIONAL(ImageSensorReadoutMode, imageSensorReadoutMode, MXFImageSensorReadoutMode, 0x8107,
                  "060e2b34.0101010d.04200103.01070000");
    BRYX_OPTIONAL(ImageSensorDecimationRatio, imageSensorDecimationRatio, std::uint8_t, 0x811C,
                  "060e2b34.0101010e.04200103.01100000");
    BRYX_OPTIONAL(ImageScanDirection, imageScanDirection, MXFScanningDirection, 0x811D,
                  "060e2b34.0101010e.04200103.01110000");
    /// In units of 1/60 degree.
    BRYX_OPTIONAL(ShutterSpeedAngle, shutterSpeedAngle, std::uint32_t, 0x8108, "060e2b34.0101010d.04200103.01080000");
    /// In seconds.
    BRYX_OPTIONAL(ShutterSpeedTime, shutterSpeedTime, Rational, 0x8109, "060e2b34.0101010d.04200103.01080100");
    /// In hundredths of a decibel.
    BRYX_OPTIONAL(CameraMasterGainAdjustment, cameraMasterGainAdjustment, std::int16_t, 0x810A,
                  "060e2b34.0101010d.04200103.01090000");
    /// By ISO 12232.
    BRYX_OPTIONAL(ISOSensitivity, isoSensitivity, std::uint16_t, 0x810B, "060e2b34.0101010d.04200103.010a0000");
    BRYX_OPTIONAL(ISOSensitivityLongInteger, isoSensitivityLongInteger, std::uint32_t, 0x811E,
                  "060e2b34.0101010e.04200103.010a0100");
    /// Row by row.
    BRYX_OPTIONAL(ColourMatrix, colourMatrix, std::vector<Rational>, 0x8118, "060e2b34.0101010e.04200103.010d0000");
    /// In per cent.
    BRYX_OPTIONAL(ElectricalExtenderMagnification, electricalExtenderMagnification, std::uint16_t, 0x810C,
                  "060e2b34.0101010d.04200103.010b0000");
    BRYX_OPTIONAL(AutoWhiteBalanceMode, autoWhiteBalanceMode, MXFAutoWhiteBalanceMode, 0x810D,
                  "060e2b34.0101010d.04200103.02010000");
    /// In kelvins.
    BRYX_OPTIONAL(WhiteBalance, whiteBalance, std::uint16_t, 0x810E, "060e2b34.0101010d.04200103.02020000");
    BRYX_OPTIONAL(TintCorrection, tintCorrection, std::int16_t, 0x811F, "060e2b34.0101010e.04200103.02090000");
    /// In tenths of a per cent of reference white, as the knee point.
    BRYX_OPTIONAL(CameraMasterBlackLevel, cameraMasterBlackLevel, std::int16_t, 0x810F,
                  "060e2b34.0101010d.04200103.02030000");
    BRYX_OPTIONAL(CameraKneePoint, cameraKneePoint, std::uint16_t, 0x8110, "060e2b34.0101010d.04200103.02040000");
    BRYX_OPTIONAL(CameraKneeSlope, cameraKneeSlope, Rational, 0x8111, "060e2b34.0101010d.04200103.02050000");
    /// In tenths of a per cent of reference white.
    BRYX_OPTIONAL(CameraLuminanceDynamicRange, cameraLuminanceDynamicRange, std::uint16_t, 0x8112,
                  "060e2b34.0101010d.04200103.02060000");
    /// The label of the transfer characteristic.
    BRYX_OPTIONAL(TransferCharacteristic, transferCharacteristic, KLVKey, 0x3210);
    /// The label of the colour primaries.
    BRYX_OPTIONAL(ColourPrimaries, colourPrimaries, KLVKey, 0x3219);
    /// The label of the coding equations.
    BRYX_OPTIONAL(CodingEquations, codingEquations, KLVKey, 0x321A);
    BRYX_OPTIONAL(LuminanceCodeRange, luminanceCodeRange, MXFLuminanceCodeRange, 0x8120,
                  "060e2b34.0101010e.04200103.01120000");
    BRYX_OPTIONAL(GammaForCDL, gammaForCDL, std::uint8_t, 0x8116, "060e2b34.0101010e.04200103.02070000");
    BRYX_OPTIONAL(ColourForCDL, colourForCDL, std::uint8_t, 0x8121, "060e2b34.0101010e.04200103.020a0000");
    /// Slopes, offsets, powers and saturation, each a binary16 number (IEEE 754).
    BRYX_OPTIONAL(ASCCDLV12, ascCDLV12, std::vector<std::uint16_t>, 0x8117, "060e2b34.0101010e.04200103.02080000");
    /// In UTF-8, as all texts here.
    BRYX_OPTIONAL(AcquisitionSettingProcedure, acquisitionSettingProcedure, std::string, 0x8122,
                  "060e2b34.0101010e.04200103.01130000");
    BRYX_OPTIONAL(CameraSettingFileURI, cameraSettingFileURI, std::string, 0x8113,
                  "060e2b34.0101010d.01020108.02000000");
    BRYX_OPTIONAL(CameraAttributes, cameraAttributes, std::string, 0x8114, "060e2b34.0101010d.03020302.02100200");

protected:
    CameraUnitMetadata() = default;
};

using CameraUnitMetadataFactory = MXFSetFactory<CameraUnitMetadata>;

} // namespace bryx

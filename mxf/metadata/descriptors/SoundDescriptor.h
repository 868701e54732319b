#pragma once

#include "mxf/metadata/descriptors/FileDescriptor.h"

namespace bryx {

/// What the channels of sound are to one another (ST 377-1).
enum class MXFElectroSpatialFormulation : std::uint8_t {
    Default = 0,
    TwoChannelMode = 1,
    SingleChannelMode = 2,
    PrimarySecondaryMode = 3,
    StereophonicMode = 4,
    SingleChannelDoubleSamplingFrequencyMode = 7,
    StereoLeftChannelDoubleSamplingFrequencyMode = 8,
    StereoRightChannelDoubleSamplingFrequencyMode = 9,
    MultiChannelMode = 15
};

/// Describes sound essence (ST 377-1).
class BRYX_API SoundDescriptor : public FileDescriptor {
    BRYX_SET(SoundDescriptor, FileDescriptor, "060e2b34.02530101.0d010101.01014200");

    /// Samples of a channel per second.
    BRYX_REQUIRED(AudioSamplingRate, audioSamplingRate, Rational, 0x3D03);
    /// Whether the number of samples in each picture is locked to the picture.
    BRYX_OPTIONAL(Locked, locked, bool, 0x3D02);
    /// In dBm for 0 VU.
    BRYX_OPTIONAL(AudioReferenceLevel, audioReferenceLevel, std::int8_t, 0x3D04);
    BRYX_OPTIONAL(ElectroSpatialFormulation, electroSpatialFormulation, MXFElectroSpatialFormulation, 0x3D05);
    BRYX_REQUIRED(ChannelCount, channelCount, std::uint32_t, 0x3D07);
    /// Bits of a sample.
    BRYX_REQUIRED(QuantizationBits, quantizationBits, std::uint32_t, 0x3D01);
    /// Gain in decibels that brings the sound to normal loudness.
    BRYX_OPTIONAL(DialNorm, dialNorm, std::int8_t, 0x3D0C);
    /// The label of the coding of the sound.
    BRYX_OPTIONAL(SoundEssenceCompression, soundEssenceCompression, KLVKey, 0x3D06);
    /// The level that equipment is aligned to, in dBFS.
    BRYX_OPTIONAL(ReferenceAudioAlignmentLevel, referenceAudioAlignmentLevel, std::int8_t,
                  "060e2b34.0101010e.04020101.07000000");
    /// The frame rate of the pictures that go with the sound.
    BRYX_OPTIONAL(ReferenceImageEditRate, referenceImageEditRate, Rational, "060e2b34.0101010e.04020101.06000000");

protected:
    SoundDescriptor() = default;
};

using SoundDescriptorFactory = MXFSetFactory<SoundDescriptor>;

} // namespace bryx

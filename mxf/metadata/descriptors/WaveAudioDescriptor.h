#pragma once

#include "mxf/metadata/descriptors/SoundDescriptor.h"

namespace bryx {

/// Describes uncompressed sound as in a WAVE file (ST 382).
class BRYX_API WaveAudioDescriptor : public SoundDescriptor {
    BRYX_SET(WaveAudioDescriptor, SoundDescriptor, "060e2b34.02530101.0d010101.01014800");

    /// Octets of a sample of all channels.
    BRYX_REQUIRED(BlockAlign, blockAlign, std::uint16_t, 0x3D0A);
    /// The place of the first frame in the sequence of frames with unlike numbers of samples.
    BRYX_OPTIONAL(SequenceOffset, sequenceOffset, std::uint8_t, 0x3D0B);
    BRYX_REQUIRED(AverageBytesPerSecond, averageBytesPerSecond, std::uint32_t, 0x3D09);
    /// The label of the assignment of channels to loudspeakers.
    BRYX_OPTIONAL(ChannelAssignment, channelAssignment, KLVKey, 0x3D32);
    /// The peak envelope of the sound, as in the "levl" chunk of a Broadcast Wave file (EBU Tech 3285-3).
    BRYX_OPTIONAL(PeakEnvelopeVersion, peakEnvelopeVersion, std::uint32_t, 0x3D29);
    /// 1 for unsigned 8-bit peak points, 2 for unsigned 16-bit ones.
    BRYX_OPTIONAL(PeakEnvelopeFormat, peakEnvelopeFormat, std::uint32_t, 0x3D2A);
    /// 1 for the positive peak alone, 2 for the positive and the negative.
    BRYX_OPTIONAL(PointsPerPeakValue, pointsPerPeakValue, std::uint32_t, 0x3D2B);
    /// Samples that make one peak value.
    BRYX_OPTIONAL(PeakEnvelopeBlockSize, peakEnvelopeBlockSize, std::uint32_t, 0x3D2C);
    BRYX_OPTIONAL(PeakChannels, peakChannels, std::uint32_t, 0x3D2D);
    BRYX_OPTIONAL(PeakFrames, peakFrames, std::uint32_t, 0x3D2E);
    /// The sample with the highest level.
    BRYX_OPTIONAL(PeakOfPeaksPosition, peakOfPeaksPosition, std::int64_t, 0x3D2F);
    BRYX_OPTIONAL(PeakEnvelopeTimestamp, peakEnvelopeTimestamp, MXFTimestamp, 0x3D30);
    BRYX_OPTIONAL(PeakEnvelopeData, peakEnvelopeData, std::vector<std::uint8_t>, 0x3D31);

protected:
    WaveAudioDescriptor() = default;
};

using WaveAudioDescriptorFactory = MXFSetFactory<WaveAudioDescriptor>;

} // namespace bryx

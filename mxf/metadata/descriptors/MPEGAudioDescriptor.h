#pragma once

#include "mxf/metadata/descriptors/SoundDescriptor.h"

namespace bryx {

/// Describes MPEG audio (ST 381-2).
class BRYX_API MPEGAudioDescriptor : public SoundDescriptor {
    BRYX_SET(MPEGAudioDescriptor, SoundDescriptor, "060e2b34.02530101.0d010101.01015e00");

    /// In kilobits per second.
    BRYX_OPTIONAL(BitRate, bitRate, std::uint32_t, "060e2b34.0101010a.04020403.01020000");
    /// The label of the assignment of channels to loudspeakers.
    BRYX_OPTIONAL(ChannelAssignment, channelAssignment, KLVKey, "060e2b34.0101010e.04020403.01050000");

protected:
    MPEGAudioDescriptor() = default;
};

using MPEGAudioDescriptorFactory = MXFSetFactory<MPEGAudioDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptors/MCALabelSubDescriptor.h"

namespace bryx {

/// Labels a channel (ST 377-4).
class BRYX_API AudioChannelLabelSubDescriptor : public MCALabelSubDescriptor {
    BRYX_SET(AudioChannelLabelSubDescriptor, MCALabelSubDescriptor, "060e2b34.02530101.0d010101.01016b00");

    /// The link ID of the soundfield group that the channel belongs to.
    BRYX_OPTIONAL(SoundfieldGroup, soundfieldGroup, MXFUID, "060e2b34.0101010e.01030701.06000000");

protected:
    AudioChannelLabelSubDescriptor() = default;
};

using AudioChannelLabelSubDescriptorFactory = MXFSetFactory<AudioChannelLabelSubDescriptor>;

} // namespace bryx

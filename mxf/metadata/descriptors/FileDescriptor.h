#pragma once

#include "mxf/metadata/descriptors/GenericDescriptor.h"

namespace bryx {

/// Describes the essence of a file package (ST 377-1).
class BRYX_API FileDescriptor : public GenericDescriptor {
    BRYX_ABSTRACT_SET(FileDescriptor, GenericDescriptor, "060e2b34.02530101.0d010101.01012500");

    /// The ID of the track of the package that is described; absent for all of them.
    BRYX_OPTIONAL(LinkedTrackID, linkedTrackID, std::uint32_t, 0x3006);
    /// Edit units of the essence container per second.
    BRYX_REQUIRED(SampleRate, sampleRate, Rational, 0x3001);
    /// Edit units in the essence container.
    BRYX_OPTIONAL(ContainerDuration, containerDuration, std::int64_t, 0x3002);
    /// The label of the essence container.
    BRYX_REQUIRED(EssenceContainer, essenceContainer, KLVKey, 0x3004);
    /// The label of a codec.
    BRYX_OPTIONAL(Codec, codec, KLVKey, 0x3005);

protected:
    FileDescriptor() = default;
};

using FileDescriptorFactory = MXFSetFactory<FileDescriptor>;

} // namespace bryx

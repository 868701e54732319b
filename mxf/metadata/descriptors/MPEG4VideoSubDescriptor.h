#pragma once

#include "mxf/metadata/descriptors/MPEGVideoDescriptor.h"
#include "mxf/metadata/descriptors/SubDescriptor.h"

namespace bryx {

/// Adds what there is to say of MPEG-4 visual essence (ST 381-2).
class BRYX_API MPEG4VideoSubDescriptor : public SubDescriptor {
    BRYX_SET(MPEG4VideoSubDescriptor, SubDescriptor, "060e2b34.02530101.0d010101.01016800");

    /// Whether one sequence header holds for the whole stream.
    BRYX_OPTIONAL(SingleSequence, singleSequence, bool, 0x8000, "060e2b34.0101010d.04010602.02020000");
    /// Whether the number of B VOPs between others is always the same.
    BRYX_OPTIONAL(ConstantBVOPs, constantBVOPs, bool, 0x8001, "060e2b34.0101010d.04010602.02030000");
    BRYX_OPTIONAL(CodedContentType, codedContentType, MXFCodedContentType, 0x8002,
                  "060e2b34.0101010d.04010602.02040000");
    BRYX_OPTIONAL(LowDelay, lowDelay, bool, 0x8003, "060e2b34.0101010d.04010602.02050000");
    /// Whether all groups of VOPs are closed.
    BRYX_OPTIONAL(ClosedGOV, closedGOV, bool, 0x8004, "060e2b34.0101010d.04010602.02060000");
    /// Whether all groups of VOPs have the same structure.
    BRYX_OPTIONAL(IdenticalGOV, identicalGOV, bool, 0x8005, "060e2b34.0101010d.04010602.02070000");
    /// The most VOPs from one I VOP to the next; 0 if there is no limit.
    BRYX_OPTIONAL(MaxGOV, maxGOV, std::uint16_t, 0x8006, "060e2b34.0101010d.04010602.02080000");
    /// The most B VOPs between others.
    BRYX_OPTIONAL(BVOPCount, bVOPCount, std::uint16_t, 0x8007, "060e2b34.0101010d.04010602.02090000");
    /// In bits per second.
    BRYX_OPTIONAL(BitRate, bitRate, std::uint32_t, 0x8008, "060e2b34.0101010d.04010602.020b0000");
    /// profile_and_level_indication (ISO/IEC 14496-2).
    BRYX_OPTIONAL(ProfileAndLevel, profileAndLevel, std::uint8_t, 0x8009, "060e2b34.0101010d.04010602.020a0000");

protected:
    MPEG4VideoSubDescriptor() = default;
};

using MPEG4VideoSubDescriptorFactory = MXFSetFactory<MPEG4VideoSubDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptors/CDCIPictureDescriptor.h"

namespace bryx {

/// How the pictures of a compressed stream are scanned (ST 381-1, ST 381-2).
enum class MXFCodedContentType : std::uint8_t { Unknown = 0, Progressive = 1, Interlaced = 2, Mixed = 3 };

/// Describes MPEG-2 video (ST 381-1).
class BRYX_API MPEGVideoDescriptor : public CDCIPictureDescriptor {
    BRYX_SET(MPEGVideoDescriptor, CDCIPictureDescriptor, "060e2b34.02530101.0d010101.01015100");

    /// Whether one sequence header holds for the whole stream.
    BRYX_OPTIONAL(SingleSequence, singleSequence, bool, 0x8000, "060e2b34.01010105.04010602.01020000");
    /// Whether the number of B pictures between others is always the same.
    BRYX_OPTIONAL(ConstantBFrames, constantBFrames, bool, 0x8001, "060e2b34.01010105.04010602.01030000");
    BRYX_OPTIONAL(CodedContentType, codedContentType, MXFCodedContentType, 0x8002,
                  "060e2b34.01010105.04010602.01040000");
    BRYX_OPTIONAL(LowDelay, lowDelay, bool, 0x8003, "060e2b34.01010105.04010602.01050000");
    /// Whether all groups of pictures are closed.
    BRYX_OPTIONAL(ClosedGOP, closedGOP, bool, 0x8004, "060e2b34.01010105.04010602.01060000");
    /// Whether all groups of pictures have the same structure.
    BRYX_OPTIONAL(IdenticalGOP, identicalGOP, bool, 0x8005, "060e2b34.01010105.04010602.01070000");
    /// The most pictures from one I picture to the next; 0 if there is no limit.
    BRYX_OPTIONAL(MaxGOP, maxGOP, std::uint16_t, 0x8006, "060e2b34.01010105.04010602.01080000");
    /// The most B pictures between others.
    BRYX_OPTIONAL(BPictureCount, bPictureCount, std::uint16_t, 0x8007, "060e2b34.01010105.04010602.01090000");
    /// In bits per second.
    BRYX_OPTIONAL(BitRate, bitRate, std::uint32_t, 0x8008, "060e2b34.01010105.04010602.010b0000");
    /// The octet of the sequence extension that tells profile and level (ISO/IEC 13818-2).
    BRYX_OPTIONAL(ProfileAndLevel, profileAndLevel, std::uint8_t, 0x8009, "060e2b34.01010105.04010602.010a0000");

protected:
    MPEGVideoDescriptor() = default;
};

using MPEGVideoDescriptorFactory = MXFSetFactory<MPEGVideoDescriptor>;

} // namespace bryx

#pragma once

#include "mxf/metadata/descriptors/SubDescriptor.h"

namespace bryx {

/// How the pictures of an AVC stream are scanned and coded (ST 381-3).
enum class MXFAVCCodedContentKind : std::uint8_t {
    Unknown = 0,
    ProgressiveFramePicture = 1,
    InterlacedFieldPicture = 2,
    InterlacedFramePicture = 3,
    InterlacedFrameFieldPicture = 4
};

/// Adds what there is to say of AVC essence (ST 381-3, RP 2027).
class BRYX_API AVCVideoSubDescriptor : public SubDescriptor {
    BRYX_SET(AVCVideoSubDescriptor, SubDescriptor, "060e2b34.02530101.0d010101.01016e00");

    /// Whether the number of B pictures between others is always the same.
    BRYX_OPTIONAL(ConstantBPicture, constantBPicture, bool, 0x8001, "060e2b34.0101010e.04010606.01030000");
    BRYX_OPTIONAL(CodedContentKind, codedContentKind, MXFAVCCodedContentKind, 0x8002,
                  "060e2b34.0101010e.04010606.01040000");
    /// Whether all groups of pictures are closed.
    BRYX_OPTIONAL(ClosedGOP, closedGOP, bool, 0x8004, "060e2b34.0101010e.04010606.01060000");
    /// Whether all groups of pictures have the same structure.
    BRYX_OPTIONAL(IdenticalGOP, identicalGOP, bool, 0x8005, "060e2b34.0101010e.04010606.01070000");
    /// The most pictures from one I picture to the next; 0 if there is no limit.
    BRYX_OPTIONAL(MaxGOP, maxGOP, std::uint16_t, 0x8006, "060e2b34.0101010e.04010606.01080000");
    /// The most B pictures between others.
    BRYX_OPTIONAL(BPictureCount, bPictureCount, std::uint16_t, 0x8007, "060e2b34.0101010e.04010606.01090000");
    /// profile_idc (ISO/IEC 14496-10).
    BRYX_OPTIONAL(Profile, profile, std::uint8_t, 0x8008, "060e2b34.0101010e.04010606.010a0000");
    /// The octet of constraint flags after profile_idc.
    BRYX_OPTIONAL(ProfileConstraint, profileConstraint, std::uint8_t, 0x800A, "060e2b34.0101010e.04010606.010c0000");
    /// level_idc.
    BRYX_OPTIONAL(Level, level, std::uint8_t, 0x800B, "060e2b34.0101010e.04010606.010d0000");
    /// In bits per second.
    BRYX_OPTIONAL(MaximumBitRate, maximumBitRate, std::uint32_t, 0x8009, "060e2b34.0101010e.04010606.010b0000");
    /// In bits per second.
    BRYX_OPTIONAL(AverageBitRate, averageBitRate, std::uint32_t, 0x8012, "060e2b34.0101010e.04010606.01140000");
    /// Pictures that a decoder holds back before it shows the first; 255 if that is not known.
    BRYX_REQUIRED(DecodingDelay, decodingDelay, std::uint8_t, 0x800C, "060e2b34.0101010e.04010606.010e0000");
    BRYX_OPTIONAL(MaximumRefFrames, maximumRefFrames, std::uint8_t, 0x800D, "060e2b34.0101010e.04010606.010f0000");
    /// Where sequence parameter sets stand in the stream, and whether they change; as ST 381-3 codes it.
    BRYX_OPTIONAL(SequenceParameterSetFlag, sequenceParameterSetFlag, std::uint8_t, 0x800E,
                  "060e2b34.0101010e.04010606.01100000");
    /// The same for picture parameter sets.
    BRYX_OPTIONAL(PictureParameterSetFlag, pictureParameterSetFlag, std::uint8_t, 0x800F,
                  "060e2b34.0101010e.04010606.01110000");

protected:
    AVCVideoSubDescriptor() = default;
};

using AVCVideoSubDescriptorFactory = MXFSetFactory<AVCVideoSubDescriptor>;

} // namespace bryx

#pragma once

#include <cstddef>

#include "mxf/metadata/descriptors/WaveAudioDescriptor.h"

namespace bryx {

/// The emphasis of an AES3 signal (ST 382).
enum class MXFEmphasis : std::uint8_t { Unknown = 0, None = 4, FiftyFifteen = 6, J17 = 7 };

/// The use of the auxiliary bits of an AES3 signal (ST 382).
enum class MXFAuxiliaryBitsMode : std::uint8_t {
    NotDefined = 0,
    MainAudioSampleData = 1,
    SingleCoordinationSignal = 2,
    UserDefined = 3
};

/// Where the channel status data of an AES3 channel come from (ST 382).
enum class MXFChannelStatusMode : std::uint8_t {
    None = 0,
    Minimum = 1,
    Standard = 2,
    Fixed = 3,
    Stream = 4,
    Essence = 5
};

/// Where the user data of an AES3 channel come from (ST 382).
enum class MXFUserDataMode : std::uint8_t {
    NotDefined = 0,
    BlockStructure192Bit = 1,
    AES18 = 2,
    UserDefined = 3,
    IEC = 4,
    Metadata = 5
};

/// Describes sound as it comes by AES3 (ST 382).
class BRYX_API AES3AudioDescriptor : public WaveAudioDescriptor {
    BRYX_SET(AES3AudioDescriptor, WaveAudioDescriptor, "060e2b34.02530101.0d010101.01014700");

    BRYX_OPTIONAL(Emphasis, emphasis, MXFEmphasis, 0x3D0D);
    /// The place in the essence of the first Z preamble, with which a block of 192 frames begins.
    BRYX_OPTIONAL(BlockStartOffset, blockStartOffset, std::uint16_t, 0x3D0F);
    BRYX_OPTIONAL(AuxiliaryBitsMode, auxiliaryBitsMode, MXFAuxiliaryBitsMode, 0x3D08);
    /// One for each channel.
    BRYX_OPTIONAL(ChannelStatusDataMode, channelStatusDataMode, std::vector<MXFChannelStatusMode>, 0x3D10);
    /// 24 octets for each channel.
    BRYX_OPTIONAL(FixedChannelStatusData, fixedChannelStatusData, std::vector<std::byte>, 0x3D11);
    /// One for each channel.
    BRYX_OPTIONAL(UserDataMode, userDataMode, std::vector<MXFUserDataMode>, 0x3D12);
    /// 24 octets for each channel.
    BRYX_OPTIONAL(FixedUserData, fixedUserData, std::vector<std::byte>, 0x3D13);

protected:
    AES3AudioDescriptor() = default;
};

using AES3AudioDescriptorFactory = MXFSetFactory<AES3AudioDescriptor>;

} // namespace bryx

#pragma once

#include <string>

#include "mxf/metadata/descriptive/DescriptiveMetadataFramework.h"

namespace bryx {

/// What is on which sound track (EBU R 48, EBU R 123).
enum class AS11AudioTrackLayout : std::uint8_t {
    EBU_R_48_1a = 0,
    EBU_R_48_1b = 1,
    EBU_R_48_1c = 2,
    EBU_R_48_2a = 3,
    EBU_R_48_2b = 4,
    EBU_R_48_2c = 5,
    EBU_R_48_3a = 6,
    EBU_R_48_3b = 7,
    EBU_R_48_4a = 8,
    EBU_R_48_4b = 9,
    EBU_R_48_4c = 10,
    EBU_R_48_5a = 11,
    EBU_R_48_5b = 12,
    EBU_R_48_6a = 13,
    EBU_R_48_6b = 14,
    EBU_R_48_7a = 15,
    EBU_R_48_7b = 16,
    EBU_R_48_8a = 17,
    EBU_R_48_8b = 18,
    EBU_R_48_8c = 19,
    EBU_R_48_9a = 20,
    EBU_R_48_9b = 21,
    EBU_R_48_10a = 22,
    EBU_R_48_11a = 23,
    EBU_R_48_11b = 24,
    EBU_R_48_11c = 25,
    EBU_R_123_2a = 26,
    EBU_R_123_4a = 27,
    EBU_R_123_4b = 28,
    EBU_R_123_4c = 29,
    EBU_R_123_8a = 30,
    EBU_R_123_8b = 31,
    EBU_R_123_8c = 32,
    EBU_R_123_8d = 33,
    EBU_R_123_8e = 34,
    EBU_R_123_8f = 35,
    EBU_R_123_8g = 36,
    EBU_R_123_8h = 37,
    EBU_R_123_8i = 38,
    EBU_R_123_12a = 39,
    EBU_R_123_12b = 40,
    EBU_R_123_12c = 41,
    EBU_R_123_12d = 42,
    EBU_R_123_12e = 43,
    EBU_R_123_12f = 44,
    EBU_R_123_12g = 45,
    EBU_R_123_12h = 46,
    EBU_R_123_16a = 47,
    EBU_R_123_16b = 48,
    EBU_R_123_16c = 49,
    EBU_R_123_16d = 50,
    EBU_R_123_16e = 51,
    EBU_R_123_16f = 52,
    Undefined = 255
};

/// What captions are for (AS-11).
enum class AS11CaptionsType : std::uint8_t { HardOfHearing = 0, Translation = 1 };

/// What every programme that is delivered by AS-11 says of itself.
class BRYX_API AS11CoreFramework : public DescriptiveMetadataFramework {
    BRYX_SET(AS11CoreFramework, DescriptiveMetadataFramework, "060e2b34.02530101.0d010701.0b010100");

    BRYX_REQUIRED(SeriesTitle, seriesTitle, std::wstring, "060e2b34.01010101.0d010701.0b010101");
    BRYX_REQUIRED(ProgrammeTitle, programmeTitle, std::wstring, "060e2b34.01010101.0d010701.0b010102");
    BRYX_REQUIRED(EpisodeTitleNumber, episodeTitleNumber, std::wstring, "060e2b34.01010101.0d010701.0b010103");
    /// The constraints of AS-11 that the file keeps.
    BRYX_REQUIRED(ShimName, shimName, std::wstring, "060e2b34.01010101.0d010701.0b010104");
    /// 256 times the major number plus the minor one.
    BRYX_REQUIRED(ShimVersion, shimVersion, std::uint16_t, "060e2b34.01010101.0d010701.0b01010a");
    BRYX_REQUIRED(AudioTrackLayout, audioTrackLayout, AS11AudioTrackLayout, "060e2b34.01010101.0d010701.0b010105");
    /// A language by ISO 639-2, as the caption language.
    BRYX_REQUIRED(PrimaryAudioLanguage, primaryAudioLanguage, std::wstring, "060e2b34.01010101.0d010701.0b010106");
    /// Whether there are captions that can be switched on.
    BRYX_REQUIRED(ClosedCaptionsPresent, closedCaptionsPresent, bool, "060e2b34.01010101.0d010701.0b010107");
    BRYX_OPTIONAL(ClosedCaptionsType, closedCaptionsType, AS11CaptionsType, "060e2b34.01010101.0d010701.0b010108");
    BRYX_OPTIONAL(CaptionLanguage, captionLanguage, std::wstring, "060e2b34.01010101.0d010701.0b010109");

protected:
    AS11CoreFramework() = default;
};

using AS11CoreFrameworkFactory = MXFSetFactory<AS11CoreFramework>;

} // namespace bryx

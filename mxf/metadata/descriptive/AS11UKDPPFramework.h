#pragma once

#include <string>

#include "mxf/metadata/descriptive/AS11CoreFramework.h"

namespace bryx {

/// How a stereoscopic picture is stored.
enum class UKDPPThreeDType : std::uint8_t { SideBySide = 0, Dual = 1, LeftEyeOnly = 2, RightEyeOnly = 3 };

/// The outcome of the test for photosensitive epilepsy.
enum class UKDPPPSEPass : std::uint8_t { Yes = 0, No = 1, NotTested = 2 };

/// The standard by which loudness was measured.
enum class UKDPPAudioLoudnessStandard : std::uint8_t { None = 0, EBUR_128 = 1 };

/// How audio description is delivered.
enum class UKDPPAudioDescriptionType : std::uint8_t { ControlDataNarration = 0, Mix = 1 };

/// Whether the programme is signed.
enum class UKDPPSigningPresent : std::uint8_t { Yes = 0, No = 1, SignerOnly = 2 };

/// The sign language.
enum class UKDPPSignLanguage : std::uint8_t { BSLBritishSignLanguage = 0, BSLMakaton = 1 };

/// What a programme says of itself that is delivered to a broadcaster of the United Kingdom (AS-11).
class BRYX_API AS11UKDPPFramework : public DescriptiveMetadataFramework {
    BRYX_SET(AS11UKDPPFramework, DescriptiveMetadataFramework, "060e2b34.02530101.0d0c0101.01010000");

    BRYX_REQUIRED(ProductionNumber, productionNumber, std::wstring, "060e2b34.01010101.0d0c0101.01010100");
    BRYX_REQUIRED(Synopsis, synopsis, std::wstring, "060e2b34.01010101.0d0c0101.01010200");
    BRYX_REQUIRED(Originator, originator, std::wstring, "060e2b34.01010101.0d0c0101.01010300");
    BRYX_REQUIRED(CopyrightYear, copyrightYear, std::uint16_t, "060e2b34.01010101.0d0c0101.01010400");
    BRYX_OPTIONAL(OtherIdentifier, otherIdentifier, std::wstring, "060e2b34.01010101.0d0c0101.01010500");
    /// What kind of identifier the one before is.
    BRYX_OPTIONAL(OtherIdentifierType, otherIdentifierType, std::wstring, "060e2b34.01010101.0d0c0101.01010600");
    BRYX_OPTIONAL(Genre, genre, std::wstring, "060e2b34.01010101.0d0c0101.01010700");
    BRYX_OPTIONAL(Distributor, distributor, std::wstring, "060e2b34.01010101.0d0c0101.01010800");
    /// Width to height of the picture within the frame.
    BRYX_OPTIONAL(PictureRatio, pictureRatio, Rational, "060e2b34.01010101.0d0c0101.01010900");
    /// Whether the picture is stereoscopic.
    BRYX_REQUIRED(ThreeD, threeD, bool, "060e2b34.01010101.0d0c0101.01010a00");
    BRYX_OPTIONAL(ThreeDType, threeDType, UKDPPThreeDType, "060e2b34.01010101.0d0c0101.01010b00");
    BRYX_OPTIONAL(ProductPlacement, productPlacement, bool, "060e2b34.01010101.0d0c0101.01010c00");
    BRYX_REQUIRED(PSEPass, psePass, UKDPPPSEPass, "060e2b34.01010101.0d0c0101.01010d00");
    /// Of the device for the test for photosensitive epilepsy.
    BRYX_OPTIONAL(PSEManufacturer, pseManufacturer, std::wstring, "060e2b34.01010101.0d0c0101.01010e00");
    BRYX_OPTIONAL(PSEVersion, pseVersion, std::wstring, "060e2b34.01010101.0d0c0101.01010f00");
    BRYX_OPTIONAL(VideoComments, videoComments, std::wstring, "060e2b34.01010101.0d0c0101.01011000");
    /// Languages by ISO 639-2; "zxx" for none.
    BRYX_REQUIRED(SecondaryAudioLanguage, secondaryAudioLanguage, std::wstring, "060e2b34.01010101.0d0c0101.01011100");
    BRYX_REQUIRED(TertiaryAudioLanguage, tertiaryAudioLanguage, std::wstring, "060e2b34.01010101.0d0c0101.01011200");
    BRYX_REQUIRED(AudioLoudnessStandard, audioLoudnessStandard, UKDPPAudioLoudnessStandard,
                  "060e2b34.01010101.0d0c0101.01011300");
    BRYX_OPTIONAL(AudioComments, audioComments, std::wstring, "060e2b34.01010101.0d0c0101.01011400");
    /// Where line-up and clock start, in edit units of the material package.
    BRYX_REQUIRED(LineUpStart, lineUpStart, std::int64_t, "060e2b34.01010101.0d0c0101.01011500");
    BRYX_REQUIRED(IdentClockStart, identClockStart, std::int64_t, "060e2b34.01010101.0d0c0101.01011600");
    /// The number of parts, and the sum of their durations in frames.
    BRYX_REQUIRED(TotalNumberOfParts, totalNumberOfParts, std::uint16_t, "060e2b34.01010101.0d0c0101.01011700");
    BRYX_REQUIRED(TotalProgrammeDuration, totalProgrammeDuration, std::int64_t, "060e2b34.01010101.0d0c0101.01011800");
    BRYX_REQUIRED(AudioDescriptionPresent, audioDescriptionPresent, bool, "060e2b34.01010101.0d0c0101.01011900");
    BRYX_OPTIONAL(AudioDescriptionType, audioDescriptionType, UKDPPAudioDescriptionType,
                  "060e2b34.01010101.0d0c0101.01011a00");
    BRYX_REQUIRED(OpenCaptionsPresent, openCaptionsPresent, bool, "060e2b34.01010101.0d0c0101.01011b00");
    BRYX_OPTIONAL(OpenCaptionsType, openCaptionsType, AS11CaptionsType, "060e2b34.01010101.0d0c0101.01011c00");
    BRYX_OPTIONAL(OpenCaptionsLanguage, openCaptionsLanguage, std::wstring, "060e2b34.01010101.0d0c0101.01011d00");
    BRYX_REQUIRED(SigningPresent, signingPresent, UKDPPSigningPresent, "060e2b34.01010101.0d0c0101.01011e00");
    BRYX_OPTIONAL(SignLanguage, signLanguage, UKDPPSignLanguage, "060e2b34.01010101.0d0c0101.01011f00");
    BRYX_REQUIRED(CompletionDate, completionDate, MXFTimestamp, "060e2b34.01010101.0d0c0101.01012000");
    /// Whether the pictures under texts follow the programme.
    BRYX_OPTIONAL(TextlessElementsExist, textlessElementsExist, bool, "060e2b34.01010101.0d0c0101.01012100");
    BRYX_OPTIONAL(ProgrammeHasText, programmeHasText, bool, "060e2b34.01010101.0d0c0101.01012200");
    BRYX_OPTIONAL(ProgrammeTextLanguage, programmeTextLanguage, std::wstring, "060e2b34.01010101.0d0c0101.01012300");
    BRYX_REQUIRED(ContactEmail, contactEmail, std::wstring, "060e2b34.01010101.0d0c0101.01012400");
    BRYX_REQUIRED(ContactTelephoneNumber, contactTelephoneNumber, std::wstring, "060e2b34.01010101.0d0c0101.01012500");

protected:
    AS11UKDPPFramework() = default;
};

using AS11UKDPPFrameworkFactory = MXFSetFactory<AS11UKDPPFramework>;

} // namespace bryx

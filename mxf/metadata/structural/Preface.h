#pragma once

#include "mxf/metadata/model/MetadataObject.h"
#include "mxf/metadata/structural/ContentStorage.h"
#include "mxf/metadata/structural/GenericPackage.h"
#include "mxf/metadata/structural/Identification.h"

namespace bryx {

/// The root of the header metadata of a file (ST 377-1).
///
/// A new one was modified now, is of version 1.2, and has empty batches.
class BRYX_API Preface : public MetadataObject {
    BRYX_SET(Preface, MetadataObject, "060e2b34.02530101.0d010101.01012f00");

    /// When the file was last modified.
    BRYX_REQUIRED(LastModifiedDate, lastModifiedDate, MXFTimestamp, 0x3B02);
    /// The version of ST 377-1 that the file conforms to: 256 times the major number plus the minor one.
    BRYX_REQUIRED(Version, version, std::uint16_t, 0x3B05);
    /// The version of the object model; 1 where it is present.
    BRYX_OPTIONAL(ObjectModelVersion, objectModelVersion, std::uint32_t, 0x3B07);
    /// The package to play when nothing else is asked for, one of the ContentStorage.
    BRYX_OPTIONAL_WEAK_REFERENCE(PrimaryPackage, primaryPackage, GenericPackage, 0x3B08);
    /// Who wrote and modified the file, oldest first.
    BRYX_STRONG_REFERENCES(Identification, identifications, Identification, 0x3B06);
    BRYX_STRONG_REFERENCE(ContentStorage, contentStorage, ContentStorage, 0x3B03);
    /// The label of the operational pattern (ST 378 and others).
    BRYX_REQUIRED(OperationalPattern, operationalPattern, KLVKey, 0x3B09);
    /// The labels of the essence containers in the file, or that its packages refer to.
    BRYX_REQUIRED(EssenceContainers, essenceContainers, std::vector<KLVKey>, 0x3B0A);
    /// The labels of the schemes of descriptive metadata in the file.
    BRYX_REQUIRED(DMSchemes, dmSchemes, std::vector<KLVKey>, 0x3B0B);
    /// Whether the file ends with a random index pack.
    BRYX_OPTIONAL(RIPPresent, ripPresent, bool, "060e2b34.0101010e.04040503.00000000");
    /// The labels of the specifications that the file conforms to.
    BRYX_OPTIONAL(ConformsToSpecifications, conformsToSpecifications, std::vector<KLVKey>,
                  "060e2b34.0101010e.01020210.02040000");
    /// The labels of the schemes of application metadata in the file.
    BRYX_OPTIONAL(ApplicationSchemes, applicationSchemes, std::vector<KLVKey>, "060e2b34.0101010c.01020210.02030000");
    /// The labels of the specifications of AMWA that the file conforms to.
    BRYX_OPTIONAL(SpecificationIdentifiers, specificationIdentifiers, std::vector<KLVKey>,
                  "060e2b34.01010101.0d010801.01010000");
    /// The number of VTR errors found when a tape was archived; the three that follow are of the same origin.
    BRYX_OPTIONAL(VTRErrorCount, vtrErrorCount, std::uint32_t, "060e2b34.01010101.0d040101.40010100");
    /// The number of failures of the test for photosensitive epilepsy.
    BRYX_OPTIONAL(PSEFailureCount, pseFailureCount, std::uint32_t, "060e2b34.01010101.0d040101.40010200");
    BRYX_OPTIONAL(DigiBetaDropoutCount, digiBetaDropoutCount, std::uint32_t, "060e2b34.01010101.0d040101.40010300");
    BRYX_OPTIONAL(TimecodeBreakCount, timecodeBreakCount, std::uint32_t, "060e2b34.01010101.0d040101.40010400");
    /// The order of octets in the AAF file that the metadata came from: 0x4949 or 0x4D4D (AAF).
    BRYX_OPTIONAL(ByteOrder, byteOrder, std::int16_t, 0x3B01);
    /// The instance UID of a Dictionary (ST 377-2).
    BRYX_OPTIONAL(Dictionary, dictionary, MXFUID, 0x3B04);

protected:
    Preface() : lastModifiedDate_(klvutil::currentTimestamp()), version_(0x0102) {}
};

using PrefaceFactory = MXFSetFactory<Preface>;

} // namespace bryx

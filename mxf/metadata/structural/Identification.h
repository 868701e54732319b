#pragma once

#include <string>

#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

/// An application that wrote or modified the file (ST 377-1).
///
/// A new one was modified now, and has a fresh generation UID.
class BRYX_API Identification : public MetadataObject {
    BRYX_SET(Identification, MetadataObject, "060e2b34.02530101.0d010101.01013000");

    /// Names this version of the file: what generationUID of the sets that were changed in it refers to.
    BRYX_REQUIRED(ThisGenerationUID, thisGenerationUID, MXFUID, 0x3C09);
    BRYX_REQUIRED(CompanyName, companyName, std::wstring, 0x3C01);
    BRYX_REQUIRED(ProductName, productName, std::wstring, 0x3C02);
    BRYX_OPTIONAL(ProductVersion, productVersion, MXFProductVersion, 0x3C03);
    /// The version for people to read.
    BRYX_REQUIRED(VersionString, versionString, std::wstring, 0x3C04);
    BRYX_REQUIRED(ProductUID, productUID, MXFUID, 0x3C05);
    BRYX_REQUIRED(ModificationDate, modificationDate, MXFTimestamp, 0x3C06);
    /// The version of the library that wrote the file.
    BRYX_OPTIONAL(ToolkitVersion, toolkitVersion, MXFProductVersion, 0x3C07);
    /// The name of that library and, in parentheses, of the operating system.
    BRYX_OPTIONAL(Platform, platform, std::wstring, 0x3C08);

protected:
    Identification();
};

using IdentificationFactory = MXFSetFactory<Identification>;

} // namespace bryx

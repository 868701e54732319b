#pragma once

#include <string>

#include "mxf/metadata/model/MetadataObject.h"
#include "mxf/metadata/structural/Track.h"

namespace bryx {

/// What packages have in common: an identity and tracks (ST 377-1). A new one was created and modified now.
class BRYX_API GenericPackage : public MetadataObject {
    BRYX_ABSTRACT_SET(GenericPackage, MetadataObject, "060e2b34.02530101.0d010101.01013400");

    /// Identifies the package, in whatever file it is.
    BRYX_REQUIRED(PackageUID, packageUID, UMID, 0x4401);
    BRYX_OPTIONAL(Name, name, std::wstring, 0x4402);
    BRYX_REQUIRED(PackageCreationDate, packageCreationDate, MXFTimestamp, 0x4405);
    BRYX_REQUIRED(PackageModifiedDate, packageModifiedDate, MXFTimestamp, 0x4404);
    BRYX_STRONG_REFERENCES(Track, tracks, Track, 0x4403);
    /// The label of what the package is for (AAF).
    BRYX_OPTIONAL(PackageUsage, packageUsage, KLVKey, 0x4408);
    /// The instance UIDs of TaggedValue sets that hold comments of users (AAF).
    BRYX_OPTIONAL(PackageUserComments, packageUserComments, std::vector<MXFUID>, 0x4406);
    /// The instance UIDs of KLVData sets (AAF).
    BRYX_OPTIONAL(PackageKLVData, packageKLVData, std::vector<MXFUID>, 0x4407);
    /// The instance UIDs of TaggedValue sets that hold attributes (AAF).
    BRYX_OPTIONAL(PackageAttributes, packageAttributes, std::vector<MXFUID>, 0x4409);

protected:
    GenericPackage()
        : packageCreationDate_(klvutil::currentTimestamp()), packageModifiedDate_(klvutil::currentTimestamp()) {}
};

using GenericPackageFactory = MXFSetFactory<GenericPackage>;

} // namespace bryx

#pragma once

#include "mxf/metadata/model/MetadataObject.h"
#include "mxf/metadata/structural/EssenceContainerData.h"
#include "mxf/metadata/structural/GenericPackage.h"

namespace bryx {

/// The packages of the file, and where their essence is (ST 377-1).
class BRYX_API ContentStorage : public MetadataObject {
    BRYX_SET(ContentStorage, MetadataObject, "060e2b34.02530101.0d010101.01011800");

    BRYX_STRONG_REFERENCES(Package, packages, GenericPackage, 0x1901);
    BRYX_OPTIONAL_STRONG_REFERENCES(EssenceContainerData, essenceContainerData, EssenceContainerData, 0x1902);

protected:
    ContentStorage() = default;
};

using ContentStorageFactory = MXFSetFactory<ContentStorage>;

} // namespace bryx

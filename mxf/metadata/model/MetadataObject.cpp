#include "mxf/metadata/model/MetadataObject.h"

namespace bryx {

MetadataObject::~MetadataObject() = default;

AcquisitionMetadataObject::~AcquisitionMetadataObject() = default;

} // namespace bryx

#include "mxf/metadata/model/MetadataObject.h"

MetadataObject::~MetadataObject() = default;

AcquisitionMetadataObject::~AcquisitionMetadataObject() = default;

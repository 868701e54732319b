#include "mxf/metadata/model/MetadataObject.h"

#include "util/assertion_failure.h"

MetadataObject::~MetadataObject() = default;

const MXFUID& MetadataObject::getGenerationUID() const {
    util::require(generationUID_.has_value(), "MetadataObject.generationUID is present");
    return *generationUID_;
}

AcquisitionMetadataObject::~AcquisitionMetadataObject() = default;

#include "mxf/metadata/model/DullMXFMetadataModelHandler.h"

namespace bryx {

DullMXFMetadataModelHandler::~DullMXFMetadataModelHandler() = default;

void DullMXFMetadataModelHandler::model(const Model& /*model*/) {}

} // namespace bryx

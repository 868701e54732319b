#include "mxf/metadata/model/DullMXFMetadataModelHandler.h"

DullMXFMetadataModelHandler::~DullMXFMetadataModelHandler() = default;

void DullMXFMetadataModelHandler::model(const Model& /*model*/) {}

#include "mxf/metadata/parsing/DullMXFMetadataModelHandler.h"

DullMXFMetadataModelHandler::~DullMXFMetadataModelHandler() = default;

void DullMXFMetadataModelHandler::model(const Model& /*model*/) {}

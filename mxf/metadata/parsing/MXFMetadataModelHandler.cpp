#include "mxf/metadata/parsing/MXFMetadataModelHandler.h"

MXFMetadataModelHandler::~MXFMetadataModelHandler() = default;

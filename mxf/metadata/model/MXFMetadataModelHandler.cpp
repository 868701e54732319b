#include "mxf/metadata/model/MXFMetadataModelHandler.h"

MXFMetadataModelHandler::~MXFMetadataModelHandler() = default;

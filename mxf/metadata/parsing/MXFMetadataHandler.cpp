#include "mxf/metadata/parsing/MXFMetadataHandler.h"

MXFMetadataHandler::~MXFMetadataHandler() = default;

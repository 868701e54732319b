#include "mxf/metadata/parsing/MXFMetadataHandler.h"

MXFMetadataHandler::~MXFMetadataHandler() = default;

void MXFMetadataHandler::unhandledSet(const MXFPrimedSet& /*set*/) {}

#include "mxf/metadata/model/MXFMetadataHandler.h"

MXFMetadataHandler::~MXFMetadataHandler() = default;

void MXFMetadataHandler::unhandledSet(const MXFPrimedSet& /*set*/) {}

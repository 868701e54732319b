#include "mxf/metadata/model/MXFMetadataHandler.h"

namespace bryx {

MXFMetadataHandler::~MXFMetadataHandler() = default;

void MXFMetadataHandler::unhandledSet(const MXFPrimedSet& /*set*/) {}

} // namespace bryx

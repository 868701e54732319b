#include "mxf/metadata/model/MXFMetadataModelHandler.h"

namespace bryx {

MXFMetadataModelHandler::~MXFMetadataModelHandler() = default;

} // namespace bryx

#include "mxf/structure/MXFStructureHandler.h"

namespace bryx {

MXFStructureHandler::~MXFStructureHandler() = default;

} // namespace bryx

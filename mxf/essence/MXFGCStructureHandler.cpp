#include "mxf/essence/MXFGCStructureHandler.h"

namespace bryx {

MXFGCStructureHandler::~MXFGCStructureHandler() = default;

} // namespace bryx

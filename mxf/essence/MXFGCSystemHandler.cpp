#include "mxf/essence/MXFGCSystemHandler.h"

namespace bryx {

MXFGCSystemHandler::~MXFGCSystemHandler() = default;

} // namespace bryx

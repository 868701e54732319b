#include "mxf/index/MXFIndexHandler.h"

namespace bryx {

MXFIndexHandler::~MXFIndexHandler() = default;

} // namespace bryx

#include "mxf/essence/MXFGCEssenceHandler.h"

namespace bryx {

MXFGCEssenceHandler::~MXFGCEssenceHandler() = default;

} // namespace bryx

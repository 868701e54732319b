#include "mxf/essence/MXFGCChunkedEssenceHandler.h"

namespace bryx {

MXFGCChunkedEssenceHandler::~MXFGCChunkedEssenceHandler() = default;

} // namespace bryx

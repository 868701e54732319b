#include "mxf/essence/MXFGCChunkedEssenceHandler.h"

MXFGCChunkedEssenceHandler::~MXFGCChunkedEssenceHandler() = default;

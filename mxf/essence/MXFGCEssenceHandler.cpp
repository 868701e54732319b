#include "mxf/essence/MXFGCEssenceHandler.h"

MXFGCEssenceHandler::~MXFGCEssenceHandler() = default;

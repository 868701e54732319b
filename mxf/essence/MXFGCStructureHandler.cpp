#include "mxf/essence/MXFGCStructureHandler.h"

MXFGCStructureHandler::~MXFGCStructureHandler() = default;

#include "mxf/structure/MXFStructureHandler.h"

MXFStructureHandler::~MXFStructureHandler() = default;

#include "mxf/structure/MXFIndexHandler.h"

MXFIndexHandler::~MXFIndexHandler() = default;

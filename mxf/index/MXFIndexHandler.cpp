#include "mxf/index/MXFIndexHandler.h"

MXFIndexHandler::~MXFIndexHandler() = default;

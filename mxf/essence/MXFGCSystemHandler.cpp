#include "mxf/essence/MXFGCSystemHandler.h"

MXFGCSystemHandler::~MXFGCSystemHandler() = default;

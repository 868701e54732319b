#include "mxf/index/DullMXFIndexHandler.h"

DullMXFIndexHandler::~DullMXFIndexHandler() = default;

void DullMXFIndexHandler::indexTableSegment(const MXFIndexTableSegment& /*segment*/) {}

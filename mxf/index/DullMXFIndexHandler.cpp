#include "mxf/index/DullMXFIndexHandler.h"

namespace bryx {

DullMXFIndexHandler::~DullMXFIndexHandler() = default;

void DullMXFIndexHandler::indexTableSegment(const MXFIndexTableSegment& /*segment*/) {}

} // namespace bryx

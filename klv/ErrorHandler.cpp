#include "klv/ErrorHandler.h"

namespace bryx {

ErrorHandler::~ErrorHandler() = default;

} // namespace bryx

#include "klv/KLVHandler.h"

namespace bryx {

KLVHandler::~KLVHandler() = default;

} // namespace bryx

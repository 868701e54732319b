#include "klv/KLVIndividualItemHandler.h"

namespace bryx {

KLVIndividualItemHandler::~KLVIndividualItemHandler() = default;

} // namespace bryx

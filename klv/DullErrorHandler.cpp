#include "klv/DullErrorHandler.h"

namespace bryx {

void DullErrorHandler::setLocator(const Locator&) {}
void DullErrorHandler::startStream() {}
void DullErrorHandler::endStream() {}
void DullErrorHandler::warning(const util::uuid&, const std::string&) {}
void DullErrorHandler::error(const util::uuid&, const std::string&) {}
void DullErrorHandler::fatalError(const util::uuid&, const std::string&) {}

} // namespace bryx

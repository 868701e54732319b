#include "klv/DullErrorHandler.h"

void DullErrorHandler::setLocator(const Locator&) {}
void DullErrorHandler::startStream() {}
void DullErrorHandler::endStream() {}
void DullErrorHandler::warning(const util::uuid&, const std::string&) {}
void DullErrorHandler::error(const util::uuid&, const std::string&) {}
void DullErrorHandler::fatalError(const util::uuid&, const std::string&) {}

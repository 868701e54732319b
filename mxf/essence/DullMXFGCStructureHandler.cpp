#include "mxf/essence/DullMXFGCStructureHandler.h"

namespace bryx {

void DullMXFGCStructureHandler::startStream(std::uint64_t) {}
void DullMXFGCStructureHandler::endStream() {}
void DullMXFGCStructureHandler::startContentPackage() {}
void DullMXFGCStructureHandler::endContentPackage() {}
void DullMXFGCStructureHandler::startElement(const KLVKey&) {}
void DullMXFGCStructureHandler::endElement(const KLVKey&) {}
void DullMXFGCStructureHandler::startPad(std::uint64_t) {}
void DullMXFGCStructureHandler::endPad() {}
void DullMXFGCStructureHandler::startAlign(std::uint64_t) {}
void DullMXFGCStructureHandler::endAlign() {}

} // namespace bryx

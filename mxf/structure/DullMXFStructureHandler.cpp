#include "mxf/structure/DullMXFStructureHandler.h"

namespace bryx {

void DullMXFStructureHandler::runIn(std::uint64_t) {}
void DullMXFStructureHandler::startStructure() {}
void DullMXFStructureHandler::endStructure() {}
void DullMXFStructureHandler::startPartition(const KLVKey&, const MXFPartitionPack&, std::uint64_t) {}
void DullMXFStructureHandler::endPartition(const KLVKey&) {}
void DullMXFStructureHandler::randomIndex(const MXFRandomIndex&) {}

} // namespace bryx

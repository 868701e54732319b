#include "mxf/metadata/model/DullMXFMetadataHandler.h"

namespace bryx {

DullMXFMetadataHandler::~DullMXFMetadataHandler() = default;

void DullMXFMetadataHandler::primer(const Primer& /*primer*/) {}

bool DullMXFMetadataHandler::handlesSet(const KLVKey& /*key*/) {
    return false;
}

void DullMXFMetadataHandler::primedSet(MXFPrimedSet& /*set*/) {}

} // namespace bryx

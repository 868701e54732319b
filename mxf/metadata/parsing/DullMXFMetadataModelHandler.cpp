#include "mxf/metadata/parsing/DullMXFMetadataModelHandler.h"

void DullMXFMetadataModelHandler::startMetadata() {}
void DullMXFMetadataModelHandler::endMetadata() {}
void DullMXFMetadataModelHandler::primer(const Primer&) {}
bool DullMXFMetadataModelHandler::handlesSet(const KLVKey&) {
    return false;
}
void DullMXFMetadataModelHandler::primedSet(MXFPrimedSet&) {}
void DullMXFMetadataModelHandler::model(const Model&) {}

#include "mxf/essence/DullMXFSDTICPSystemHandler.h"

namespace bryx {

DullMXFSDTICPSystemHandler::~DullMXFSDTICPSystemHandler() = default;

void DullMXFSDTICPSystemHandler::systemMetadata(const MXFSystemMetadataPack& /*pack*/) {}
void DullMXFSDTICPSystemHandler::packageMetadata(const MXFGCItems& /*items*/) {}
void DullMXFSDTICPSystemHandler::pictureMetadata(const MXFGCItems& /*items*/) {}
void DullMXFSDTICPSystemHandler::soundMetadata(const MXFGCItems& /*items*/) {}
void DullMXFSDTICPSystemHandler::dataMetadata(const MXFGCItems& /*items*/) {}
void DullMXFSDTICPSystemHandler::controlData(const std::uint8_t* /*data*/, std::size_t /*size*/) {}

} // namespace bryx

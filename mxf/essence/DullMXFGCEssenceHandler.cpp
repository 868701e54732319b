#include "mxf/essence/DullMXFGCEssenceHandler.h"

namespace bryx {

DullMXFGCEssenceHandler::~DullMXFGCEssenceHandler() = default;

bool DullMXFGCEssenceHandler::startElement(const KLVKey& /*key*/, std::uint64_t /*length*/, std::uint8_t*& /*buffer*/,
                                           std::uint64_t& /*size*/) {
    return false;
}

void DullMXFGCEssenceHandler::pictureElement(const KLVKey& /*key*/, const std::uint8_t* /*data*/,
                                             std::uint64_t /*size*/, std::uint64_t /*offset*/) {}
void DullMXFGCEssenceHandler::soundElement(const KLVKey& /*key*/, const std::uint8_t* /*data*/, std::uint64_t /*size*/,
                                           std::uint64_t /*offset*/) {}
void DullMXFGCEssenceHandler::dataElement(const KLVKey& /*key*/, const std::uint8_t* /*data*/, std::uint64_t /*size*/,
                                          std::uint64_t /*offset*/) {}
void DullMXFGCEssenceHandler::compoundElement(const KLVKey& /*key*/, const std::uint8_t* /*data*/,
                                              std::uint64_t /*size*/, std::uint64_t /*offset*/) {}
void DullMXFGCEssenceHandler::setLengthForm(std::uint8_t /*form*/) {}

} // namespace bryx

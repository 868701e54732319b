#pragma once

#include "mxf/essence/MXFGCStructureHandler.h"

namespace bryx {

/// Does nothing. Derive from it to override only what matters.
class BRYX_API DullMXFGCStructureHandler : public MXFGCStructureHandler {
public:
    void startStream(std::uint64_t kagSize) override;
    void endStream() override;
    void startContentPackage() override;
    void endContentPackage() override;
    void startElement(const KLVKey& key) override;
    void endElement(const KLVKey& key) override;
    void startPad(std::uint64_t extraSize) override;
    void endPad() override;
    void startAlign(std::uint64_t alignment) override;
    void endAlign() override;
};

} // namespace bryx

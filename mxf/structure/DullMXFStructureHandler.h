#pragma once

#include "mxf/structure/MXFStructureHandler.h"

namespace bryx {

/// Does nothing. Derive from it to override only what matters.
class BRYX_API DullMXFStructureHandler : public MXFStructureHandler {
public:
    void runIn(std::uint64_t length) override;
    void startStructure() override;
    void endStructure() override;
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    void endPartition(const KLVKey& key) override;
    void randomIndex(const MXFRandomIndex& index) override;
};

} // namespace bryx

#pragma once

#include <cstdint>
#include <optional>

#include "inspect/BoundedList.h"
#include "inspect/Findings.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFRandomIndex.h"

const char* name(MXFPartitionKind kind);

struct FoundPartition {
    std::uint64_t offset; ///< of the pack, in octets from the first of the file
    KLVKey key;           ///< tells the kind and the status
    MXFPartitionPack pack;
};

/// Collects the run-in, the partition packs and the random index.
class StructureCollector final : public DullMXFStructureHandler {
public:
    using Partitions = BoundedList<FoundPartition, 65536>;
    using RandomIndex = BoundedList<MXFRandomIndexEntry, 65536>;

    /// A structure handler gets no locator. That of the error handler serves: it shows the partition pack when its
    /// partition begins.
    explicit StructureCollector(const FindingCollector& positions) : positions_(positions) {}

    void runIn(std::uint64_t length) override { runIn_ = length; }

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    void randomIndex(const MXFRandomIndex& index) override;

    std::uint64_t runIn() const { return runIn_; }
    /// Of the pack of the partition that began last, in octets from the first of the file.
    std::uint64_t partitionOffset() const { return partitionOffset_; }
    const Partitions& partitions() const { return partitions_; }
    const std::optional<RandomIndex>& randomIndex() const { return randomIndex_; }

private:
    const FindingCollector& positions_;
    std::uint64_t runIn_ = 0;
    std::uint64_t partitionOffset_ = 0;
    std::uint64_t labels_ = 0; ///< essence container labels in all packs
    Partitions partitions_;
    std::optional<RandomIndex> randomIndex_;
};

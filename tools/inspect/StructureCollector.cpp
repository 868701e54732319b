#include "inspect/StructureCollector.h"

namespace {

constexpr std::uint64_t maxLabels = std::uint64_t{1} << 18U;

} // namespace

const char* name(MXFPartitionKind kind) {
    switch (kind) {
    case MXFPartitionKind::Header:
        return "header";
    case MXFPartitionKind::Body:
        return "body";
    case MXFPartitionKind::Footer:
        break;
    }
    return "footer";
}

void StructureCollector::startPartition(const KLVKey& key, const MXFPartitionPack& pack,
                                        std::uint64_t /*headerStart*/) {
    partitionOffset_ = positions_.position();
    labels_ += pack.essenceContainers.size();
    if (labels_ <= maxLabels) {
        partitions_.add({positions_.position(), key, pack});
    } else {
        partitions_.omit();
    }
}

void StructureCollector::randomIndex(const MXFRandomIndex& index) {
    randomIndex_.emplace();
    for (const MXFRandomIndexEntry& entry : index) {
        randomIndex_->add(entry);
    }
}

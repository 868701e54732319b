#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFRandomIndex.h"
#include "util/Api.h"

namespace bryx {

/// Receives the outer frame of an MXF file: run-in, partitions, random index (ST 377-1 §5 to §7, §12).
///
/// The calls for one file, in order: runIn if there is a run-in; startStructure; for each partition startPartition
/// and, when all its content has been passed on, endPartition; randomIndex if the file has one with entries;
/// endStructure. Whoever writes a file makes the same calls.
class BRYX_API MXFStructureHandler {
public:
    virtual ~MXFStructureHandler();

    /// @param length octets before the header partition pack, at least 1
    virtual void runIn(std::uint64_t length) = 0;
    /// The header partition comes next.
    virtual void startStructure() = 0;
    virtual void endStructure() = 0;

    /// A partition begins. Made with the first KLV triplet after the pack and the fill that follows it, or with the end
    /// of the stream; during the call the locator that the error handler has shows the first octet of the pack.
    ///
    /// @param key of the pack; mxfutil::partitionKind and partitionStatus read it
    /// @param headerStart the position of the first octet after the pack and its fill, where header metadata, index or
    ///     body begins, in octets from where the file begins in its stream (run-in included)
    virtual void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) = 0;

    /// @param key of the pack of the partition that ends
    virtual void endPartition(const KLVKey& key) = 0;

    /// The random index, which comes last in a file.
    virtual void randomIndex(const MXFRandomIndex& index) = 0;
};

} // namespace bryx

#pragma once

#include <cstdint>
#include <memory>

#include "klv/KLVStreamPadder.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFStructureHandler.h"
#include "util/Api.h"

namespace bryx {

/// Writes the structure of a file (ST 377-1): partition packs, filled up to the KLV alignment grid, and the random index
/// pack. It starts and ends the stream that all other senders of the file write to as well.
///
/// Positions are those of the locator: octets from the end of the run-in, which the caller has written.
class BRYX_API MXFStructureCoder : public MXFStructureHandler {
public:
    /// @param filler writes to the stream
    /// @param locator tells where in the stream the next octet goes, as do grid, headerMetadata and index it outlives
    ///     this
    /// @param grid of the partition that is written; begins again with each
    /// @param headerMetadata,index the padders of the regions that come behind a pack. One in fixed-length mode tells the
    ///     byte count in the pack; for one in alignment mode the pack must have it.
    MXFStructureCoder(std::unique_ptr<KLVFiller> filler, const Locator& locator, KLVGrid& grid,
                      KLVStreamPadder& headerMetadata, KLVStreamPadder& index);
    ~MXFStructureCoder() override;
    MXFStructureCoder(const MXFStructureCoder&) = delete;
    MXFStructureCoder& operator=(const MXFStructureCoder&) = delete;

    /// The BER form of the lengths of packs, and of the fill behind them: 0x83 unless set. A longer pack gets 0x87.
    /// Requires "valid BER length form".
    void setBERLengthForm(std::uint8_t form);

    /// What the stream is told about: the run-in is none of its octets.
    void runIn(std::uint64_t length) override;
    void startStructure() override;
    void endStructure() override;

    /// Completes @p pack and writes it. Its thisPartition and previousPartition are found out, as is footerPartition in
    /// the footer partition itself, and the byte counts of padders in fixed-length mode.
    ///
    /// Requires "valid partition key"; "valid major version", which is 1; "header byte count is a multiple of KAG size"
    /// and "index byte count is a multiple of KAG size"; "valid footer partition offset": beyond this partition or 0, or
    /// in the footer partition its own.
    /// @param value of no concern
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t value) override;

    /// Requires "header metadata is complete" and "index is complete": that the regions announced in the pack were
    /// written.
    void endPartition(const KLVKey& key) override;

    void randomIndex(const MXFRandomIndex& index) override;

    /// The pack that was written last, complete.
    const MXFPartitionPack& lastPack() const noexcept { return lastPack_; }

private:
    void complete(const KLVKey& key, MXFPartitionPack& pack) const;
    void writePack(const KLVKey& key, const std::vector<std::uint8_t>& octets, std::uint8_t form);

    std::unique_ptr<KLVFiller> filler_;
    const Locator& locator_;
    KLVGrid& grid_;
    KLVStreamPadder& headerMetadata_;
    KLVStreamPadder& index_;
    std::uint8_t form_ = 0x83;
    MXFPartitionPack lastPack_;
};

} // namespace bryx

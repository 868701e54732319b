#pragma once

#include <cstdint>
#include <vector>

#include "mxf/structure/MXFStructureHandler.h"
#include "mxf/structure/MXFTripletPosition.h"
#include "mxf/structure/internal/HeldLocator.h"
#include "util/internal/octets.h"

namespace bryx {

class ErrorHandler;
class MXFStructureValidator;

/// Collects the partition packs and the random index pack of a stream, as its owner meets them among the outermost
/// triplets, and makes the calls that follow from them on a structure handler.
class MXFPartitionTracker {
public:
    /// The packs that are collected.
    enum class Pack { None, Partition, RandomIndex };
    static Pack packOf(const KLVKey& key);

    /// The structure handler is not owned. If it is an MXFStructureValidator, it gets the locator when a stream starts,
    /// and learns of a requested stop.
    explicit MXFPartitionTracker(MXFStructureHandler& structureHandler);

    MXFStructureHandler& structureHandler() const { return structureHandler_; }
    void setErrorHandler(ErrorHandler* errorHandler) { errorHandler_ = errorHandler; }
    ErrorHandler* errorHandler() const { return errorHandler_; }

    /// Shows the pack while its partition is told of.
    const HeldLocator& locator() const { return locator_; }
    HeldLocator& locator() { return locator_; }

    /// A stream starts: forgets what was known. Header starts count from stream position @p base.
    void start(std::uint64_t base);
    /// The stream has ended.
    void endStructure(bool stopped);

    /// A pack with a value of @p length octets starts; the partition that was open has been closed.
    /// @return whether the value is wanted; not so if it is longer than such a pack can be, which is reported of a
    ///     random index pack
    bool startPack(Pack pack, std::uint64_t length, const MXFTripletPosition& position);
    bool collecting() const { return collecting_ != Pack::None; }
    void value(const std::uint8_t* data, std::uint64_t size) { util::append(octets_, data, size); }
    const std::vector<std::uint8_t>& octets() const { return octets_; }

    /// The pack ends. A random index is told of now, a partition when it is opened.
    /// @param form the BER length form of the pack
    /// @return false if it is a partition pack that cannot be read
    bool endPack(const KLVKey& key, std::uint8_t form);

    /// Whether a partition pack has been read whose partition has not been opened.
    bool pending() const { return pending_; }

    /// A fill item between the pack and what it announces ends at stream position @p end.
    void fill(std::uint64_t end) { headerStart_ = end; }

    /// Tells of the pending partition. Requires "is not in partition".
    void openPartition();
    /// Tells that the open partition has ended, if there is one.
    void closePartition();

    /// The pack read last, its key and where what it announces begins in the stream.
    const MXFPartitionPack& pack() const { return pack_; }
    const KLVKey& key() const { return key_; }
    std::uint64_t headerStart() const { return headerStart_; }

private:
    MXFStructureHandler& structureHandler_;
    MXFStructureValidator* validator_; ///< the same, if it is one
    ErrorHandler* errorHandler_ = nullptr;
    HeldLocator locator_;
    std::uint64_t base_ = 0;
    Pack collecting_ = Pack::None;
    MXFTripletPosition position_;
    std::vector<std::uint8_t> octets_;
    bool pending_ = false;
    bool open_ = false;
    KLVKey key_;
    MXFPartitionPack pack_;
    std::uint64_t headerStart_ = 0;
};

} // namespace bryx

#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <set>

#include "mxf/essence/MXFGCMuxer.h"
#include "mxf/structure/MXFRandomIndex.h"
#include "sdk/BRYXWriter.h"
#include "sdk/internal/BRYXBodyGate.h"
#include "sdk/internal/BRYXIndexWriter.h"
#include "sdk/internal/BRYXOutput.h"
#include "sdk/internal/BRYXPartitionCutter.h"
#include "sdk/internal/BRYXWriterChain.h"

namespace bryx {

/// What it asks the caller for may drop the last reference to it: calls that ask hold it until they return.
class BRYXWriterImpl : public BRYXWriter, public std::enable_shared_from_this<BRYXWriterImpl> {
public:
    /// @param written the same stream, to read back from; null for no verification
    explicit BRYXWriterImpl(std::shared_ptr<std::ostream> stream, std::iostream* written = nullptr);
    ~BRYXWriterImpl() override;

    void setConfiguration(const BRYXWriterConfiguration& configuration) override;
    void start(const BRYXHeaderMetadata& metadata) override;
    void startEssence(const BRYXEssenceContainer& container) override;
    MXFGCStructureHandler& structureReceiver() override;
    MXFGCSystemHandler& systemReceiver() override;
    MXFGCEssenceHandler& essenceReceiver() override;
    KLVHandler& bodyReceiver() override;
    void startBodyPartition() override;
    void endEssence() override;
    KLVHandler& startGenericStream(std::uint32_t bodySID) override;
    void endGenericStream() override;
    bool finish(const BRYXHeaderMetadata& metadata) override;
    std::uint64_t position() const override;

    /// The essence containers with an index table of the writer's making.
    std::set<std::uint32_t> indexedContainers() const;

private:
    enum class State : std::uint8_t { BeforeStart, Between, InEssence, InGenericStream, Finished, Failed };
    using Part = BRYXIndexWriter::Part;

    /// An essence container, and how far it has been written.
    struct Container {
        Container(BRYXEssenceContainer what, const BRYXWriterConfiguration& configuration, MXFGCStructureHandler& next,
                  const Locator& locator)
            : container(std::move(what)), index(container, configuration, next, locator) {}

        BRYXEssenceContainer container;
        BRYXIndexWriter index;
        std::uint64_t octets = 0;         ///< in the partitions that have ended
        std::uint64_t bodyStart = 0;      ///< position of the body that is written
        std::uint64_t packagesBefore = 0; ///< content packages before that body
    };

    void requireBetween() const;
    void requireBetweenPackages() const;
    void requireCodable(const BRYXHeaderMetadata& metadata) const;
    void requireFree(std::uint32_t sid, const char* condition) const;
    MXFPartitionStatus heldStatus(const BRYXHeaderMetadata& metadata, MXFPartitionStatus word) const;
    MXFGCMuxer& muxer() const;
    void startPartition(MXFPartitionKind kind, MXFPartitionStatus status, const BRYXHeaderMetadata* metadata,
                        const Part& index, std::uint32_t bodySID);
    void endPartition();
    void writeIndexPartition(const Part& index);
    std::unique_ptr<Container> newContainer(const BRYXEssenceContainer& what) const;
    void openBody(const Part& index);
    void closeBody();
    void nextBody();
    void cutBody();
    bool rewriteHeader(const BRYXHeaderMetadata& metadata, MXFPartitionStatus status, std::uint64_t footer);
    void openHeader();
    void tellFooter(std::uint64_t footer);

    BRYXOutput output_;
    std::iostream* written_;
    BRYXWriterConfiguration configuration_;
    std::unique_ptr<BRYXWriterChain> chain_;
    BRYXBodyGate gate_;
    BRYXBodyGate genericGate_; ///< of generic streams

    State state_ = State::BeforeStart;
    MXFPartitionPack headerPack_;
    MXFPartitionStatus headerStatus_ = MXFPartitionStatus::OpenIncomplete; ///< as it was first written
    KLVKey partitionKey_;
    MXFRandomIndex randomIndex_;
    std::unique_ptr<KLVFiller> genericStreamFiller_;

    std::set<std::uint32_t> sids_;                                   ///< of essence, index tables and generic streams
    std::map<std::uint32_t, std::unique_ptr<Container>> containers_; ///< by body SID
    Container* current_ = nullptr; ///< the one that is written, or that was written last
    std::unique_ptr<MXFGCMuxer> muxer_;
    BRYXPartitionCutter cutter_;
};

} // namespace bryx

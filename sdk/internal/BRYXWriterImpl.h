#pragma once

#include <istream>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "klv/GroupValidatorFilter.h"
#include "klv/KLVFillItemKeyFilter.h"
#include "klv/KLVFilter.h"
#include "klv/VerifyingKLVHandler.h"
#include "mxf/engines/MXFWriter.h"
#include "mxf/essence/MXFGCEssenceCoder.h"
#include "mxf/essence/MXFGCIntraIndexer.h"
#include "mxf/essence/MXFGCMuxer.h"
#include "mxf/essence/MXFGCStructureFilter.h"
#include "mxf/structure/MXFRandomIndex.h"
#include "sdk/BRYXWriter.h"
#include "util/assertion_failure.h"

/// The chain to a stream: what MXFWriter assembles, with a key filter for fill in it, and a verifier if that is wanted.
class BRYXWriterChain {
public:
    /// @param written to read back from; null for no verification
    BRYXWriterChain(std::ostream& stream, std::iostream* written, const BRYXWriterConfiguration& configuration);

    MXFWriter writer;

private:
    KLVFillItemKeyFilter fill_;
    std::unique_ptr<VerifyingKLVHandler> verifying_;
};

/// Lets body triplets pass as long as it is open, and holds their senders to the lengths that they announce.
class BRYXBodyGate final : public ActionKLVFilter {
public:
    void setReceiver(KLVHandler& receiver) {
        groups_.setHandler(&receiver);
        setHandler(&groups_);
    }
    void open() { isOpen_ = true; }
    /// Requires "complete element": that no triplet is open.
    void close() {
        requireComplete();
        isOpen_ = false;
    }
    void requireComplete() const { util::require(groups_.isComplete(), "complete element"); }

    void berLengthForm(std::uint8_t form) override {
        ActionKLVFilter::berLengthForm(form);
        form_ = form;
    }
    /// Tells the form again that the sender told, after somebody else has told another one.
    void repeatLengthForm() {
        if (form_ != 0) {
            ActionKLVFilter::berLengthForm(form_);
        }
    }

private:
    void before() override { util::require(isOpen_, "in essence"); }
    void after() override {}

    GroupValidatorFilter groups_;
    bool isOpen_ = false;
    std::uint8_t form_ = 0;
};

class BRYXWriterImpl : public BRYXWriter {
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
    using Segments = std::vector<MXFIndexTableSegment>;
    struct Container;
    struct Index;
    class PartitionCutter;

    void requireBetween() const;
    void requireBetweenPackages() const;
    void requireCodable(const BRYXHeaderMetadata& metadata) const;
    MXFGCMuxer& muxer() const;
    void requireUnique(std::set<std::uint32_t>& known, std::uint32_t sid, const char* condition);
    void startPartition(MXFPartitionKind kind, MXFPartitionStatus status, const BRYXHeaderMetadata* metadata,
                        const Index& index, std::uint32_t bodySID);
    void endPartition();
    void writeIndexPartition(const Index& index);
    void openBody(const Index& index);
    void closeBody();
    void nextBody();
    void cutBody();
    bool isIndexed(const Container& container) const;
    Index newIndex(Container& container);
    Index wholeIndex(Container& container);
    std::size_t sendIndex(KLVHandler& handler, const Index& index);
    bool closeHeader(const BRYXHeaderMetadata& metadata, std::uint64_t footer);
    void tellFooter(std::uint64_t footer);

    std::shared_ptr<std::ostream> stream_;
    std::iostream* written_;
    BRYXWriterConfiguration configuration_;
    std::streamoff base_ = -1; ///< where the file begins; -1 if the stream cannot seek
    std::unique_ptr<BRYXWriterChain> chain_;
    BRYXBodyGate gate_;
    BRYXBodyGate genericGate_; ///< of generic streams

    State state_ = State::BeforeStart;
    MXFPartitionPack headerPack_;
    KLVKey partitionKey_;
    MXFRandomIndex randomIndex_;
    std::unique_ptr<KLVFiller> genericStreamFiller_;

    std::set<std::uint32_t> bodySIDs_;
    std::set<std::uint32_t> indexSIDs_;
    std::map<std::uint32_t, std::unique_ptr<Container>> containers_; ///< by body SID
    Container* current_ = nullptr; ///< the one that is written, or that was written last
    std::unique_ptr<MXFGCMuxer> muxer_;
    std::unique_ptr<PartitionCutter> structure_;
};

/// Reads the file as a whole when it is finished.
class VerifyingBRYXWriterImpl : public VerifyingBRYXWriter {
public:
    explicit VerifyingBRYXWriterImpl(std::shared_ptr<std::iostream> stream);
    ~VerifyingBRYXWriterImpl() override;

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

private:
    std::shared_ptr<std::iostream> stream_;
    std::streampos start_ = 0;
    BRYXWriterImpl writer_;
};

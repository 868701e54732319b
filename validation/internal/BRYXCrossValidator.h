#pragma once

#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include <boost/optional.hpp>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "mxf/index/MXFIndexTableSegment.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "validation/internal/BRYXSummaries.h"
#include "validation/internal/BRYXValidator.h"

namespace bryx {

/// Holds against one another what is found in the parts of a file: most of it when the file ends. It gets the structure
/// from the structure validator; where nobody wants that, from the engine.
class BRYXCrossValidator final : public DullMXFStructureHandler, public BRYXValidator {
public:
    using BRYXValidator::BRYXValidator;

    /// What the partitions of one SID hold.
    struct Stream {
        std::uint64_t position = 0; ///< of the first pack
        std::uint64_t octets = 0;   ///< of all bodies so far
        bool isGenericStream = false;
    };

    void startStructure() override;
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    void endPartition(const KLVKey& key) override;
    void randomIndex(const MXFRandomIndex& index) override;
    void runIn(std::uint64_t length) override { runIn_ = length; }
    void endStructure() override;

    // What partitions before the current one hold, by body SID and index SID; null if there is none.

    const Stream* findBody(std::uint32_t bodySID) const { return find(bodies_, bodySID); }
    const Stream* findIndex(std::uint32_t indexSID) const { return find(indexes_, indexSID); }

    // By the metadata validator.

    void metadata(BRYXMetadataSummary summary);
    /// Whether header metadata that is read now is final: in a closed partition; and whether nothing is missing.
    bool isClosed() const;
    bool isComplete() const;

    // By the index validator.

    void segment(const MXFIndexTableSegment& segment) const;
    /// @param summarizer not owned; has the index tables summed up when the file ends
    void setIndexSummarizer(BRYXIndexSummarizer& summarizer) { indexSummarizer_ = &summarizer; }
    /// Whether header metadata says that parts of the index table with @p indexSID may be missing.
    bool isSparse(std::uint32_t indexSID) const;

    // By the system validator. Elements stand at the current position.

    /// From now on elements are told.
    void expectElements() { expectsElements_ = true; }
    std::uint32_t bodySID() const noexcept { return partition_ ? partition_->bodySID : 0; }
    void element(const KLVKey& key);
    void contentPackage();
    void systemItem(const KLVKey& label, const boost::optional<Rational>& rate);

private:
    struct Partition {
        KLVKey key;
        KLVKey operationalPattern;
        std::vector<KLVKey> essenceContainers;
        std::uint16_t majorVersion;
        std::uint16_t minorVersion;
        std::uint32_t indexSID;
        std::uint32_t bodySID;
        std::uint64_t bodyStart; ///< stream position
    };
    /// What the bodies with one SID hold.
    struct Essence {
        /// Track numbers, and positions where they occur first.
        std::unordered_map<std::uint32_t, std::uint64_t> elements;
        std::uint64_t packages = 0;
        std::uint64_t systemPosition = 0; ///< of the first system item
        boost::optional<KLVKey> label;    ///< of that one
        boost::optional<Rational> rate;
    };

    static const Stream* find(const std::map<std::uint32_t, Stream>& streams, std::uint32_t sid);
    Essence& essence();
    void checkSIDs() const;
    void checkIndexTables(const BRYXIndexSummaries& tables) const;
    void checkIndexTable(const BRYXIndexSummary& table, const BRYXMetadataSummary::Container& container) const;
    void checkEssence() const;
    void checkElements(const Essence& essence, const BRYXMetadataSummary::Container& container) const;
    void checkPackages(const Essence& essence, const BRYXMetadataSummary::Container& container) const;

    boost::optional<Partition> partition_; ///< the current one
    boost::optional<BRYXMetadataSummary> metadata_;
    bool metadataIsComplete_ = false;
    bool metadataIsClosed_ = false;
    bool randomIndexSeen_ = false;
    std::uint64_t runIn_ = 0;
    std::uint64_t base_ = 0;                   ///< where the file begins in its stream
    std::map<std::uint32_t, Stream> bodies_;   ///< by body SID
    std::map<std::uint32_t, Stream> indexes_;  ///< by index SID
    std::map<std::uint32_t, Essence> essence_; ///< by body SID
    Essence* current_ = nullptr;               ///< of the current partition, if it has had any
    Essence notKept_;                          ///< of those beyond maxKept
    BRYXIndexSummarizer* indexSummarizer_ = nullptr;
    bool expectsElements_ = false;
};

} // namespace bryx

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <istream>
#include <map>
#include <string>
#include <vector>

#include "klv/DullKLVHandler.h"
#include "klv/KLVCoding.h"
#include "klv/Locator.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFTripletPosition.h"

/// @file
/// Where everything stands in a file, from its first octet to its last without a gap: what is needed to draw it.

/// What a stretch of the file is for.
enum class Region : std::uint8_t {
    RunIn,
    PartitionPack,
    HeaderMetadata,
    Index,
    System,
    Picture,
    Sound,
    Data,
    Compound,
    GenericStream,
    Other,
    Fill,
    RandomIndex,
    Mixed,   ///< several regions in turn, too many to be told apart
    Omitted, ///< whole partitions
    Unread
};

/// Octets of the file that follow one another.
struct LayoutBlock {
    Region region = Region::Unread;
    std::uint64_t begin = 0; ///< in octets from the first of the file
    std::uint64_t end = 0;
    std::uint64_t triplets = 0;
    KLVKey key = {};                             ///< of the first triplet
    std::map<Region, std::uint64_t> octets = {}; ///< of a block of several regions, by region
    std::vector<LayoutBlock> beginning = {};     ///< of a mixed block: the first blocks in it

    std::uint64_t size() const { return end - begin; }

    void addTo(std::map<Region, std::uint64_t>& sums) const {
        if (octets.empty()) {
            sums[region] += size();
        }
        for (const auto& [each, sum] : octets) {
            sums[each] += sum;
        }
    }
};

/// A partition, or what stands beside them: run-in, random index, triplets that belong to no partition, partitions that
/// are left out, and octets that could not be read.
struct LayoutPart {
    std::vector<LayoutBlock> blocks; ///< at least one
    KLVKey key = {};                 ///< of the partition pack, if this is a partition
    MXFPartitionPack pack = {};      ///< as far as it could be read
    std::uint64_t partitions = 0;    ///< 1 for a partition; the number of those that are left out
    std::string problem = {};        ///< why octets could not be read

    std::uint64_t begin() const { return blocks.front().begin; }
    std::uint64_t end() const { return blocks.back().end; }
    bool isPartition() const { return mxfutil::isPartitionPackKey(key); }
};

/// Makes a pass of its own over a file that can seek, and notes where its triplets stand. It reads partition packs and
/// skips all other values.
///
/// It goes from triplet to triplet without regard to the rules for partitions, and where it cannot go on, it does so at
/// the next partition that the random index lists: so it sees more of a damaged file than MXFReader. What it keeps is
/// bounded: triplets of one region that follow one another are one block, regions that take turns are mixed, and of very
/// many partitions those in the middle are left out.
class LayoutCollector final : public DullKLVHandler {
public:
    /// @param size of the file, @param runIn its octets before the header partition
    LayoutCollector(std::istream& file, std::uint64_t size, std::uint64_t runIn);

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void berLengthForm(std::uint8_t form) override { form_ = form; }

    bool startIndividualItem(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm form) override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;

    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

    // A triplet is noted when it ends: one that the end of the file cuts off has no end event.
    void endIndividualItem(const KLVKey& key) override { add(key); }
    void endLabel(const KLVKey& key) override { add(key); }
    void endUniversalSet(const KLVKey& key) override { add(key); }
    void endLocalSet(const KLVKey& key) override { add(key); }
    void endFixedLengthPack(const KLVKey& key) override { add(key); }
    void endVariableLengthPack(const KLVKey& key) override { add(key); }
    void endWrapper(const KLVKey& key) override { add(key); }

    const std::deque<LayoutPart>& parts() const { return parts_; }

    /// The block that @p position is in, or null if it is beyond the file.
    const LayoutBlock* blockAt(std::uint64_t position) const;

private:
    // What there is at most on a page: some 12000 blocks.
    static constexpr std::size_t firstParts = 230;
    static constexpr std::size_t lastParts = 10;
    static constexpr std::size_t maxBlocks = 16; ///< of an area before they are mixed
    static constexpr std::uint64_t maxPackSize = std::uint64_t{1} << 16U;

    /// The areas of a partition, one after the other.
    enum class Area : std::uint8_t { Pack, HeaderMetadata, Index, Body };

    /// The positions of partitions that the random index tells, in their order.
    static std::vector<std::uint64_t> listedPartitions(std::istream& file, std::uint64_t runIn);

    /// @return what was wrong where reading ended, if that was before the end of the file
    std::string readFrom(std::istream& file, std::uint64_t position);

    bool start(std::uint64_t length);

    void add(const KLVKey& key);

    void startPart(std::uint64_t partitions);

    /// The areas follow from the pack. Header metadata begins after the fill that follows it (ST 377-1 §7.1).
    void enterArea(const KLVKey& key);

    static std::uint64_t sum(std::uint64_t a, std::uint64_t b);

    Region regionOf(const KLVKey& key) const;

    void append(Region region, const KLVKey& key);

    /// Makes one mixed block of those in the area.
    void mix(std::vector<LayoutBlock>& blocks) const;

    const Locator* locator_ = nullptr;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    MXFTripletPosition triplet_; ///< that started last
    std::vector<std::uint8_t> packValue_;

    std::uint64_t end_; ///< of what has been read
    std::deque<LayoutPart> parts_;
    bool inPart_ = false; ///< whether triplets belong to the last part
    Area area_ = Area::Pack;
    std::size_t areaBegin_ = 0; ///< its first block in those of the part
    std::uint64_t headerEnd_ = 0;
    std::uint64_t indexEnd_ = 0;
};

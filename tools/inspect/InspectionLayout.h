#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <istream>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "inspect/Inspection.h"
#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/Locator.h"
#include "mxf/engines/MXFPartialReader.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFRandomIndex.h"
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
/// the next partition that the random index lists: so it sees more of a damaged file than MXFReader. What it keeps is bounded: triplets of one region that follow one another are
/// one block, regions that take turns are mixed, and of very many partitions those in the middle are left out.
class LayoutCollector final : public DullKLVHandler {
public:
    /// @param size of the file, @param runIn its octets before the header partition
    LayoutCollector(std::istream& file, std::uint64_t size, std::uint64_t runIn) : end_(runIn) {
        if (runIn != 0) {
            parts_.push_back({{LayoutBlock{Region::RunIn, 0, runIn}}});
        }
        std::optional<std::vector<std::uint64_t>> partitions;
        while (end_ < size) {
            const std::string problem = readFrom(file, end_);
            if (end_ >= size) {
                break;
            }
            if (!partitions) {
                partitions = listedPartitions(file, runIn);
            }
            const auto listed = std::upper_bound(partitions->begin(), partitions->end(), end_);
            const std::uint64_t next = listed == partitions->end() ? size : std::min(*listed, size);
            startPart(0);
            parts_.back().blocks = {LayoutBlock{Region::Unread, end_, next}};
            parts_.back().problem = problem;
            inPart_ = false;
            end_ = next;
        }
    }

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void berLengthForm(std::uint8_t form) override { form_ = form; }

    bool startIndividualItem(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLabel(const KLVKey& /*key*/) override {
        triplet_ = MXFTripletPosition::ofLabel(*locator_);
        return false;
    }
    bool startUniversalSet(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLocalSet(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*tagForm*/,
                       KLVFieldForm /*lengthForm*/) override {
        return start(length);
    }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        start(length);
        packValue_.clear();
        return mxfutil::isPartitionPackKey(key);
    }
    bool startVariableLengthPack(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*form*/) override {
        return start(length);
    }
    bool startWrapper(const KLVKey& /*key*/, std::uint64_t length, KLVWrapperKind /*kind*/) override {
        return start(length);
    }

    bool getValueBuffer(std::uint64_t /*length*/, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& /*buffer*/) override {
        size = std::min(size, maxPackSize);
        return offset == 0;
    }
    void value(const std::uint8_t* data, std::uint64_t size) override {
        packValue_.insert(packValue_.end(), data, data + size);
    }

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
    const LayoutBlock* blockAt(std::uint64_t position) const {
        const auto part = std::partition_point(parts_.begin(), parts_.end(),
                                               [&](const LayoutPart& each) { return each.end() <= position; });
        if (part == parts_.end()) {
            return nullptr;
        }
        return &*std::partition_point(part->blocks.begin(), part->blocks.end(),
                                      [&](const LayoutBlock& each) { return each.end <= position; });
    }

private:
    // What there is at most on a page: some 12000 blocks.
    static constexpr std::size_t firstParts = 230;
    static constexpr std::size_t lastParts = 10;
    static constexpr std::size_t maxBlocks = 16; ///< of an area before they are mixed
    static constexpr std::uint64_t maxPackSize = std::uint64_t{1} << 16U;

    /// The areas of a partition, one after the other.
    enum class Area : std::uint8_t { Pack, HeaderMetadata, Index, Body };

    /// Takes the random index out of the few calls that a structure handler gets.
    struct RandomIndexReader final : DullMXFStructureHandler {
        void randomIndex(const MXFRandomIndex& read) override { index = read; }
        MXFRandomIndex index;
    };

    /// The positions of partitions that the random index tells, in their order.
    static std::vector<std::uint64_t> listedPartitions(std::istream& file, std::uint64_t runIn) {
        RandomIndexReader handler;
        MXFPartialReader reader;
        reader.setStructureHandler(&handler);
        file.clear();
        reader.setInputStream(&file);
        try {
            reader.readRandomIndexPack();
        } catch (const std::exception&) {
            handler.index.clear(); // a damaged one is as good as none
        }
        std::vector<std::uint64_t> positions;
        for (const MXFRandomIndexEntry& entry : handler.index) {
            positions.push_back(sum(runIn, entry.byteOffset));
        }
        std::sort(positions.begin(), positions.end());
        return positions;
    }

    /// @return what was wrong where reading ended, if that was before the end of the file
    std::string readFrom(std::istream& file, std::uint64_t position) {
        GenericKLVReader reader;
        reader.setHandler(this);
        file.clear();
        file.seekg(static_cast<std::streamoff>(position));
        try {
            reader.parse(file, static_cast<std::streamoff>(position));
        } catch (const std::exception& problem) {
            return problem.what();
        }
        return {};
    }

    bool start(std::uint64_t length) {
        triplet_ = MXFTripletPosition::of(*locator_, form_, length);
        return false;
    }

    void add(const KLVKey& key) {
        end_ = triplet_.end;
        if (mxfutil::isPartitionPackKey(key)) {
            startPart(1);
            parts_.back().key = key;
            if (!mxfutil::readPartitionPack(packValue_.data(), packValue_.size(), parts_.back().pack)) {
                parts_.back().pack = {};
            }
            append(Region::PartitionPack, key);
            return;
        }
        if (key == mxfutil::randomIndexPackKey) {
            startPart(0);
            append(Region::RandomIndex, key);
            return;
        }
        if (!inPart_) {
            startPart(0);
        }
        enterArea(key);
        append(regionOf(key), key);
    }

    void startPart(std::uint64_t partitions) {
        if (parts_.size() == firstParts + lastParts) {
            // The part of what is left out, which is none until the first time, grows by the one that comes after it.
            const auto omitted = parts_.begin() + firstParts - 1;
            const auto next = omitted + 1;
            LayoutBlock sum{Region::Omitted, omitted->begin(), next->end()};
            for (const LayoutPart* part : {&*omitted, &*next}) {
                for (const LayoutBlock& block : part->blocks) {
                    sum.triplets += block.triplets;
                    block.addTo(sum.octets);
                }
            }
            *omitted = {{std::move(sum)}, {}, {}, omitted->partitions + next->partitions};
            parts_.erase(next);
        }
        parts_.push_back({{}, {}, {}, partitions});
        inPart_ = true;
        area_ = Area::Pack;
        areaBegin_ = 0;
    }

    /// The areas follow from the pack. Header metadata begins after the fill that follows it (ST 377-1 §7.1).
    void enterArea(const KLVKey& key) {
        const LayoutPart& part = parts_.back();
        if (area_ == Area::Pack && key == klvutil::fillKey) {
            return;
        }
        if (area_ == Area::Pack) {
            headerEnd_ = sum(triplet_.start, part.pack.headerByteCount);
            indexEnd_ = sum(headerEnd_, part.pack.indexByteCount);
        }
        const Area area = triplet_.start < headerEnd_  ? Area::HeaderMetadata
                          : triplet_.start < indexEnd_ ? Area::Index
                                                       : Area::Body;
        if (area != area_) {
            area_ = area;
            areaBegin_ = part.blocks.size();
        }
    }

    static std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
        return a + std::min(b, std::numeric_limits<std::uint64_t>::max() - a);
    }

    Region regionOf(const KLVKey& key) const {
        if (key == klvutil::fillKey) {
            return Region::Fill;
        }
        if (area_ == Area::HeaderMetadata || area_ == Area::Index) {
            return area_ == Area::Index ? Region::Index : Region::HeaderMetadata;
        }
        const LayoutPart& part = parts_.back();
        if (part.isPartition() && mxfutil::partitionStatus(part.key) == MXFPartitionStatus::GenericStream) {
            return Region::GenericStream;
        }
        switch (classifyEssence(key)) {
        case MXFGCEssenceKind::Picture:
            return Region::Picture;
        case MXFGCEssenceKind::Sound:
            return Region::Sound;
        case MXFGCEssenceKind::Data:
            return Region::Data;
        case MXFGCEssenceKind::Compound:
            return Region::Compound;
        case MXFGCEssenceKind::None:
            break;
        }
        return mxfutil::isGCSystemElement(key) ? Region::System : Region::Other;
    }

    void append(Region region, const KLVKey& key) {
        std::vector<LayoutBlock>& blocks = parts_.back().blocks;
        if (blocks.size() - areaBegin_ == maxBlocks && blocks.back().region != region) {
            mix(blocks);
        }
        if (blocks.size() > areaBegin_ && (blocks.back().region == region || blocks.back().region == Region::Mixed)) {
            LayoutBlock& last = blocks.back();
            last.end = triplet_.end;
            ++last.triplets;
            if (last.region == Region::Mixed) {
                last.octets[region] += triplet_.end - triplet_.start;
            }
        } else {
            blocks.push_back({region, triplet_.start, triplet_.end, 1, key});
        }
    }

    /// Makes one mixed block of those in the area.
    void mix(std::vector<LayoutBlock>& blocks) const {
        const auto first = blocks.begin() + static_cast<std::ptrdiff_t>(areaBegin_);
        LayoutBlock mixed{Region::Mixed, first->begin, blocks.back().end, 0, first->key};
        for (auto block = first; block != blocks.end(); ++block) {
            mixed.triplets += block->triplets;
            block->addTo(mixed.octets);
        }
        mixed.beginning.assign(std::make_move_iterator(first), std::make_move_iterator(blocks.end()));
        blocks.erase(first, blocks.end());
        blocks.push_back(std::move(mixed));
    }

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

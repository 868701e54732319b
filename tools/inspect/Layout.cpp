#include "inspect/Layout.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "inspect/ElementCounter.h"
#include "klv/GenericKLVReader.h"
#include "mxf/engines/MXFPartialReader.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFRandomIndex.h"

namespace {

/// Takes the random index out of the few calls that a structure handler gets.
struct RandomIndexReader final : DullMXFStructureHandler {
    void randomIndex(const MXFRandomIndex& read) override { index = read; }
    MXFRandomIndex index;
};

} // namespace

LayoutCollector::LayoutCollector(std::istream& file, std::uint64_t size, std::uint64_t runIn) : end_(runIn) {
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

bool LayoutCollector::startLabel(const KLVKey& /*key*/) {
    triplet_ = MXFTripletPosition::ofLabel(*locator_);
    return false;
}

bool LayoutCollector::startLocalSet(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*tagForm*/,
                                    KLVFieldForm /*lengthForm*/) {
    return start(length);
}

bool LayoutCollector::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    start(length);
    packValue_.clear();
    return mxfutil::isPartitionPackKey(key);
}

bool LayoutCollector::startVariableLengthPack(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*form*/) {
    return start(length);
}

bool LayoutCollector::startWrapper(const KLVKey& /*key*/, std::uint64_t length, KLVWrapperKind /*kind*/) {
    return start(length);
}

bool LayoutCollector::getValueBuffer(std::uint64_t /*length*/, std::uint64_t& offset, std::uint64_t& size,
                                     std::uint8_t*& /*buffer*/) {
    size = std::min(size, maxPackSize);
    return offset == 0;
}

void LayoutCollector::value(const std::uint8_t* data, std::uint64_t size) {
    packValue_.insert(packValue_.end(), data, data + size);
}

const LayoutBlock* LayoutCollector::blockAt(std::uint64_t position) const {
    const auto part = std::partition_point(parts_.begin(), parts_.end(),
                                           [&](const LayoutPart& each) { return each.end() <= position; });
    if (part == parts_.end()) {
        return nullptr;
    }
    return &*std::partition_point(part->blocks.begin(), part->blocks.end(),
                                  [&](const LayoutBlock& each) { return each.end <= position; });
}

std::vector<std::uint64_t> LayoutCollector::listedPartitions(std::istream& file, std::uint64_t runIn) {
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

std::string LayoutCollector::readFrom(std::istream& file, std::uint64_t position) {
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

bool LayoutCollector::start(std::uint64_t length) {
    triplet_ = MXFTripletPosition::of(*locator_, form_, length);
    return false;
}

void LayoutCollector::add(const KLVKey& key) {
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

void LayoutCollector::startPart(std::uint64_t partitions) {
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

void LayoutCollector::enterArea(const KLVKey& key) {
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

std::uint64_t LayoutCollector::sum(std::uint64_t a, std::uint64_t b) {
    return a + std::min(b, std::numeric_limits<std::uint64_t>::max() - a);
}

Region LayoutCollector::regionOf(const KLVKey& key) const {
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

void LayoutCollector::append(Region region, const KLVKey& key) {
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

void LayoutCollector::mix(std::vector<LayoutBlock>& blocks) const {
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

#include "sdk/internal/BRYXIndexWriter.h"

#include <algorithm>
#include <utility>

#include <boost/optional.hpp>

#include "mxf/essence/MXFGCIntraIndexer.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexCoder.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "sdk/internal/BRYXRegion.h"

namespace bryx {

using Placement = BRYXWriterConfiguration::IndexPlacement;

/// Asks the caller what to say of a picture, keeps nothing if there is to be no index table of this making, and compares
/// with one that has been announced.
class BRYXIndexWriter::Indexer final : public MXFGCIntraIndexer {
public:
    Indexer(MXFGCStructureHandler& next, const Locator& locator, const BRYXEssenceContainer& container, bool keeps)
        : MXFGCIntraIndexer(next, locator), container_(container), keeps_(keeps) {}

    void announce(const std::vector<MXFIndexTableSegment>& segments) {
        announced_.emplace();
        announced_->setSegments(segments);
    }
    void startBody(std::uint64_t position, std::uint64_t octetsBefore) {
        MXFGCIntraIndexer::startBody(position, octetsBefore);
        bodyStart_ = position;
        octetsBefore_ = octetsBefore;
        end_ = position;
    }
    void endBody(std::uint64_t position) { isAll_ = isAll_ && position == end_; }
    std::uint64_t contentPackages() const noexcept { return contentPackages_; }
    bool isAll() const noexcept { return isAll_; }

    bool isAsAnnounced(std::uint64_t octets) const {
        if (!announced_ || contentPackages_ == 0 || announced_->ranges().empty()) {
            return true;
        }
        if (contentPackages_ == 1 && announced_->ranges().back().end != 1) {
            return true; // all edit units are in one element, wrapped as a clip
        }
        const auto last = static_cast<std::int64_t>(contentPackages_ - 1);
        const boost::optional<std::uint64_t> size =
            announced_->contains(last) ? announced_->size(last) : boost::optional<std::uint64_t>();
        return isAsAnnounced_ && (!size || announced_->streamOffset(last) + *size == octets);
    }

private:
    void indexContentPackage(std::uint64_t start, const Offsets& offsets) override {
        const auto editUnit = static_cast<std::int64_t>(contentPackages_++);
        isAll_ = isAll_ && start == end_;
        end_ = position();
        if (announced_ && announced_->contains(editUnit)) {
            isAsAnnounced_ = isAsAnnounced_ && announced_->streamOffset(editUnit) == start - bodyStart_ + octetsBefore_;
        }
        if (keeps_) {
            MXFGCIntraIndexer::indexContentPackage(start, offsets);
        }
    }
    void describe(std::int64_t editUnit, MXFIndexEntry& entry) const override {
        if (container_.describe) {
            container_.describe(editUnit, entry);
        } else {
            MXFGCIntraIndexer::describe(editUnit, entry);
        }
    }

    const BRYXEssenceContainer& container_;
    bool keeps_;
    std::uint64_t contentPackages_ = 0;
    std::uint64_t bodyStart_ = 0;
    std::uint64_t octetsBefore_ = 0;
    std::uint64_t end_ = 0; ///< position behind the last content package
    bool isAll_ = true;     ///< nothing has been written beside content packages
    boost::optional<MXFIndexCalculator> announced_;
    bool isAsAnnounced_ = true; ///< each content package began where it should
};

BRYXIndexWriter::BRYXIndexWriter(const BRYXEssenceContainer& container, const BRYXWriterConfiguration& configuration,
                                 MXFGCStructureHandler& next, const Locator& locator)
    : container_(container), configuration_(configuration),
      indexer_(std::make_unique<Indexer>(next, locator, container_, isOwn())) {
    if (isBefore() && !container_.segments.empty()) {
        indexer_->announce(container_.segments);
    }
}

BRYXIndexWriter::~BRYXIndexWriter() = default;

MXFGCIndexer& BRYXIndexWriter::indexer() {
    return *indexer_;
}

std::uint64_t BRYXIndexWriter::contentPackages() const {
    return indexer_->contentPackages();
}

boost::optional<std::uint64_t> BRYXIndexWriter::editUnits(std::uint64_t octets) const {
    const bool arePackages = container_.segments.empty() || isBefore();
    const bool areKnown = octets == 0 || (arePackages && indexer_->isAll() && contentPackages() > 1);
    return boost::make_optional(areKnown, contentPackages());
}

void BRYXIndexWriter::endBody(std::uint64_t position) {
    indexer_->endBody(position);
}

void BRYXIndexWriter::startBody(std::uint64_t position, std::uint64_t octetsBefore) {
    indexer_->startBody(position, octetsBefore);
}

bool BRYXIndexWriter::isBefore() const {
    return exists() && configuration_.indexPlacement == Placement::BeforeEssence;
}

bool BRYXIndexWriter::isAsAnnounced(std::uint64_t octets) const {
    return indexer_->isAsAnnounced(octets);
}

BRYXIndexWriter::Part BRYXIndexWriter::next() {
    const std::int64_t end = indexer_->editUnits();
    const std::int64_t first = indexedTo_.empty() ? 0 : indexedTo_.back();
    if (!isOwn() || configuration_.indexPlacement != Placement::AfterEssence || container_.isConstant || end == first) {
        return {};
    }
    Part part{this, nullptr, first, {end}, indexed_, 0};
    const std::size_t count = measure(part);
    indexedTo_.push_back(end);
    indexed_ += count;
    return part;
}

BRYXIndexWriter::Part BRYXIndexWriter::whole(std::uint64_t octets) {
    if (!exists()) {
        return {};
    }
    Part part{this, nullptr, 0, {}, 0, 0};
    if (!container_.segments.empty()) {
        part.given = &container_.segments;
    } else if (container_.isConstant) {
        constant_ = {indexer_->constantSegment(octets)};
        if (constant_.front().editUnitByteCount != 0) {
            part.given = &constant_;
        }
    }
    if (part.given == nullptr) {
        part.ends = indexedTo_;
        part.ends.push_back(indexer_->editUnits());
    }
    return measure(part) == 0 ? Part() : part;
}

/// Sets the octets of @p part, and returns the number of its segments.
std::size_t BRYXIndexWriter::measure(Part& part) {
    std::size_t count = 0;
    part.octets = sizeOf([&](KLVHandler& handler) { count = send(handler, part); });
    return count;
}

std::size_t BRYXIndexWriter::send(KLVHandler& handler, const Part& part) {
    std::size_t number = part.number;
    MXFIndexCoder coder(handler);
    coder.setBERLengthForm(configuration_.metadataLengthForm);
    const auto send = [&](MXFIndexTableSegment segment) {
        segment.indexEditRate = container_.editRate;
        segment.indexSID = container_.indexSID;
        segment.bodySID = container_.bodySID;
        if (number == segmentUIDs_.size()) {
            segmentUIDs_.push_back(configuration_.uidGenerator->generateUID());
        }
        segment.instanceUID = segmentUIDs_[number++];
        coder.indexTableSegment(segment);
    };
    coder.startIndex();
    if (part.given != nullptr) {
        std::for_each(part.given->begin(), part.given->end(), send);
    }
    std::int64_t first = part.first;
    for (const std::int64_t end : part.ends) {
        while (first < end) {
            MXFIndexTableSegment segment = indexer_->segment(first, end);
            first += segment.indexDuration;
            send(std::move(segment));
        }
    }
    coder.endIndex();
    return number - part.number;
}

} // namespace bryx

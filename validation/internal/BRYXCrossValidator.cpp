#include "validation/internal/BRYXCrossValidator.h"

#include <algorithm>
#include <set>

#include "mxf/essence/MXFGCKeys.h"
#include "validation/internal/BRYXRates.h"

namespace bryx {

namespace checks = BRYXCrossChecks;

namespace {

std::uint32_t trackNumber(const KLVKey& key) {
    return std::uint32_t{key[12]} << 24U | std::uint32_t{key[13]} << 16U | std::uint32_t{key[14]} << 8U | key[15];
}

std::string hexadecimal(std::uint32_t number) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += digits[number >> static_cast<unsigned>(shift) & 0xFU];
    }
    return text;
}

/// Whether the elements of a track are data: timed text, ancillary data and the like (ST 379-1).
bool isData(std::uint32_t trackNumber) {
    const std::uint32_t itemType = trackNumber >> 24U;
    return itemType == 0x07 || itemType == 0x17;
}

bool sameLabels(const std::vector<KLVKey>& a, const std::vector<KLVKey>& b) {
    return std::set<KLVKey>(a.begin(), a.end()) == std::set<KLVKey>(b.begin(), b.end());
}

} // namespace

void BRYXCrossValidator::startStructure() {
    base_ = position() - runIn_;
    partition_.reset();
    metadata_.reset();
    metadataIsComplete_ = false;
    metadataIsClosed_ = false;
    randomIndexSeen_ = false;
    bodies_.clear();
    indexes_.clear();
    essence_.clear();
    current_ = nullptr;
}

void BRYXCrossValidator::startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) {
    current_ = nullptr;
    partition_ = Partition{key,
                           pack.operationalPattern,
                           pack.essenceContainers,
                           pack.majorVersion,
                           pack.minorVersion,
                           pack.indexSID,
                           pack.bodySID,
                           base_ + headerStart + pack.headerByteCount + pack.indexByteCount};
    if (pack.bodySID != 0 && bodies_.size() < maxKept) {
        const bool isGenericStream = mxfutil::partitionStatus(key) == MXFPartitionStatus::GenericStream;
        bodies_.emplace(pack.bodySID, Stream{position(), 0, isGenericStream});
    }
    if (pack.indexSID != 0 && indexes_.size() < maxKept) {
        indexes_.emplace(pack.indexSID, Stream{position()});
    }
}

void BRYXCrossValidator::endPartition(const KLVKey& /*key*/) {
    const auto body = bodies_.find(bodySID());
    const std::uint64_t end = position();
    if (body != bodies_.end() && end > partition_->bodyStart) {
        body->second.octets += end - partition_->bodyStart;
    }
}

const BRYXCrossValidator::Stream* BRYXCrossValidator::find(const std::map<std::uint32_t, Stream>& streams,
                                                           std::uint32_t sid) {
    const auto stream = streams.find(sid);
    return stream == streams.end() ? nullptr : &stream->second;
}

void BRYXCrossValidator::randomIndex(const MXFRandomIndex& /*index*/) {
    randomIndexSeen_ = true;
}

bool BRYXCrossValidator::isClosed() const {
    const auto status = partition_ ? mxfutil::partitionStatus(partition_->key) : MXFPartitionStatus::OpenIncomplete;
    return status == MXFPartitionStatus::ClosedIncomplete || status == MXFPartitionStatus::ClosedComplete;
}

bool BRYXCrossValidator::isComplete() const {
    const auto status = partition_ ? mxfutil::partitionStatus(partition_->key) : MXFPartitionStatus::OpenIncomplete;
    return status == MXFPartitionStatus::OpenComplete || status == MXFPartitionStatus::ClosedComplete;
}

void BRYXCrossValidator::metadata(BRYXMetadataSummary summary) {
    if (partition_) {
        if (summary.operationalPattern != partition_->operationalPattern) {
            reportAt(summary.position, checks::inconsistentPrefacePattern, toString(summary.operationalPattern));
        }
        if (!sameLabels(summary.essenceContainers, partition_->essenceContainers)) {
            reportAt(summary.position, checks::inconsistentPrefaceContainers);
        }
        const unsigned version = partition_->majorVersion * 256U + partition_->minorVersion;
        if (summary.version && *summary.version != version) {
            reportAt(summary.position, checks::inconsistentPrefaceVersion,
                     mxfutil::versionText(*summary.version / 256U, *summary.version % 256U) + ", not " +
                         mxfutil::versionText(partition_->majorVersion, partition_->minorVersion));
        }
    }
    // The last one counts, but not where something is missing in it that an earlier one has.
    if (!metadata_ || isComplete() || !metadataIsComplete_) {
        metadata_ = std::move(summary);
        metadataIsComplete_ = isComplete();
        metadataIsClosed_ = isClosed();
    }
}

void BRYXCrossValidator::segment(const MXFIndexTableSegment& segment) const {
    if (partition_ && segment.indexSID != partition_->indexSID) {
        report(checks::misplacedSegment, std::to_string(segment.indexSID));
    }
}

BRYXCrossValidator::Essence& BRYXCrossValidator::essence() {
    if (current_ == nullptr) {
        const bool isKept = essence_.size() < maxKept || essence_.count(bodySID()) != 0;
        current_ = isKept ? &essence_[bodySID()] : &notKept_;
    }
    return *current_;
}

void BRYXCrossValidator::element(const KLVKey& key) {
    const std::uint32_t number = trackNumber(key);
    auto& elements = essence().elements;
    if (elements.find(number) == elements.end() && elements.size() < maxKept) {
        elements.emplace(number, position());
    }
}

void BRYXCrossValidator::contentPackage() {
    ++essence().packages;
}

void BRYXCrossValidator::systemItem(const KLVKey& label, const boost::optional<Rational>& rate) {
    if (!essence().label) {
        essence().systemPosition = position();
        essence().label = label;
        essence().rate = rate;
    }
}

void BRYXCrossValidator::checkSIDs() const {
    // Of a set and a partition that miss each other, the set is reported.
    std::set<std::uint32_t> bodySIDs;
    std::set<std::uint32_t> indexSIDs;
    std::size_t misses = 0;
    for (const auto& container : metadata_->containers) {
        const bool isThere = bodies_.count(container.bodySID) != 0;
        misses += isThere && bodySIDs.insert(container.bodySID).second ? 0U : 1U;
        // While a file is being written, there is more to come.
        if (metadataIsClosed_ && container.bodySID != 0 && !isThere) {
            reportAt(container.position, checks::missingEssence, std::to_string(container.bodySID));
        }
        indexSIDs.insert(container.indexSID);
        if (metadataIsClosed_ && container.indexSID != 0 && indexes_.count(container.indexSID) == 0) {
            reportAt(container.position, checks::missingIndex, std::to_string(container.indexSID));
        }
    }
    for (const auto& [sid, body] : bodies_) {
        if (body.isGenericStream || bodySIDs.count(sid) != 0) {
            continue;
        }
        if (misses > 0) {
            --misses;
        } else {
            reportAt(body.position, checks::unknownBodySID, std::to_string(sid));
        }
    }
    for (const auto& [sid, index] : indexes_) {
        if (indexSIDs.count(sid) == 0) {
            reportAt(index.position, checks::unknownIndexSID, std::to_string(sid));
        }
    }
}

bool BRYXCrossValidator::isSparse(std::uint32_t indexSID) const {
    return metadata_ && metadata_->sparse.count(indexSID) != 0;
}

void BRYXCrossValidator::checkIndexTables(const BRYXIndexSummaries& tables) const {
    std::map<std::uint32_t, const BRYXMetadataSummary::Container*> containers; // by body SID
    std::set<std::uint32_t> indexSIDs;
    if (metadata_) {
        for (const auto& container : metadata_->containers) {
            containers.emplace(container.bodySID, &container);
            indexSIDs.insert(container.indexSID);
        }
    }
    for (const auto& [sids, table] : tables) {
        const auto body = bodies_.find(sids.second);
        if (body != bodies_.end() && table.reach > body->second.octets) {
            reportAt(table.reachPosition, checks::indexBeyondEssence, std::to_string(table.reach));
        }
        const auto container = containers.find(sids.second);
        if (container != containers.end() && container->second->indexSID == sids.first) {
            checkIndexTable(table, *container->second);
        } else if (indexSIDs.count(sids.first) != 0) {
            // An index SID that nobody knows is found where the partition begins.
            reportAt(table.position, checks::unknownIndexTable,
                     std::to_string(sids.first) + ", " + std::to_string(sids.second));
        }
    }
}

void BRYXCrossValidator::checkIndexTable(const BRYXIndexSummary& table,
                                         const BRYXMetadataSummary::Container& container) const {
    const auto& tracks = container.tracks;
    const auto atRate = [&](const auto& track) { return isSameRate(track.editRate, table.editRate); };
    if (isRate(table.editRate) && !tracks.empty() && std::none_of(tracks.begin(), tracks.end(), atRate) &&
        !(container.sampleRate && isSameRate(*container.sampleRate, table.editRate))) {
        reportAt(table.position, checks::inconsistentIndexEditRate, toString(table.editRate));
    }
    // Data that is one element, such as timed text, is one edit unit, however long it is shown.
    const auto essence = essence_.find(container.bodySID);
    const bool isOneUnit =
        table.start == 0 && table.end == 1 && (essence == essence_.end() || essence->second.packages <= 1);
    const auto isUncovered = [&](const auto& track) {
        return atRate(track) && (table.end < track.duration || table.start > 0) && !(isOneUnit && isData(track.number));
    };
    if (!table.isEndless && table.isWhole && !container.isSparse &&
        std::any_of(tracks.begin(), tracks.end(), isUncovered)) {
        reportAt(table.position, checks::incompleteIndexTable,
                 std::to_string(table.start) + " to " + std::to_string(table.end));
    }
}

void BRYXCrossValidator::checkElements(const Essence& essence, const BRYXMetadataSummary::Container& container) const {
    std::set<std::uint32_t> numbers;
    for (const auto& track : container.tracks) {
        numbers.insert(track.number);
        if (essence.elements.count(track.number) == 0) {
            reportAt(track.position, checks::missingElements, hexadecimal(track.number));
        }
    }
    const std::map<std::uint32_t, std::uint64_t> inOrder(essence.elements.begin(), essence.elements.end());
    for (const auto& [number, position] : inOrder) {
        if (numbers.count(number) == 0) {
            reportAt(position, checks::unknownElement, hexadecimal(number));
        }
    }
}

void BRYXCrossValidator::checkPackages(const Essence& essence, const BRYXMetadataSummary::Container& container) const {
    const auto& tracks = container.tracks;
    // A single content package may be all of the essence, wrapped as a clip.
    bool isCounted = false;
    bool isRight = essence.packages <= 1;
    for (const auto& track : tracks) {
        if (track.duration >= 0 && isFrameRate(track.editRate)) {
            isCounted = true;
            isRight = isRight || static_cast<std::uint64_t>(track.duration) == essence.packages;
        }
    }
    if (isCounted && !isRight) {
        reportAt(container.position, checks::inconsistentPackageCount, std::to_string(essence.packages));
    }
    if (essence.label && container.label && *essence.label != *container.label) {
        reportAt(essence.systemPosition, checks::inconsistentSystemLabel, toString(*essence.label));
    }
    const auto atRate = [&](const auto& track) { return isSameRate(track.editRate, *essence.rate); };
    if (essence.rate && !tracks.empty() && std::none_of(tracks.begin(), tracks.end(), atRate)) {
        reportAt(essence.systemPosition, checks::inconsistentPackageRate, toString(*essence.rate));
    }
}

void BRYXCrossValidator::checkEssence() const {
    static const Essence none;
    std::set<std::uint32_t> checked; // essence belongs to one container; further ones have been reported
    for (const auto& container : metadata_->containers) {
        const auto essence = essence_.find(container.bodySID);
        if (container.hasPackage && bodies_.count(container.bodySID) != 0 && checked.insert(container.bodySID).second) {
            checkElements(essence == essence_.end() ? none : essence->second, container);
            checkPackages(essence == essence_.end() ? none : essence->second, container);
        }
    }
}

void BRYXCrossValidator::endStructure() {
    if (indexSummarizer_ != nullptr) {
        checkIndexTables(indexSummarizer_->endFile());
    }
    if (metadata_) {
        if (expectsElements_) {
            checkEssence();
        }
        checkSIDs();
        if (metadata_->ripPresent && *metadata_->ripPresent != randomIndexSeen_) {
            reportAt(metadata_->position, checks::inconsistentRIPPresent,
                     randomIndexSeen_ ? "there is one" : "there is none");
        }
    }
}

} // namespace bryx

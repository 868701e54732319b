#include "validation/internal/BRYXStructureValidator.h"

#include <algorithm>

#include "mxf/structure/MXFPartitionPack.h"

namespace bryx {

namespace checks = BRYXStructureChecks;

namespace {

/// The labels of operational patterns begin like this (ST 377-1, ST 378), and have 0 in no complexity (octet 12).
constexpr KLVKey patternPrefix = klvutil::key("060e2b34.04010101.0d010201.00000000");

bool isOperationalPattern(const KLVKey& label) {
    return std::equal(label.octets.begin(), label.octets.begin() + 7, patternPrefix.octets.begin()) &&
           std::equal(label.octets.begin() + 8, label.octets.begin() + 12, patternPrefix.octets.begin() + 8);
}

// Generic streams are neither: what they are in may still be written.

bool isClosed(MXFPartitionStatus status) {
    return status == MXFPartitionStatus::ClosedIncomplete || status == MXFPartitionStatus::ClosedComplete;
}

bool isOpen(MXFPartitionStatus status) {
    return status == MXFPartitionStatus::OpenIncomplete || status == MXFPartitionStatus::OpenComplete;
}

} // namespace

void BRYXStructureValidator::runIn(std::uint64_t length) {
    cross_.runIn(length);
    next_.runIn(length);
}

void BRYXStructureValidator::startStructure() {
    first_.reset();
    containers_.clear();
    versions_.clear();
    containersAreFinal_ = false;
    openMetadata_.reset();
    cross_.startStructure();
    next_.startStructure();
}

void BRYXStructureValidator::checkStatus(const KLVKey& key, const MXFPartitionPack& pack) {
    const bool open = isOpen(mxfutil::partitionStatus(key));
    if (mxfutil::partitionKind(key) == MXFPartitionKind::Footer && open) {
        report(checks::openFooter);
    } else if (first_ && first_->isClosed && open) {
        report(checks::openAfterClosed);
    }
    if (pack.headerByteCount != 0) {
        openMetadata_ = boost::make_optional(open, position_);
    } else if (!first_) {
        report(checks::missingHeaderMetadata);
    }
}

void BRYXStructureValidator::checkLabels(const MXFPartitionPack& pack, bool isClosed) {
    if (!isOperationalPattern(pack.operationalPattern)) {
        report(checks::invalidOperationalPattern, toString(pack.operationalPattern));
    } else if (first_ && pack.operationalPattern != first_->operationalPattern) {
        report(checks::inconsistentOperationalPattern, toString(pack.operationalPattern));
    }
    // While a file is being written labels may still come, but none goes.
    const std::set<KLVKey> labels(pack.essenceContainers.begin(), pack.essenceContainers.end());
    const bool comes = !std::includes(containers_.begin(), containers_.end(), labels.begin(), labels.end());
    const bool goes = !std::includes(labels.begin(), labels.end(), containers_.begin(), containers_.end());
    if (first_ && ((comes && containersAreFinal_) || (goes && isClosed))) {
        report(checks::inconsistentEssenceContainers);
    }
    if (!containersAreFinal_ && containers_.size() < maxKept) {
        containers_.insert(labels.begin(), labels.end());
    }
    containersAreFinal_ = containersAreFinal_ || isClosed;
}

void BRYXStructureValidator::checkVersions(const KLVKey& key, const MXFPartitionPack& pack) {
    constexpr std::size_t version = 7;
    bool isSame = !first_ || key[version] == first_->registerVersion;
    const auto check = [&](const KLVKey& label) {
        const auto place =
            versions_.size() < maxKept ? versions_.emplace(label, label[version]).first : versions_.find(label);
        isSame = isSame && (place == versions_.end() || place->second == label[version]);
    };
    check(pack.operationalPattern);
    std::for_each(pack.essenceContainers.begin(), pack.essenceContainers.end(), check);
    if (!isSame) {
        report(checks::inconsistentVersions);
    }
    if (first_ && (pack.majorVersion != first_->majorVersion || pack.minorVersion != first_->minorVersion)) {
        report(checks::inconsistentFormatVersion, mxfutil::versionText(pack.majorVersion, pack.minorVersion) +
                                                      ", not " +
                                                      mxfutil::versionText(first_->majorVersion, first_->minorVersion));
    }
}

void BRYXStructureValidator::checkSIDs(const KLVKey& key, const MXFPartitionPack& pack) const {
    const bool isGenericStream = mxfutil::partitionStatus(key) == MXFPartitionStatus::GenericStream;
    const auto* const body = cross_.findBody(pack.bodySID);
    if (isGenericStream && pack.bodySID == 0) {
        report(checks::genericStreamWithoutSID);
    } else if (body != nullptr && body->isGenericStream != isGenericStream) {
        report(checks::sharedBodySID, std::to_string(pack.bodySID));
    } else if (pack.bodySID != 0 && pack.bodyOffset != (body == nullptr ? 0 : body->octets)) {
        report(checks::incorrectBodyOffset,
               std::to_string(pack.bodyOffset) + ", not " + std::to_string(body == nullptr ? 0 : body->octets));
    }
    if (pack.indexSID != 0 && (pack.indexSID == pack.bodySID || cross_.findBody(pack.indexSID) != nullptr)) {
        report(checks::sharedSID, std::to_string(pack.indexSID));
    } else if (pack.bodySID != 0 && cross_.findIndex(pack.bodySID) != nullptr) {
        report(checks::sharedSID, std::to_string(pack.bodySID));
    }
}

void BRYXStructureValidator::startPartition(const KLVKey& key, const MXFPartitionPack& pack,
                                            std::uint64_t headerStart) {
    const std::uint64_t length = position() - position_;
    if (first_ && kagSize_ > 1 && length % kagSize_ != 0) {
        reportAt(position_, checks::packOffKAG, std::to_string(length));
    }
    position_ = position();
    kagSize_ = pack.kagSize;
    checkStatus(key, pack);
    const bool closed = isClosed(mxfutil::partitionStatus(key));
    checkLabels(pack, closed);
    checkVersions(key, pack);
    checkSIDs(key, pack);
    if (!first_) {
        first_ = First{pack.operationalPattern, pack.kagSize, closed, key[7], pack.majorVersion, pack.minorVersion};
    } else if (pack.kagSize != first_->kagSize) {
        report(checks::inconsistentKAGSize, std::to_string(pack.kagSize));
    }
    cross_.startPartition(key, pack, headerStart);
    next_.startPartition(key, pack, headerStart);
}

void BRYXStructureValidator::endPartition(const KLVKey& key) {
    cross_.endPartition(key);
    next_.endPartition(key);
}

void BRYXStructureValidator::randomIndex(const MXFRandomIndex& index) {
    const auto before = [](const auto& a, const auto& b) { return a.byteOffset < b.byteOffset; };
    if (!std::is_sorted(index.begin(), index.end(), before)) {
        report(checks::randomIndexOrder);
    }
    cross_.randomIndex(index);
    next_.randomIndex(index);
}

void BRYXStructureValidator::endStructure() {
    if (openMetadata_) {
        reportAt(*openMetadata_, checks::neverClosed);
    }
    cross_.endStructure();
    next_.endStructure();
}

} // namespace bryx

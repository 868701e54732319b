#include "validation/internal/BRYXMetadataValidator.h"

#include <utility>

#include "klv/ValueCoding.h"
#include "mxf/metadata/model/MXFPropertyLabel.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "validation/internal/BRYXDescriptorChecker.h"
#include "validation/internal/BRYXDigest.h"
#include "validation/internal/BRYXModelChecker.h"
#include "validation/internal/BRYXPackageChecker.h"

namespace bryx {

namespace checks = BRYXMetadataChecks;

namespace {

std::uint64_t digestOf(const MXFPrimedSet& set) {
    BRYXDigest digest;
    const auto addKey = [&](const KLVKey& key) {
        for (std::size_t i = 0; i < key.octets.size(); ++i) {
            if (i != 7) { // the version, which does not tell keys apart
                digest.add(key.octets[i]);
            }
        }
    };
    addKey(set.key);
    for (const auto& [label, value] : set.properties) {
        addKey(label);
        digest.add(value);
    }
    return digest.value();
}

/// Calls @p visit with @p root and all that it owns, depth first.
template <class Visit>
void forEachSet(const std::shared_ptr<const MetadataRoot>& root, const Visit& visit) {
    MXFOwnedSets work{root};
    while (!work.empty()) {
        const std::shared_ptr<const MetadataRoot> set = work.front();
        work.pop_front();
        visit(*set);
        work.splice(work.begin(), mxfutil::ownedSets(*set));
    }
}

} // namespace

BRYXMetadataValidator::BRYXMetadataValidator(MXFMetadataHandler& next, BRYXCrossValidator& cross,
                                             BRYXValidationMode::Enum mode)
    : BRYXValidator(mode), next_(next), nextModel_(dynamic_cast<MXFMetadataModelHandler*>(&next)), cross_(cross) {}

void BRYXMetadataValidator::startMetadata() {
    start_ = position();
    hasModel_ = false;
    region_.clear();
    next_.startMetadata();
}

void BRYXMetadataValidator::primedSet(MXFPrimedSet& set) {
    static const KLVKey instanceUID = MXFPropertyLabel(0x3C0A).label();
    const auto uid = set.properties.find(instanceUID);
    if (uid != set.properties.end() && uid->second.size() == sizeof(MXFUID)) {
        region_.emplace(klvutil::readValue<MXFUID>(uid->second), Read{digestOf(set), set.position});
    }
    if (next_.handlesSet(set.key)) {
        next_.primedSet(set);
    } else {
        next_.unhandledSet(set);
    }
}

void BRYXMetadataValidator::checkReferences(const MetadataRoot& set, const std::set<MXFUID>& generations) const {
    for (const MXFProperty* const property : set.getDescription().properties()) {
        if (property->kind() == MXFProperty::Kind::Value) {
            continue;
        }
        const bool isStrong = property->kind() == MXFProperty::Kind::StrongReference;
        for (const MXFUID& target : set.getUnresolvedReferences(property->label())) {
            // A set that is there has not been refused without a report.
            if (region_.count(target) == 0) {
                reportAt(positionOf(set),
                         isStrong ? checks::unresolvedStrongReference : checks::unresolvedWeakReference,
                         property->fullName(), toString(target));
            }
        }
    }
    const auto* const object = dynamic_cast<const MetadataObject*>(&set);
    if (object != nullptr && object->hasGenerationUID() && generations.count(object->getGenerationUID()) == 0) {
        reportAt(positionOf(set), checks::unknownGeneration, toString(object->getGenerationUID()));
    }
}

void BRYXMetadataValidator::checkModel(const Preface& preface) {
    if (preface.getIdentificationCount() == 0) {
        reportAt(positionOf(preface), checks::missingIdentification);
    }
    BRYXMetadataSummary summary;
    summary.position = positionOf(preface);
    summary.operationalPattern = preface.getOperationalPattern();
    summary.essenceContainers = preface.getEssenceContainers();
    if (!preface.isMissing(MXFPropertyLabel(0x3B05).label())) {
        summary.version = preface.getVersion();
    }
    if (preface.hasRIPPresent()) {
        summary.ripPresent = preface.getRIPPresent();
    }
    if (const auto storage = preface.getContentStorage()) {
        const BRYXPackageChecker packages(*this, *storage, cross_.isComplete());
        packages.check();
        summary.containers = packages.containers();
        for (const auto& container : summary.containers) {
            if (container.isSparse) {
                summary.sparse.insert(container.indexSID);
            }
        }
        const BRYXDescriptorChecker descriptors(*this, preface);
        for (std::size_t i = 0; i < storage->getPackageCount(); ++i) {
            if (const auto package = std::dynamic_pointer_cast<const SourcePackage>(storage->getPackageAt(i))) {
                descriptors.check(*package, packages.isLinked(*package));
            }
        }
    }
    cross_.metadata(std::move(summary));
}

void BRYXMetadataValidator::model(const Model& model) {
    hasModel_ = true;
    const auto preface = std::dynamic_pointer_cast<const Preface>(model.front());
    std::set<MXFUID> generations;
    if (preface == nullptr) {
        reportAt(positionOf(*model.front()), checks::missingPreface, model.front()->getDescription().name());
    } else {
        for (std::size_t i = 0; i < preface->getIdentificationCount(); ++i) {
            generations.insert(preface->getIdentificationAt(i)->getThisGenerationUID());
        }
    }
    for (const auto& root : model) {
        forEachSet(root, [&](const MetadataRoot& set) { checkReferences(set, generations); });
    }
    if (preface != nullptr) {
        checkModel(*preface);
    }
    if (nextModel_ != nullptr) {
        nextModel_->model(model);
    }
}

void BRYXMetadataValidator::checkRepetition() {
    if (!cross_.isClosed() || !cross_.isComplete()) {
        return;
    }
    if (!complete_.empty()) {
        for (const auto& [uid, read] : region_) {
            const auto before = complete_.find(uid);
            if (before == complete_.end() || before->second.digest != read.digest) {
                return reportAt(read.position, checks::inconsistentRepetition, toString(uid));
            }
        }
        for (const auto& [uid, read] : complete_) {
            if (region_.count(uid) == 0) {
                return reportAt(start_, checks::inconsistentRepetition, toString(uid) + " is missing");
            }
        }
    }
    complete_.swap(region_);
}

void BRYXMetadataValidator::endMetadata() {
    if (!hasModel_) {
        reportAt(start_, checks::missingPreface);
    }
    if (makes(checks::inconsistentRepetition)) {
        checkRepetition();
    }
    next_.endMetadata();
}

} // namespace bryx

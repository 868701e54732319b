#include "mxf/metadata/parsing/MXFMetadataModelParser.h"

#include <algorithm>
#include <string>
#include <utility>

#include "klv/ValueCoding.h"
#include "mxf/metadata/factories/MXFMetadataFindings.h"
#include "util/assertion_failure.h"

namespace findings = mxfutil::findings;
using klvutil::report;

namespace {

/// Levels of sets below the root.
constexpr unsigned maxDepth = 256;

/// The sets that a message lists.
constexpr std::size_t maxListed = 10;

/// Calls @p visit with each identifier that the value of an unknown property may be, or be a batch of.
template <class Visit>
void forEachUID(const std::vector<std::uint8_t>& value, Visit visit) {
    klvutil::OctetReader octets(value.data(), value.size());
    if (value.size() % sizeof(MXFUID) == 8) {
        const auto count = octets.read<std::uint32_t>();
        const auto size = octets.read<std::uint32_t>();
        if (size != sizeof(MXFUID) || count != octets.left() / sizeof(MXFUID)) {
            return;
        }
    } else if (value.size() != sizeof(MXFUID)) {
        return;
    }
    while (octets.left() > 0) {
        visit(octets.read<MXFUID>());
    }
}

} // namespace

MXFMetadataModelParser::MXFMetadataModelParser(MXFMetadataFactory& factory, MXFMetadataModelHandler& handler)
    : factory_(factory), handler_(handler) {}

MXFMetadataModelParser::~MXFMetadataModelParser() = default;

void MXFMetadataModelParser::setErrorHandler(ErrorHandler* errorHandler) {
    errorHandler_ = errorHandler;
}

void MXFMetadataModelParser::clear() {
    objects_.clear();
    pending_.clear();
    byUID_.clear();
    unresolved_.clear();
    levels_.clear();
    reporter_.clear();
    unhandled_.clear();
    unhandledTargets_.clear();
}

void MXFMetadataModelParser::startMetadata() {
    clear();
    handler_.startMetadata();
}

void MXFMetadataModelParser::primer(const Primer& /*primer*/) {}

bool MXFMetadataModelParser::handlesSet(const KLVKey& key) {
    if (factory_.canParse(key)) {
        return true;
    }
    reporter_.report(errorHandler_, findings::unrecognizedMetadata, key);
    return false;
}

void MXFMetadataModelParser::unhandledSet(const MXFPrimedSet& set) {
    static const KLVKey instanceUID = MXFPropertyLabel(0x3C0A).label();
    for (const auto& [label, value] : set.properties) {
        auto& uids = label == instanceUID ? unhandled_ : unhandledTargets_;
        forEachUID(value, [&](const MXFUID& uid) { uids.insert(uid); });
    }
}

void MXFMetadataModelParser::primedSet(MXFPrimedSet& set) {
    auto [object, references] = factory_.parse(set);
    util::require(object != nullptr, "factory has created object");
    object->setStartStreampos(static_cast<std::streamoff>(set.position));
    object->setEndStreampos(static_cast<std::streamoff>(set.position + set.length));
    const MXFUID& uid = object->getInstanceUID();
    if (!byUID_.emplace(uid, object).second) {
        return reporter_.report(errorHandler_, findings::duplicateInstanceUID, uid);
    }
    const auto waiting = pending_.equal_range(uid);
    for (auto reference = waiting.first; reference != waiting.second; ++reference) {
        resolve(reference->second, object, false);
    }
    pending_.erase(waiting.first, waiting.second);
    if (!object->hasOwner()) {
        objects_.push_back(object);
    }
    while (!references.empty()) {
        const auto reference = references.begin();
        const auto target = byUID_.find(reference->first);
        if (target != byUID_.end()) {
            resolve(reference->second, target->second, true);
            references.erase(reference);
        } else {
            pending_.insert(references.extract(reference));
        }
    }
}

void MXFMetadataModelParser::resolve(const Reference& reference, const std::shared_ptr<MetadataRoot>& target,
                                     bool backward) {
    const klvutil::Finding* refused = nullptr;
    if (!reference->accepts(*target)) {
        refused = &findings::unexpectedClass;
    } else if (reference->isStrong()) {
        refused = target->hasOwner() ? &findings::alreadyOwned : placeBelow(*reference->referencing(), *target);
        if (refused == nullptr && backward) {
            reporter_.report(errorHandler_, findings::backwardReference, target->getInstanceUID());
        }
    }
    if (refused != nullptr) {
        reporter_.report(errorHandler_, *refused, target->getInstanceUID());
        unresolved_.emplace_back(target->getInstanceUID(), reference);
    } else {
        reference->resolve(target);
    }
}

const klvutil::Finding* MXFMetadataModelParser::placeBelow(const MetadataRoot& owner, const MetadataRoot& owned) {
    const auto below = levels_.find(&owned);
    unsigned level = below == levels_.end() ? 1 : below->second + 1;
    above_.clear();
    for (const MetadataRoot* set = &owner; set != nullptr; set = set->getOwner().get()) {
        above_.push_back(set);
    }
    if (above_.back() == &owned) {
        return &findings::cyclicReference;
    }
    if (above_.size() - 1 + level > maxDepth) {
        return &findings::ownedTooDeeply;
    }
    for (const MetadataRoot* const set : above_) {
        unsigned& known = levels_[set];
        if (known >= level) {
            break; // and so do all above
        }
        known = level++;
    }
    return nullptr;
}

void MXFMetadataModelParser::leaveUnresolved() {
    unresolved_.insert(unresolved_.end(), pending_.begin(), pending_.end());
    for (const auto& [uid, reference] : unresolved_) {
        reference->leaveUnresolved(uid);
    }
    std::set<const void*> lists;
    for (const auto& unresolved : unresolved_) {
        if (lists.insert(unresolved.second->list()).second) {
            unresolved.second->removeUnresolved();
        }
    }
}

void MXFMetadataModelParser::reportDangling() {
    const auto dangling = std::find_if(pending_.begin(), pending_.end(),
                                       [&](const auto& reference) { return unhandled_.count(reference.first) == 0; });
    if (dangling != pending_.end()) {
        report(errorHandler_, findings::danglingReferences, toString(dangling->first));
    }
}

void MXFMetadataModelParser::reportUnreferenced() {
    std::string list;
    std::size_t count = 0;
    for (std::size_t i = 1; i < objects_.size(); ++i) {
        const MXFUID& uid = objects_[i]->getInstanceUID();
        if (unhandledTargets_.count(uid) == 0 && ++count <= maxListed) {
            list += (count > 1 ? ", " : "") + std::string(objects_[i]->getDescription().name()) + " " + toString(uid);
        }
    }
    if (count > maxListed) {
        list += " and " + std::to_string(count - maxListed) + " more";
    }
    if (count > 0) {
        report(errorHandler_, findings::unreferencedObjects, list);
    }
}

void MXFMetadataModelParser::endMetadata() {
    reportDangling();
    leaveUnresolved();
    if (!objects_.empty() && objects_.front()->hasOwner()) {
        report(errorHandler_, findings::notModelRoot);
    }
    objects_.erase(
        std::remove_if(objects_.begin(), objects_.end(), [](const auto& object) { return object->hasOwner(); }),
        objects_.end());
    reportUnreferenced();
    const MXFMetadataModelHandler::Model model = std::move(objects_);
    clear();
    if (!model.empty()) {
        handler_.model(model);
    }
    handler_.endMetadata();
}

#include "mxf/metadata/parsing/MXFMetadataModelParser.h"

#include <algorithm>
#include <string>
#include <utility>

#include "klv/ValueCoding.h"
#include "mxf/metadata/factories/MXFMetadataFindings.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/metadata/model/dangling_ref.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;
using klvutil::report;

namespace {

/// The sets that a message lists.
constexpr std::size_t maxListed = 10;

/// What is found when a reference would have @p fault; null for none.
const klvutil::Finding* findingOf(MetadataRoot::OwningFault fault) {
    switch (fault) {
    case MetadataRoot::OwningFault::IsOwned:
        return &findings::alreadyOwned;
    case MetadataRoot::OwningFault::OwnsThis:
        return &findings::cyclicReference;
    case MetadataRoot::OwningFault::TooDeep:
        return &findings::ownedTooDeeply;
    case MetadataRoot::OwningFault::None:
        break;
    }
    return nullptr;
}

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
    refused_.clear();
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
        refused = findingOf(reference->referencing()->owningFault(*target));
        if (refused == nullptr && backward) {
            reporter_.report(errorHandler_, findings::backwardReference, target->getInstanceUID());
        }
    }
    if (refused != nullptr) {
        reporter_.report(errorHandler_, *refused, target->getInstanceUID());
        refused_.push_back(reference);
    } else {
        reference->resolve(target);
    }
}

void MXFMetadataModelParser::leaveUnresolved() {
    std::set<const void*> lists;
    const auto leave = [&](const Reference& reference) {
        if (lists.insert(reference->list()).second) {
            reference->removeUnresolved();
        }
    };
    std::for_each(refused_.begin(), refused_.end(), leave);
    std::for_each(pending_.begin(), pending_.end(), [&](const auto& pending) { leave(pending.second); });
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

} // namespace bryx

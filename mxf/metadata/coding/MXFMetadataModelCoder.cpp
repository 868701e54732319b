#include "mxf/metadata/coding/MXFMetadataModelCoder.h"

#include <algorithm>
#include <list>
#include <set>
#include <typeinfo>

#include "klv/ValueCoding.h"
#include "mxf/metadata/model/MXFOrderHint.h"
#include "mxf/metadata/model/MetadataRoot.h"
#include "mxf/structure/MXFStaticTags.h"
#include "util/assertion_failure.h"

namespace bryx {

using util::require;

namespace {

/// The sets that are coded, in the order in which they are written.
using PrimedSets = std::list<MXFPrimedSet>;

/// Whether a set other than that with @p label has @p tag.
bool isTaken(const MXFMetadataModelCoder::CombinedPrimer& primer, std::uint16_t tag, const KLVKey& label) {
    return std::any_of(primer.begin(), primer.end(),
                       [&](const auto& entry) { return entry.second == tag && entry.first != label; });
}

/// Merges one entry of a set primer. See insertPrimerForSet().
void insertEntry(MXFMetadataModelCoder::CombinedPrimer& combined, const KLVKey& label, std::uint16_t tag) {
    const auto [known, isNew] = combined.emplace(label, tag);
    if (tag == 0 || (!isNew && known->second == tag)) {
        return;
    }
    require(isNew || known->second == 0, "consistent primer entry");
    if (!isTaken(combined, tag, label)) {
        known->second = tag;
    } else {
        require(tag >= mxfutil::firstDynamicTag, "consistent primer entry");
        known->second = 0;
    }
}

/// The labels that an order hint lists, and their places. Octets after the last whole label are not looked at.
std::map<KLVKey, std::size_t> readOrderHint(const std::vector<std::uint8_t>& hint) {
    klvutil::OctetReader octets(hint.data(), hint.size());
    std::map<KLVKey, std::size_t> places;
    while (octets.left() >= sizeof(KLVKey)) {
        require(places.emplace(octets.read<KLVKey>(), places.size()).second, "no repeated properties in order hint");
    }
    return places;
}

/// Lets the sets that have a property named in @p hint change places among themselves.
void applyOrderHint(PrimedSets& sets, const std::vector<std::uint8_t>& hint) {
    const std::map<KLVKey, std::size_t> places = readOrderHint(hint);
    std::vector<PrimedSets::iterator> marked;
    std::vector<std::pair<std::size_t, MXFPrimedSet>> ordered;
    for (auto set = sets.begin(); set != sets.end(); ++set) {
        for (const auto& property : set->properties) {
            const auto place = places.find(property.first);
            if (place != places.end()) {
                marked.push_back(set);
                ordered.emplace_back(place->second, *set);
                break;
            }
        }
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (std::size_t i = 0; i < marked.size(); ++i) {
        *marked[i] = std::move(ordered[i].second);
    }
}

void removePrivateProperties(MXFPrimedSet& set) {
    for (auto property = set.properties.begin(); property != set.properties.end();) {
        property = mxfutil::isPrivateLabel(property->first) ? set.properties.erase(property) : std::next(property);
    }
}

} // namespace

MXFMetadataModelHandler::Model mxfutil::rootAlone(const MXFMetadataModelHandler::Model& model,
                                                  MXFMetadataModelHandler::Model* leftOut) {
    if (model.empty()) {
        return {};
    }
    if (leftOut != nullptr) {
        leftOut->assign(model.begin() + 1, model.end());
    }
    return {model.front()};
}

MXFMetadataModelCoder::MXFMetadataModelCoder(MXFMetadataHandler& next, MXFMetadataFactory& factory)
    : next_(next), factory_(factory) {}

MXFMetadataModelCoder::~MXFMetadataModelCoder() = default;

void MXFMetadataModelCoder::startMetadata() {
    next_.startMetadata();
}

void MXFMetadataModelCoder::endMetadata() {
    next_.endMetadata();
}

void MXFMetadataModelCoder::insertPrimerForSet(CombinedPrimer& combined, const MXFMetadataFactory::SetPrimer& setPrimer,
                                               const MXFPrimedSet& set) {
    for (const auto& property : set.properties) {
        const auto entry = setPrimer.find(property.first);
        if (entry != setPrimer.end()) {
            insertEntry(combined, entry->first, entry->second);
        }
    }
}

MXFMetadataHandler::Primer MXFMetadataModelCoder::allocateDynamicTags(const CombinedPrimer& primer) {
    std::map<std::uint16_t, KLVKey> byTag;
    for (const auto& [label, tag] : primer) {
        if (tag != 0) {
            byTag.emplace(tag, label);
        }
    }
    std::uint32_t next = mxfutil::firstDynamicTag;
    for (const auto& [label, tag] : primer) {
        if (tag == 0) {
            while (byTag.count(static_cast<std::uint16_t>(next)) != 0 && next <= 0xFFFF) {
                ++next;
            }
            require(next <= 0xFFFF, "dynamic tag available");
            byTag.emplace(static_cast<std::uint16_t>(next), label);
            ++next;
        }
    }
    return {byTag.begin(), byTag.end()};
}

void MXFMetadataModelCoder::model(const Model& model) {
    require(model.size() == 1 && model.front() != nullptr && !model.front()->hasOwner(), "valid model");
    CombinedPrimer primer;
    std::set<std::pair<KLVKey, std::uint16_t>> merged;
    std::set<MXFUID> uids;
    PrimedSets sets;
    std::vector<std::uint8_t> hint;
    bool hasHint = false;
    MXFOwnedSets work{model.front()};
    while (!work.empty()) {
        const std::shared_ptr<const MetadataRoot> object = work.front();
        work.pop_front();
        const MetadataRoot& set = *object;
        const std::type_info& type = typeid(set);
        require(factory_.canCode(type), "can handle object");
        auto [coded, owned] = factory_.code(object);
        require(uids.insert(object->getInstanceUID()).second, "unique MetadataRoot.instanceUID");
        const MXFMetadataFactory::SetPrimer& setPrimer = factory_.getSetPrimer(type);
        for (const auto& property : coded.properties) {
            const auto entry = setPrimer.find(property.first);
            // Once for each label: whether its tag is taken costs a look at all others.
            if (entry != setPrimer.end() && merged.insert(*entry).second) {
                insertEntry(primer, entry->first, entry->second);
            }
        }
        const auto order = coded.properties.find(mxfutil::orderHintLabel);
        if (order != coded.properties.end()) {
            require(!hasHint, "single primed set order");
            hasHint = true;
            hint = std::move(order->second);
            coded.properties.erase(order);
        }
        for (const auto& property : coded.properties) {
            if (!mxfutil::isPrivateLabel(property.first)) {
                primer.emplace(property.first, mxfutil::staticTag(property.first));
            }
        }
        sets.push_back(std::move(coded));
        work.splice(work.begin(), owned);
    }
    if (hasHint) {
        applyOrderHint(sets, hint);
    }
    std::for_each(sets.begin(), sets.end(), removePrivateProperties);
    next_.primer(allocateDynamicTags(primer));
    for (MXFPrimedSet& set : sets) {
        next_.primedSet(set);
    }
}

} // namespace bryx

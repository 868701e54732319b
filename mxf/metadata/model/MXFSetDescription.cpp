#include "mxf/metadata/model/MXFSetDescription.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "klv/ValueCoding.h"
#include "util/assertion_failure.h"

namespace bryx {

MXFProperty::MXFProperty(const char* setName, const char* name, const MXFPropertyLabel& label, bool required, Kind kind)
    : setName_(setName), name_(name), label_(label.label()), tag_(label.tag()), required_(required), kind_(kind) {
    util::require(label_ != KLVKey{}, "property has a label");
}

MXFProperty::~MXFProperty() = default;

std::string MXFProperty::fullName() const {
    return std::string(setName_) + "." + name_;
}

void MXFProperty::failPresent() const {
    mxfutil::detail::failPresent(setName_, name_);
}

namespace {

void requireProperty(const MetadataRoot& set, const MXFProperty* property) {
    const MXFSetDescription::Properties& all = set.getDescription().properties();
    util::require(std::find(all.begin(), all.end(), property) != all.end(), "set has property");
}

} // namespace

bool MXFProperty::isKnown(const MetadataRoot& set) const {
    // What could not be read stands among the dark properties.
    return holdsValue(set) && !set.isMissing(label_) && !set.hasDarkProperty(label_);
}

bool MXFProperty::isCodable(const MetadataRoot& set) const {
    if (!isKnown(set)) {
        return set.isUnresolved(label_);
    }
    bool isInModel = true;
    if (kind_ == Kind::WeakReference) {
        mxfutil::forEachReference(getValue(set),
                                  [&](const auto& target) { isInModel = target->getTopOwner() == set.getTopOwner(); });
    }
    return isInModel;
}

bool MXFProperty::isPresent(const MetadataRoot& set) const {
    requireProperty(set, this);
    return isKnown(set) || set.isUnresolved(label_);
}

MXFPropertyValue MXFProperty::value(const MetadataRoot& set) const {
    requireProperty(set, this);
    return wholeValue(set);
}

MXFPropertyValue MXFProperty::wholeValue(const MetadataRoot& set) const {
    MXFPropertyValue value = getValue(set);
    const auto unresolved = set.unresolved_.find(label_);
    if (unresolved == set.unresolved_.end()) {
        return value;
    }
    if (std::holds_alternative<MXFScalar>(value)) {
        return MXFScalar(unresolved->second.begin()->second);
    }
    std::vector<MXFScalar> all;
    auto next = unresolved->second.begin();
    const auto end = unresolved->second.end();
    mxfutil::forEachReference(value, [&](const auto& target) {
        for (; next != end && next->first <= all.size(); ++next) {
            all.emplace_back(next->second);
        }
        all.emplace_back(target);
    });
    std::transform(next, end, std::back_inserter(all), [](const auto& reference) { return reference.second; });
    return all;
}

void MXFProperty::code(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& owned) const {
    if (!set.isUnresolved(label_)) {
        return write(set, octets, owned);
    }
    const MXFPropertyValue value = wholeValue(set);
    klvutil::OctetWriter writer(octets);
    if (const auto* const single = std::get_if<MXFScalar>(&value)) {
        return writer.write(std::get<MXFUID>(*single));
    }
    std::vector<MXFUID> uids;
    for (const MXFScalar& element : std::get<std::vector<MXFScalar>>(value)) {
        if (const auto* const target = std::get_if<std::shared_ptr<const MetadataRoot>>(&element)) {
            uids.push_back((*target)->getInstanceUID());
            owned.push_back(*target);
        } else {
            uids.push_back(std::get<MXFUID>(element));
        }
    }
    writer.write(uids);
}

void MXFProperty::noteUnresolved(MetadataRoot& set, std::size_t index, const MXFUID& uid) const {
    auto& unresolved = set.unresolved_[label_];
    unresolved.emplace_hint(unresolved.end(), index, uid);
}

void MXFProperty::release(MetadataRoot& set, const std::shared_ptr<MetadataRoot>& target) {
    set.releaseOwnership(target);
}

MXFSetDescription::MXFSetDescription(const char* name, const KLVKey& key, const std::type_info& type,
                                     Properties properties)
    : name_(name), key_(key), type_(type), properties_(std::move(properties)) {}

namespace {

/// Two sets that have to be equal, and what leads to them from the two that own them.
struct Compared {
    const MetadataRoot* a;
    const MetadataRoot* b;
    std::size_t owners; ///< where they stand in the list
    std::string step;
};

using ComparedSets = std::vector<Compared>;

/// Adds the sets that two properties own, one by one. What is before them is named by @p step.
/// @return what differs
std::string compareOwned(const MXFOwnedSets& a, const MXFOwnedSets& b, std::size_t owners, const std::string& step,
                         ComparedSets& sets) {
    if (a.size() != b.size()) {
        return step + "different number of sets";
    }
    std::size_t index = 0;
    auto other = b.begin();
    for (const auto& set : a) {
        sets.push_back({set.get(), other->get(), owners, step + "[" + std::to_string(index++) + "] "});
        ++other;
    }
    return {};
}

std::string compareDark(const MetadataRoot& a, const MetadataRoot& b, std::size_t owners, ComparedSets& sets) {
    auto other = b.beginDarkProperties();
    for (auto dark = a.beginDarkProperties(); dark != a.endDarkProperties(); ++dark, ++other) {
        if (other == b.endDarkProperties() || dark->first.octets != other->first.octets ||
            dark->second.index() != other->second.index()) {
            return toString(dark->first);
        }
        if (const auto* owned = std::get_if<std::shared_ptr<MetadataRoot>>(&dark->second)) {
            compareOwned({*owned}, {std::get<1>(other->second)}, owners, toString(dark->first), sets);
        } else if (dark->second != other->second) {
            return toString(dark->first);
        }
    }
    return other == b.endDarkProperties() ? std::string() : toString(other->first);
}

} // namespace

std::string mxfutil::firstDifference(const MetadataRoot& a, const MetadataRoot& b) {
    ComparedSets sets{{&a, &b, 0, {}}};
    // What is found of two sets themselves; the sets that they own are added.
    const auto compare = [&](const MetadataRoot& one, const MetadataRoot& other, std::size_t owners) -> std::string {
        const MXFSetDescription& description = one.getDescription();
        if (description.type() != other.getDescription().type()) {
            return std::string(description.name()) + " against " + other.getDescription().name();
        }
        if (one.getInstanceUID() != other.getInstanceUID()) {
            return "MetadataRoot.instanceUID";
        }
        for (const MXFProperty* const property : description.properties()) {
            if (property->isCodable(one) != property->isCodable(other)) {
                return property->fullName();
            }
            if (!property->isCodable(one)) {
                continue;
            }
            // References are compared as the instance UIDs that they are coded as, and then by what they lead to.
            std::vector<std::uint8_t> octets;
            std::vector<std::uint8_t> otherOctets;
            MXFOwnedSets owned;
            MXFOwnedSets otherOwned;
            property->code(one, octets, owned);
            property->code(other, otherOctets, otherOwned);
            if (octets != otherOctets) {
                return property->fullName();
            }
            if (!owned.empty() || !otherOwned.empty()) {
                std::string difference = compareOwned(owned, otherOwned, owners, property->fullName(), sets);
                if (!difference.empty()) {
                    return difference;
                }
            }
        }
        return compareDark(one, other, owners, sets);
    };
    for (std::size_t i = 0; i < sets.size(); ++i) {
        std::string difference = compare(*sets[i].a, *sets[i].b, i);
        if (!difference.empty()) {
            for (; i != 0; i = sets[i].owners) {
                difference.insert(0, sets[i].step);
            }
            return difference;
        }
    }
    return {};
}

MXFOwnedSets mxfutil::ownedSets(const MetadataRoot& set) {
    MXFOwnedSets owned;
    const auto add = [&](const auto& target) { owned.push_back(target); };
    for (auto dark = set.beginDarkProperties(); dark != set.endDarkProperties(); ++dark) {
        if (const auto* const target = std::get_if<std::shared_ptr<MetadataRoot>>(&dark->second)) {
            add(*target);
        }
    }
    for (const MXFProperty* const property : set.getDescription().properties()) {
        if (property->kind() == MXFProperty::Kind::StrongReference) {
            forEachReference(property->getValue(set), add);
        }
    }
    return owned;
}

} // namespace bryx

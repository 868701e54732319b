#include "mxf/metadata/model/MXFSetDescription.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "util/assertion_failure.h"

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
        return false;
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
    return isKnown(set) || set.unresolved_.count(label_) != 0;
}

MXFPropertyValue MXFProperty::value(const MetadataRoot& set) const {
    requireProperty(set, this);
    MXFPropertyValue value = getValue(set);
    const auto unresolved = set.unresolved_.find(label_);
    if (unresolved == set.unresolved_.end()) {
        return value;
    }
    if (std::holds_alternative<MXFScalar>(value)) {
        return MXFScalar(unresolved->second.begin()->second);
    }
    auto& elements = std::get<std::vector<MXFScalar>>(value);
    std::vector<MXFScalar> all;
    auto element = elements.begin();
    for (const auto& [index, uid] : unresolved->second) {
        while (all.size() < index && element != elements.end()) {
            all.push_back(std::move(*element++));
        }
        all.emplace_back(uid);
    }
    std::move(element, elements.end(), std::back_inserter(all));
    return all;
}

MXFSetDescription::MXFSetDescription(const char* name, const KLVKey& key, const std::type_info& type,
                                     Properties properties)
    : name_(name), key_(key), type_(type), properties_(std::move(properties)) {}

namespace {

using Targets = std::vector<std::shared_ptr<const MetadataRoot>>;

Targets targets(const MXFPropertyValue& value) {
    Targets result;
    mxfutil::forEachReference(value, [&](const auto& target) { result.push_back(target); });
    return result;
}

/// Compares the sets that two properties own, one by one.
std::string firstDifference(const Targets& a, const Targets& b) {
    if (a.size() != b.size()) {
        return "different number of sets";
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::string difference = mxfutil::firstDifference(*a[i], *b[i]);
        if (!difference.empty()) {
            return "[" + std::to_string(i) + "] " + difference;
        }
    }
    return {};
}

std::string firstDarkDifference(const MetadataRoot& a, const MetadataRoot& b) {
    auto other = b.beginDarkProperties();
    for (auto dark = a.beginDarkProperties(); dark != a.endDarkProperties(); ++dark, ++other) {
        if (other == b.endDarkProperties() || dark->first.octets != other->first.octets ||
            dark->second.index() != other->second.index()) {
            return toString(dark->first);
        }
        if (const auto* owned = std::get_if<std::shared_ptr<MetadataRoot>>(&dark->second)) {
            std::string difference = firstDifference({*owned}, {std::get<1>(other->second)});
            if (!difference.empty()) {
                return toString(dark->first) + difference;
            }
        } else if (dark->second != other->second) {
            return toString(dark->first);
        }
    }
    return other == b.endDarkProperties() ? std::string() : toString(other->first);
}

} // namespace

std::string mxfutil::firstDifference(const MetadataRoot& a, const MetadataRoot& b) {
    const MXFSetDescription& description = a.getDescription();
    if (description.type() != b.getDescription().type()) {
        return std::string(description.name()) + " against " + b.getDescription().name();
    }
    if (a.getInstanceUID() != b.getInstanceUID()) {
        return "MetadataRoot.instanceUID";
    }
    for (const MXFProperty* const property : description.properties()) {
        if (property->isCodable(a) != property->isCodable(b)) {
            return property->fullName();
        }
        if (!property->isCodable(a)) {
            continue;
        }
        // References are compared as the instance UIDs that they are coded as, and then by what they lead to.
        std::vector<std::uint8_t> octets;
        std::vector<std::uint8_t> otherOctets;
        MXFOwnedSets owned;
        property->write(a, octets, owned);
        property->write(b, otherOctets, owned);
        if (octets != otherOctets) {
            return property->fullName();
        }
        if (property->kind() == MXFProperty::Kind::StrongReference) {
            std::string difference = ::firstDifference(targets(property->getValue(a)), targets(property->getValue(b)));
            if (!difference.empty()) {
                return property->fullName() + difference;
            }
        }
    }
    return firstDarkDifference(a, b);
}

#include "mxf/metadata/model/MetadataRoot.h"

#include <algorithm>

#include "util/assertion_failure.h"
#include "util/fresh_uuid.h"

using util::require;

namespace {

/// The last set from owner to owner; @p set itself is not looked at.
template <class Set>
std::shared_ptr<Set> topOwner(std::shared_ptr<Set> set) {
    while (std::shared_ptr<Set> owner = set->getOwner()) {
        set = std::move(owner);
    }
    return set;
}

} // namespace

MetadataRoot::MetadataRoot() : instanceUID_{util::freshUUID().octets} {}

MetadataRoot::~MetadataRoot() = default;

const MetadataRoot::DarkValue& MetadataRoot::darkValue(const KLVKey& key) const {
    const auto at = dark_.find(key);
    require(at != dark_.end(), "property is present");
    return at->second;
}

void MetadataRoot::setDarkProperty(const KLVKey& key, const std::vector<std::uint8_t>& value) {
    swapOwnership(key, nullptr);
    dark_[key] = value;
}

const std::vector<std::uint8_t>& MetadataRoot::getDarkProperty(const KLVKey& key) const {
    const auto* const octets = std::get_if<std::vector<std::uint8_t>>(&darkValue(key));
    require(octets != nullptr, "property is a non-reference value");
    return *octets;
}

bool MetadataRoot::hasDarkProperty(const KLVKey& key) const {
    return dark_.find(key) != dark_.end();
}

void MetadataRoot::removeDarkProperty(const KLVKey& key) {
    swapOwnership(key, nullptr);
    dark_.erase(key);
}

bool MetadataRoot::isReferenceDarkProperty(const KLVKey& key) const {
    return std::holds_alternative<std::shared_ptr<MetadataRoot>>(darkValue(key));
}

void MetadataRoot::setReferenceDarkProperty(const KLVKey& key, const std::shared_ptr<MetadataRoot>& target) {
    require(target != nullptr, "MetadataRoot.referenceDarkProperty is present");
    swapOwnership(key, target);
    dark_[key] = target;
}

std::shared_ptr<MetadataRoot> MetadataRoot::getReferenceDarkProperty(const KLVKey& key) const {
    const auto* const target = std::get_if<std::shared_ptr<MetadataRoot>>(&darkValue(key));
    require(target != nullptr, "property is a reference");
    return *target;
}

bool MetadataRoot::isMissing(const KLVKey& label) const noexcept {
    return std::find(missing_.begin(), missing_.end(), label) != missing_.end();
}

std::vector<MXFUID> MetadataRoot::getUnresolvedReferences(const KLVKey& label) const {
    std::vector<MXFUID> uids;
    const auto at = unresolved_.find(label);
    if (at != unresolved_.end()) {
        for (const auto& reference : at->second) {
            uids.push_back(reference.second);
        }
    }
    return uids;
}

void MetadataRoot::forgetReading(const KLVKey& label) {
    unresolved_.erase(label);
    if (dark_.find(label) != dark_.end()) {
        removeDarkProperty(label);
    }
    missing_.erase(std::remove(missing_.begin(), missing_.end(), label), missing_.end());
}

std::streampos MetadataRoot::present(const boost::optional<std::streampos>& position) {
    require(position.has_value(), "streampos is present");
    return *position;
}

std::shared_ptr<MetadataRoot> MetadataRoot::getTopOwner() {
    return topOwner<MetadataRoot>(shared_from_this());
}

std::shared_ptr<const MetadataRoot> MetadataRoot::getTopOwner() const {
    return topOwner<const MetadataRoot>(shared_from_this());
}

void MetadataRoot::takeOwnership(const std::shared_ptr<MetadataRoot>& added) {
    swapOwnership(nullptr, added);
}

void MetadataRoot::releaseOwnership(const std::shared_ptr<MetadataRoot>& removed) {
    swapOwnership(removed, nullptr);
}

void MetadataRoot::swapOwnership(const std::shared_ptr<MetadataRoot>& removed,
                                 const std::shared_ptr<MetadataRoot>& added) {
    require(removed == nullptr || removed->getOwner().get() == this, "current owner is this");
    require(added == nullptr || !added->hasOwner(), "object is not owned");
    require(added == nullptr || added != getTopOwner(), "object does not own this");
    if (removed != nullptr) {
        removed->owner_.reset();
    }
    if (added != nullptr) {
        added->owner_ = shared_from_this();
    }
}

void MetadataRoot::swapOwnership(const KLVKey& key, const std::shared_ptr<MetadataRoot>& added) {
    const auto at = dark_.find(key);
    const auto* const removed = at == dark_.end() ? nullptr : std::get_if<std::shared_ptr<MetadataRoot>>(&at->second);
    swapOwnership(removed == nullptr ? nullptr : *removed, added);
}

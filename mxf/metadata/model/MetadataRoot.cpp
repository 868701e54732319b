#include "mxf/metadata/model/MetadataRoot.h"

#include <algorithm>
#include <new>
#include <utility>

#include "mxf/metadata/model/MXFSetDescription.h"
#include "util/assertion_failure.h"
#include "util/fresh_uuid.h"

namespace bryx {

using util::require;

MetadataRoot::MetadataRoot() : instanceUID_{util::freshUUID().octets} {}

MetadataRoot::~MetadataRoot() = default;

void mxfutil::detail::endSet(MetadataRoot& set) noexcept {
    struct Waiting {
        MetadataRoot* set;
        std::weak_ptr<MetadataRoot> storage;
    };
    thread_local std::vector<Waiting>* waiting = nullptr;
    if (waiting != nullptr) {
        // What owned this set is ending, and would be on the stack meanwhile.
        try {
            waiting->push_back({&set, set.weak_from_this()});
            return;
        } catch (const std::bad_alloc&) {
            return set.~MetadataRoot();
        }
    }
    std::vector<Waiting> ending;
    waiting = &ending;
    set.~MetadataRoot();
    while (!ending.empty()) {
        const Waiting next = std::move(ending.back());
        ending.pop_back();
        next.set->~MetadataRoot();
    }
    waiting = nullptr;
}

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

MetadataRoot::Place MetadataRoot::place() const noexcept {
    Place place{this, 0};
    while (place.top->hasOwner()) {
        place.top = place.top->ownerAddress_;
        ++place.owners;
    }
    return place;
}

std::shared_ptr<MetadataRoot> MetadataRoot::getTopOwner() {
    return std::const_pointer_cast<MetadataRoot>(place().top->shared_from_this());
}

std::shared_ptr<const MetadataRoot> MetadataRoot::getTopOwner() const {
    return place().top->shared_from_this();
}

unsigned MetadataRoot::levels() const {
    if (levels_ != unknownLevels) {
        return levels_;
    }
    unsigned levels = 0;
    MXFOwnedSets level = mxfutil::ownedSets(*this);
    while (!level.empty()) {
        ++levels;
        MXFOwnedSets below;
        for (const auto& set : level) {
            below.splice(below.end(), mxfutil::ownedSets(*set));
        }
        level = std::move(below);
    }
    return levels;
}

MetadataRoot::OwningFault MetadataRoot::owningFault(const MetadataRoot& target) const {
    return owningFault(place(), target);
}

MetadataRoot::OwningFault MetadataRoot::owningFault(const Place& place, const MetadataRoot& target) {
    if (target.hasOwner()) {
        return OwningFault::IsOwned;
    }
    if (&target == place.top) {
        return OwningFault::OwnsThis;
    }
    return place.owners + 1 + target.levels() > maxLevels ? OwningFault::TooDeep : OwningFault::None;
}

void MetadataRoot::takeOwnership(const std::shared_ptr<MetadataRoot>& added) {
    swapOwnership(nullptr, added);
}

void MetadataRoot::releaseOwnership(const std::shared_ptr<MetadataRoot>& removed) {
    swapOwnership(removed, nullptr);
}

void MetadataRoot::swapOwnership(const std::shared_ptr<MetadataRoot>& removed,
                                 const std::shared_ptr<MetadataRoot>& added) {
    require(removed == nullptr || (removed->hasOwner() && removed->ownerAddress_ == this), "current owner is this");
    if (removed == nullptr && added == nullptr) {
        return;
    }
    const Place place = this->place();
    MetadataRoot& top = const_cast<MetadataRoot&>(*place.top);
    unsigned levels = top.levels_;
    std::weak_ptr<MetadataRoot> self;
    if (added != nullptr) {
        const OwningFault fault = owningFault(place, *added);
        require(fault != OwningFault::IsOwned, "object is not owned");
        require(fault != OwningFault::OwnsThis, "object does not own this");
        require(fault != OwningFault::TooDeep, "ownership has at most 256 levels");
        self = shared_from_this();
        if (levels != unknownLevels) {
            levels = std::max(levels, place.owners + 1 + added->levels());
        }
    }
    if (removed != nullptr) {
        removed->owner_.reset();
        levels = unknownLevels;
    }
    top.levels_ = levels;
    if (added != nullptr) {
        added->owner_ = std::move(self);
        added->ownerAddress_ = this;
        added->levels_ = unknownLevels;
    }
}

void MetadataRoot::swapOwnership(const KLVKey& key, const std::shared_ptr<MetadataRoot>& added) {
    const auto at = dark_.find(key);
    const auto* const removed = at == dark_.end() ? nullptr : std::get_if<std::shared_ptr<MetadataRoot>>(&at->second);
    swapOwnership(removed == nullptr ? nullptr : *removed, added);
}

} // namespace bryx

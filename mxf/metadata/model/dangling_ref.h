#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "mxf/metadata/model/MetadataRoot.h"
#include "util/Api.h"
#include "util/assertion_failure.h"

namespace bryx {

/// A reference that has been read, and whose target is not known yet.
///
/// Until it is resolved, the referencing set has the instance UID of the target among its unresolved references, and an
/// empty pointer where the target will be.
class BRYX_API dangling_ref_base {
public:
    virtual ~dangling_ref_base();

    /// Whether the referencing set will own the target.
    virtual bool isStrong() const = 0;

    /// Stores @p target in the property, and makes the referencing set its owner if the reference is strong. Does
    /// nothing if the reference has been resolved, or if its property has been set since it was read. Requires "object is
    /// of the class referred to", and of a strong reference what MetadataRoot::swapOwnership() does.
    virtual void resolve(const std::shared_ptr<MetadataRoot>& target) = 0;

    /// Whether @p target is of the class that the reference may lead to.
    virtual bool accepts(const MetadataRoot& target) const = 0;

    /// The set that has the reference.
    virtual const std::shared_ptr<MetadataRoot>& referencing() const noexcept = 0;

    /// The list that the reference is an element of, to tell one list from another; null if it stands alone.
    virtual const void* list() const noexcept = 0;

    /// Takes all elements that have not been resolved out of that list. They cannot be resolved afterwards.
    virtual void removeUnresolved() = 0;

protected:
    /// @p target as a set of the class that the reference may lead to, which it must be.
    template <class Target>
    static std::shared_ptr<Target> required(const std::shared_ptr<MetadataRoot>& target) {
        auto typed = std::dynamic_pointer_cast<Target>(target);
        util::require(typed != nullptr, "object is of the class referred to");
        return typed;
    }

    /// Whether the reference at @p index of a property of @p set has not been resolved, nor the property been set.
    static bool isWaiting(const MetadataRoot& set, const KLVKey& label, std::size_t index);
    static bool isAnyWaiting(const MetadataRoot& set, const KLVKey& label) { return set.isUnresolved(label); }
    static void wasResolved(MetadataRoot& set, const KLVKey& label, std::size_t index);

    static void takeOwnership(MetadataRoot& owner, const std::shared_ptr<MetadataRoot>& target) {
        owner.takeOwnership(target);
    }
};

/// A pending reference that stands alone: a member of @p Owner.
template <class Owner, class Target>
class dangling_ref_t : public dangling_ref_base {
public:
    /// A strong reference.
    dangling_ref_t(std::shared_ptr<Owner> owner, const KLVKey& label, std::shared_ptr<Target> Owner::*member)
        : owner_(std::move(owner)), label_(label), strong_(member) {}
    /// A weak reference.
    dangling_ref_t(std::shared_ptr<Owner> owner, const KLVKey& label, std::weak_ptr<Target> Owner::*member)
        : owner_(std::move(owner)), label_(label), weak_(member) {}

    bool isStrong() const override { return strong_ != nullptr; }
    void resolve(const std::shared_ptr<MetadataRoot>& target) override {
        const auto typed = required<Target>(target);
        if (!isWaiting(*owner_, label_, 0)) {
            return;
        }
        auto& owner = static_cast<Owner&>(*owner_);
        if (strong_ != nullptr) {
            takeOwnership(owner, typed);
            owner.*strong_ = typed;
        } else {
            owner.*weak_ = typed;
        }
        wasResolved(owner, label_, 0);
    }
    bool accepts(const MetadataRoot& target) const override { return dynamic_cast<const Target*>(&target) != nullptr; }
    const std::shared_ptr<MetadataRoot>& referencing() const noexcept override { return owner_; }
    const void* list() const noexcept override { return nullptr; }
    void removeUnresolved() override {}

private:
    std::shared_ptr<MetadataRoot> owner_;
    KLVKey label_;
    std::shared_ptr<Target> Owner::*strong_ = nullptr;
    std::weak_ptr<Target> Owner::*weak_ = nullptr;
};

/// A pending strong reference that is an element of a list, whose elements are all there and empty until they are
/// resolved, or taken out by a change of the list.
template <class Owner, class Target>
class dangling_vector_ref_t : public dangling_ref_base {
public:
    /// @param elements of @p owner, which keeps them
    dangling_vector_ref_t(std::shared_ptr<Owner> owner, const KLVKey& label,
                          std::vector<std::shared_ptr<Target>>& elements, std::size_t index)
        : owner_(std::move(owner)), label_(label), elements_(elements), index_(index) {}

    bool isStrong() const override { return true; }
    void resolve(const std::shared_ptr<MetadataRoot>& target) override {
        const auto typed = required<Target>(target);
        if (isWaiting(*owner_, label_, index_) && index_ < elements_.size() && elements_[index_] == nullptr) {
            takeOwnership(*owner_, typed);
            elements_[index_] = typed;
            wasResolved(*owner_, label_, index_);
        }
    }
    bool accepts(const MetadataRoot& target) const override { return dynamic_cast<const Target*>(&target) != nullptr; }
    const std::shared_ptr<MetadataRoot>& referencing() const noexcept override { return owner_; }
    const void* list() const noexcept override { return &elements_; }
    void removeUnresolved() override {
        if (isAnyWaiting(*owner_, label_)) {
            elements_.erase(std::remove(elements_.begin(), elements_.end(), nullptr), elements_.end());
        }
    }

private:
    std::shared_ptr<MetadataRoot> owner_;
    KLVKey label_;
    std::vector<std::shared_ptr<Target>>& elements_;
    std::size_t index_;
};

/// A pending reference in a dark property, which is strong always and may lead to any set. Until it is resolved, the
/// property has the octets that were read.
template <class Owner>
class dangling_dark_ref_t : public dangling_ref_base {
public:
    dangling_dark_ref_t(std::shared_ptr<Owner> owner, const KLVKey& key) : owner_(std::move(owner)), key_(key) {}

    bool isStrong() const override { return true; }
    void resolve(const std::shared_ptr<MetadataRoot>& target) override {
        required<MetadataRoot>(target);
        if (owner_->hasDarkProperty(key_) && !owner_->isReferenceDarkProperty(key_)) {
            owner_->setReferenceDarkProperty(key_, target);
        }
    }
    bool accepts(const MetadataRoot& /*target*/) const override { return true; }
    const std::shared_ptr<MetadataRoot>& referencing() const noexcept override { return owner_; }
    const void* list() const noexcept override { return nullptr; }
    void removeUnresolved() override {}

private:
    std::shared_ptr<MetadataRoot> owner_;
    KLVKey key_;
};

} // namespace bryx

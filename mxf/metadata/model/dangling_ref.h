#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "mxf/metadata/model/MetadataRoot.h"
#include "util/Api.h"

/// A reference that has been read, and whose target is not known yet.
class BRYX_API dangling_ref_base {
public:
    virtual ~dangling_ref_base();

    /// Whether the referencing set will own the target.
    virtual bool isStrong() const = 0;

    /// Stores @p target in the property, and makes the referencing set its owner if the reference is strong. Requires
    /// accepts(target), and of a strong reference what MetadataRoot::swapOwnership() does.
    virtual void resolve(const std::shared_ptr<MetadataRoot>& target) = 0;

    /// Whether @p target is of the class that the reference may lead to.
    virtual bool accepts(const MetadataRoot& target) const = 0;

    /// The set that has the reference.
    virtual const std::shared_ptr<MetadataRoot>& referencing() const noexcept = 0;

    /// Notes on the referencing set that the reference leads to @p uid and has not been resolved.
    virtual void leaveUnresolved(const MXFUID& uid) = 0;

    /// The list that the reference is an element of, to tell one list from another; null if it stands alone.
    virtual const void* list() const noexcept = 0;

    /// Takes all elements that have not been resolved out of that list.
    virtual void removeUnresolved() = 0;

protected:
    /// Notes that the reference at @p index of a property leads to @p uid.
    static void noteUnresolved(MetadataRoot& owner, const KLVKey& label, std::size_t index, const MXFUID& uid) {
        owner.unresolved_[label][index] = uid;
    }

    static void takeOwnership(MetadataRoot& owner, const std::shared_ptr<MetadataRoot>& target) {
        owner.takeOwnership(target);
    }
};

/// The pending references of a set, by the instance UIDs of their targets.
using MXFPendingReferences = std::multimap<MXFUID, std::shared_ptr<dangling_ref_base>>;

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
        const auto typed = std::dynamic_pointer_cast<Target>(target);
        auto& owner = static_cast<Owner&>(*owner_);
        if (strong_ != nullptr) {
            takeOwnership(owner, typed);
            owner.*strong_ = typed;
        } else {
            owner.*weak_ = typed;
        }
    }
    bool accepts(const MetadataRoot& target) const override { return dynamic_cast<const Target*>(&target) != nullptr; }
    const std::shared_ptr<MetadataRoot>& referencing() const noexcept override { return owner_; }
    void leaveUnresolved(const MXFUID& uid) override { noteUnresolved(*owner_, label_, 0, uid); }
    const void* list() const noexcept override { return nullptr; }
    void removeUnresolved() override {}

private:
    std::shared_ptr<MetadataRoot> owner_;
    KLVKey label_;
    std::shared_ptr<Target> Owner::*strong_ = nullptr;
    std::weak_ptr<Target> Owner::*weak_ = nullptr;
};

/// A pending strong reference that is an element of a list, whose elements are all there and empty until they are
/// resolved.
template <class Owner, class Target>
class dangling_vector_ref_t : public dangling_ref_base {
public:
    /// @param elements of @p owner, which keeps them
    dangling_vector_ref_t(std::shared_ptr<Owner> owner, const KLVKey& label,
                          std::vector<std::shared_ptr<Target>>& elements, std::size_t index)
        : owner_(std::move(owner)), label_(label), elements_(elements), index_(index) {}

    bool isStrong() const override { return true; }
    void resolve(const std::shared_ptr<MetadataRoot>& target) override {
        takeOwnership(*owner_, target);
        elements_[index_] = std::dynamic_pointer_cast<Target>(target);
    }
    bool accepts(const MetadataRoot& target) const override { return dynamic_cast<const Target*>(&target) != nullptr; }
    const std::shared_ptr<MetadataRoot>& referencing() const noexcept override { return owner_; }
    void leaveUnresolved(const MXFUID& uid) override { noteUnresolved(*owner_, label_, index_, uid); }
    const void* list() const noexcept override { return &elements_; }
    void removeUnresolved() override {
        elements_.erase(std::remove(elements_.begin(), elements_.end(), nullptr), elements_.end());
    }

private:
    std::shared_ptr<MetadataRoot> owner_;
    KLVKey label_;
    std::vector<std::shared_ptr<Target>>& elements_;
    std::size_t index_;
};

/// A pending reference in a dark property, which is strong always and may lead to any set.
template <class Owner>
class dangling_dark_ref_t : public dangling_ref_base {
public:
    dangling_dark_ref_t(std::shared_ptr<Owner> owner, const KLVKey& key) : owner_(std::move(owner)), key_(key) {}

    bool isStrong() const override { return true; }
    void resolve(const std::shared_ptr<MetadataRoot>& target) override {
        owner_->setReferenceDarkProperty(key_, target);
    }
    bool accepts(const MetadataRoot& /*target*/) const override { return true; }
    const std::shared_ptr<MetadataRoot>& referencing() const noexcept override { return owner_; }
    void leaveUnresolved(const MXFUID& /*uid*/) override {} // the property keeps its octets
    const void* list() const noexcept override { return nullptr; }
    void removeUnresolved() override {}

private:
    std::shared_ptr<MetadataRoot> owner_;
    KLVKey key_;
};

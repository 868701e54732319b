#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ios>
#include <map>
#include <memory>
#include <variant>
#include <vector>

#include <boost/optional.hpp>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "mxf/metadata/model/MXFSetDeclaration.h"
#include "util/Api.h"

namespace bryx {

/// A set of header metadata (ST 377-1 §9): the base of the classes of all sets.
///
/// A model is a tree. A set owns the sets to which it has strong references, and a set has one owner at a time; the
/// root of the tree, usually a Preface, has none. An owner holds its sets by shared pointer, a set its owner by weak
/// pointer only, so that the whole tree goes with the last pointer to its root. Weak references lead to sets without
/// owning them. A root has at most maxLevels levels of sets below it, and a tree goes without recursion.
///
/// Properties that a class does not know are kept as dark properties, exactly as they were read, and written back.
///
/// Sets are made by the create() of their class and held by std::shared_ptr. They are not synchronised. Every failed
/// requirement throws util::assertion_failure and leaves the model as it was.
class BRYX_API MetadataRoot : public std::enable_shared_from_this<MetadataRoot> {
public:
    /// The value of a dark property: octets, or the set that it refers to, where that is known of it.
    using DarkValue = std::variant<std::vector<std::uint8_t>, std::shared_ptr<MetadataRoot>>;
    using DarkProperties = std::map<KLVKey, DarkValue>;

    /// The name of the class in messages.
    static constexpr const char* className = "MetadataRoot";
    /// Whether sets of the class may also be coded with BER item lengths, as those that hold long texts.
    static constexpr bool allowsBERLengths = false;

    /// The levels of sets that a root can have below it.
    static constexpr unsigned maxLevels = 256;

    virtual ~MetadataRoot();
    MetadataRoot(const MetadataRoot&) = delete;
    MetadataRoot& operator=(const MetadataRoot&) = delete;

    /// The class of the set: its name, its key and its properties, for working with sets whatever class they have.
    virtual const MXFSetDescription& getDescription() const = 0;

    /// Identifies the set in its file; a fresh UUID unless set.
    const MXFUID& getInstanceUID() const noexcept { return instanceUID_; }
    void setInstanceUID(const MXFUID& instanceUID) noexcept { instanceUID_ = instanceUID; }

    /// Sets a dark property to octets. A set that the property referred to is released.
    void setDarkProperty(const KLVKey& key, const std::vector<std::uint8_t>& value);
    /// Requires "property is present" and "property is a non-reference value".
    const std::vector<std::uint8_t>& getDarkProperty(const KLVKey& key) const;
    bool hasDarkProperty(const KLVKey& key) const;
    /// Removes a dark property, if there is one, and releases a set that it refers to.
    void removeDarkProperty(const KLVKey& key);

    /// Whether a dark property refers to a set. Requires "property is present".
    bool isReferenceDarkProperty(const KLVKey& key) const;
    /// Sets a dark property to a strong reference. Requires what every new strong reference does: "object is not owned",
    /// "object does not own this" and "ownership has at most 256 levels".
    void setReferenceDarkProperty(const KLVKey& key, const std::shared_ptr<MetadataRoot>& target);
    /// The set that a dark property refers to. Requires "property is present" and "property is a reference".
    std::shared_ptr<MetadataRoot> getReferenceDarkProperty(const KLVKey& key) const;

    /// All dark properties, in the order of their keys.
    DarkProperties::const_iterator beginDarkProperties() const noexcept { return dark_.begin(); }
    DarkProperties::const_iterator endDarkProperties() const noexcept { return dark_.end(); }

    /// Whether a required property was missing where the set was read, and has not been set since.
    bool isMissing(const KLVKey& label) const noexcept;

    /// Where the references of a property lead that could not be resolved where the set was read, if it has not been
    /// set since: the instance UIDs of the targets, in the order of the references. They are coded as they were read.
    std::vector<MXFUID> getUnresolvedReferences(const KLVKey& label) const;

    /// Where the set was read: the stream position of the first octet of its key, and of the octet after it. Each is
    /// absent in a set that was not read; getting it then fails the requirement "streampos is present".
    void setStartStreampos(std::streampos position) { start_ = position; }
    std::streampos getStartStreampos() const { return present(start_); }
    bool hasStartStreampos() const noexcept { return start_.has_value(); }
    void removeStartStreampos() noexcept { start_ = boost::none; }
    void setEndStreampos(std::streampos position) { end_ = position; }
    std::streampos getEndStreampos() const { return present(end_); }
    bool hasEndStreampos() const noexcept { return end_.has_value(); }
    void removeEndStreampos() noexcept { end_ = boost::none; }

    /// The set that has the strong reference to this one; empty for a root, and when the owner is gone.
    std::shared_ptr<MetadataRoot> getOwner() { return owner_.lock(); }
    std::shared_ptr<const MetadataRoot> getOwner() const { return owner_.lock(); }
    bool hasOwner() const noexcept { return !owner_.expired(); }
    /// The last set that is reached from owner to owner; this set itself if it has none.
    std::shared_ptr<MetadataRoot> getTopOwner();
    std::shared_ptr<const MetadataRoot> getTopOwner() const;

    /// What forbids that a set gets a strong reference to another.
    enum class OwningFault : std::uint8_t {
        None,
        IsOwned,  ///< the other set has an owner
        OwnsThis, ///< the other set owns this one, or one of its owners, or is this one
        TooDeep   ///< there would be more than maxLevels levels below the root
    };
    /// What forbids that this set gets a strong reference to @p target.
    OwningFault owningFault(const MetadataRoot& target) const;

protected:
    MetadataRoot();

    /// This set gets a strong reference to @p added. Requires "object is not owned", "object does not own this" and
    /// "ownership has at most 256 levels".
    void takeOwnership(const std::shared_ptr<MetadataRoot>& added);
    /// This set gives up its strong reference to @p removed. Requires "current owner is this".
    void releaseOwnership(const std::shared_ptr<MetadataRoot>& removed);
    /// Both at once, after all requirements have been checked. Either set may be empty.
    void swapOwnership(const std::shared_ptr<MetadataRoot>& removed, const std::shared_ptr<MetadataRoot>& added);

    // What the accessors of derived classes do with their members.

    template <class Member, class Value>
    void assign(Member& member, const Value& value) {
        member = value;
    }
    template <class Target>
    void assign(std::shared_ptr<Target>& member, const std::shared_ptr<Target>& target) {
        swapOwnership(member, target);
        member = target;
    }
    template <class Target>
    void clear(boost::optional<std::vector<std::shared_ptr<Target>>>& member) {
        while (!mxfutil::detail::elements(member).empty()) {
            removeElement(member, member->size() - 1);
        }
        member = boost::none;
    }
    template <class Target>
    void clear(std::shared_ptr<Target>& member) {
        assign(member, std::shared_ptr<Target>());
    }
    template <class Target>
    void clear(std::weak_ptr<Target>& member) {
        member.reset();
    }
    template <class Member, class Target>
    void insertElement(Member& member, std::size_t index, const std::shared_ptr<Target>& target) {
        takeOwnership(target);
        try {
            auto& list = mxfutil::detail::writableElements(member);
            list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), target);
        } catch (...) {
            releaseOwnership(target);
            throw;
        }
    }
    template <class Member>
    void removeElement(Member& member, std::size_t index) {
        auto& list = mxfutil::detail::writableElements(member);
        releaseOwnership(list[index]);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
    }

    /// A property has been set: what was kept of it because it could not be read, or was missing, is past.
    void wasSet(const MXFPropertyLabel& property) {
        if (!dark_.empty() || !missing_.empty() || !unresolved_.empty()) {
            forgetReading(property.label());
        }
    }
    /// The same of a list, whose elements that wait for their targets are past as well.
    template <class Member>
    void wasChanged(Member& member, const MXFPropertyLabel& property) {
        if (!unresolved_.empty() && isUnresolved(property.label())) {
            auto& list = mxfutil::detail::writableElements(member);
            list.erase(std::remove(list.begin(), list.end(), nullptr), list.end());
        }
        wasSet(property);
    }

private:
    friend class MetadataRootFactory; // which notes what it could not read
    friend class dangling_ref_base;   // which gives references their targets
    friend class MXFProperty;         // which notes and shows what is not resolved

    /// UIDs by the places of the references in their property.
    using UnresolvedReferences = std::map<std::size_t, MXFUID>;

    struct Place {
        const MetadataRoot* top;
        unsigned owners; ///< how many there are up to the top one
    };

    Place place() const noexcept;
    /// How many levels of sets this one owns.
    unsigned levels() const;
    static OwningFault owningFault(const Place& place, const MetadataRoot& target);

    bool isUnresolved(const KLVKey& label) const { return unresolved_.count(label) != 0; }
    void setMissing(const KLVKey& label) { missing_.push_back(label); }
    void forgetReading(const KLVKey& label);
    void swapOwnership(const KLVKey& key, const std::shared_ptr<MetadataRoot>& added);
    const DarkValue& darkValue(const KLVKey& key) const;
    static std::streampos present(const boost::optional<std::streampos>& position);

    /// Levels that have to be counted when they are asked for.
    static constexpr unsigned unknownLevels = ~0U;

    std::weak_ptr<MetadataRoot> owner_;
    MetadataRoot* ownerAddress_ = nullptr; ///< what owner_ leads to, unless that is gone
    unsigned levels_ = 0;                  ///< of sets that this one owns; unknown when it has or had an owner
    MXFUID instanceUID_;
    DarkProperties dark_;
    std::vector<KLVKey> missing_; ///< labels of required properties
    std::map<KLVKey, UnresolvedReferences> unresolved_;
    boost::optional<std::streampos> start_;
    boost::optional<std::streampos> end_;
};

} // namespace bryx

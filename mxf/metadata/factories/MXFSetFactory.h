#pragma once

#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "klv/ValueCoding.h"
#include "mxf/metadata/factories/MetadataRootFactory.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "util/assertion_failure.h"

/// @file
/// What follows from the declaration of a set: its factory and its description. Needed where sets of an application's
/// own are made; those of the library come with their factories, such as PrefaceFactory.

namespace mxfutil::detail {

template <class Target>
using SharedList = std::vector<std::shared_ptr<Target>>;

/// The UIDs of the targets of a list of references.
template <class Target>
std::vector<MXFUID> instanceUIDs(const SharedList<Target>& targets) {
    std::vector<MXFUID> uids;
    uids.reserve(targets.size());
    for (const auto& target : targets) {
        uids.push_back(target->getInstanceUID());
    }
    return uids;
}

/// A property whose values are of type @p T: the member is a T, or an optional one.
template <class T, class Member>
class ValueProperty final : public MXFProperty {
public:
    ValueProperty(const char* setName, const char* name, const MXFPropertyLabel& label, bool required,
                  Member MetadataRoot::*member)
        : MXFProperty(setName, name, label, required, Kind::Value), member_(member) {}

private:
    static constexpr bool isOptional = !std::is_same_v<T, Member>;

    bool holdsValue(const MetadataRoot& set) const override {
        if constexpr (isOptional) {
            return (set.*member_).has_value();
        } else {
            return true;
        }
    }
    MXFPropertyValue getValue(const MetadataRoot& set) const override {
        if constexpr (isOptional) {
            return toPropertyValue(set.*member_ ? *(set.*member_) : T{});
        } else {
            return toPropertyValue(set.*member_);
        }
    }
    void read(const std::shared_ptr<MetadataRoot>& set, const std::vector<std::uint8_t>& octets,
              MXFPendingReferences& /*pending*/) const override {
        (*set).*member_ = klvutil::readValue<T>(octets);
    }
    void write(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& /*owned*/) const override {
        if constexpr (isOptional) {
            klvutil::OctetWriter(octets).write(*(set.*member_));
        } else {
            klvutil::OctetWriter(octets).write(set.*member_);
        }
    }

    Member MetadataRoot::*member_;
};

template <class Target>
std::shared_ptr<Target> targetOf(const std::shared_ptr<Target>& member) {
    return member;
}
template <class Target>
std::shared_ptr<Target> targetOf(const std::weak_ptr<Target>& member) {
    return member.lock();
}

/// A single reference: the member is a shared pointer, or a weak one.
template <class Target, class Member>
class ReferenceProperty final : public MXFProperty {
public:
    ReferenceProperty(const char* setName, const char* name, const MXFPropertyLabel& label, bool required,
                      Member MetadataRoot::*member)
        : MXFProperty(setName, name, label, required, isStrong ? Kind::StrongReference : Kind::WeakReference),
          member_(member) {}

private:
    static constexpr bool isStrong = std::is_same_v<Member, std::shared_ptr<Target>>;

    bool holdsValue(const MetadataRoot& set) const override { return targetOf(set.*member_) != nullptr; }
    MXFPropertyValue getValue(const MetadataRoot& set) const override {
        return MXFScalar(std::shared_ptr<const MetadataRoot>(targetOf(set.*member_)));
    }
    void read(const std::shared_ptr<MetadataRoot>& set, const std::vector<std::uint8_t>& octets,
              MXFPendingReferences& pending) const override {
        const auto uid = klvutil::readValue<MXFUID>(octets);
        if constexpr (isStrong) {
            release(*set, (*set).*member_);
        }
        ((*set).*member_).reset();
        noteUnresolved(*set, 0, uid);
        pending.emplace(uid, std::make_shared<dangling_ref_t<MetadataRoot, Target>>(set, label(), member_));
    }
    void write(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& owned) const override {
        const std::shared_ptr<Target> target = targetOf(set.*member_);
        klvutil::OctetWriter(octets).write(target->getInstanceUID());
        if (isStrong) {
            owned.push_back(target);
        }
    }

    Member MetadataRoot::*member_;
};

/// References to sets that are owned: the member is a vector of shared pointers, or an optional one.
template <class Target, class Member>
class ReferencesProperty final : public MXFProperty {
public:
    ReferencesProperty(const char* setName, const char* name, const MXFPropertyLabel& label, bool required,
                       Member MetadataRoot::*member)
        : MXFProperty(setName, name, label, required, Kind::StrongReference), member_(member) {}

private:
    bool holdsValue(const MetadataRoot& set) const override {
        if constexpr (std::is_same_v<Member, SharedList<Target>>) {
            return true;
        } else {
            return (set.*member_).has_value();
        }
    }
    MXFPropertyValue getValue(const MetadataRoot& set) const override {
        const SharedList<Target>& targets = elements(set.*member_);
        return std::vector<MXFScalar>(targets.begin(), targets.end());
    }
    void read(const std::shared_ptr<MetadataRoot>& set, const std::vector<std::uint8_t>& octets,
              MXFPendingReferences& pending) const override {
        const auto uids = klvutil::readValue<std::vector<MXFUID>>(octets);
        SharedList<Target>& targets = writableElements((*set).*member_);
        for (const auto& target : targets) {
            release(*set, target);
        }
        targets.assign(uids.size(), nullptr);
        for (std::size_t i = 0; i < uids.size(); ++i) {
            noteUnresolved(*set, i, uids[i]);
            pending.emplace(uids[i],
                            std::make_shared<dangling_vector_ref_t<MetadataRoot, Target>>(set, label(), targets, i));
        }
    }
    void write(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& owned) const override {
        const SharedList<Target>& targets = elements(set.*member_);
        klvutil::OctetWriter(octets).write(instanceUIDs(targets));
        owned.insert(owned.end(), targets.begin(), targets.end());
    }

    Member MetadataRoot::*member_;
};

/// Which of the above a member makes its property.
template <class Member>
struct PropertyOf {
    using type = ValueProperty<Member, Member>;
};
template <class T>
struct PropertyOf<boost::optional<T>> {
    using type = ValueProperty<T, boost::optional<T>>;
};
template <class Target>
struct PropertyOf<std::shared_ptr<Target>> {
    using type = ReferenceProperty<Target, std::shared_ptr<Target>>;
};
template <class Target>
struct PropertyOf<std::weak_ptr<Target>> {
    using type = ReferenceProperty<Target, std::weak_ptr<Target>>;
};
template <class Target>
struct PropertyOf<SharedList<Target>> {
    using type = ReferencesProperty<Target, SharedList<Target>>;
};
template <class Target>
struct PropertyOf<boost::optional<SharedList<Target>>> {
    using type = ReferencesProperty<Target, boost::optional<SharedList<Target>>>;
};

using PropertyList = std::vector<std::unique_ptr<const MXFProperty>>;

template <class Set>
struct SetLines {
    template <int number>
    static constexpr bool declaresProperty =
        !std::is_same_v<decltype(Set::property(Line<Set::firstLine + number>())), NoProperty>;

    /// The lines that declare a property. They are found first, so that no code is made for the many that do not.
    template <int... numbers>
    static constexpr auto declaring(std::integer_sequence<int, numbers...> /*lines*/) {
        std::array<int, (std::size_t{declaresProperty<numbers>} + ...)> found{};
        std::size_t count = 0;
        ((declaresProperty<numbers> ? void(found[count++] = Set::firstLine + numbers) : void()), ...);
        return found;
    }
    static constexpr auto lines = declaring(std::make_integer_sequence<int, maxSetLines>());

    template <class Member>
    static void append(PropertyList& list, const PropertyLine<Set, Member>& line) {
        // The property works on any set of its class, whatever class the member is of.
        list.push_back(std::make_unique<typename PropertyOf<Member>::type>(
            Set::className, line.name, line.label, line.required, static_cast<Member MetadataRoot::*>(line.member)));
    }

    template <std::size_t... indices>
    static PropertyList list(std::index_sequence<indices...> /*of lines*/) {
        PropertyList result;
        (append(result, Set::property(Line<lines[indices]>())), ...);
        return result;
    }
};

/// The properties that a class adds to those of its base, in the order of their declaration.
template <class Set>
BRYX_API const PropertyList& ownProperties() {
    static const PropertyList list = SetLines<Set>::list(std::make_index_sequence<SetLines<Set>::lines.size()>());
    return list;
}

template <class Set>
void appendAllProperties(MXFSetDescription::Properties& all) {
    if constexpr (!std::is_same_v<Set, MetadataRoot>) {
        appendAllProperties<typename Set::Base>(all);
        for (const auto& property : ownProperties<Set>()) {
            all.push_back(property.get());
        }
    }
}

/// The factory from which that of a class with base @p Base derives.
template <class Base>
struct BaseFactory {
    using type = MXFSetFactory<Base>;
};
template <>
struct BaseFactory<MetadataRoot> {
    using type = MetadataRootFactory;
};

} // namespace mxfutil::detail

template <class Set>
BRYX_API const MXFSetDescription& mxfutil::describeSet() {
    static const MXFSetDescription description(Set::className, Set::classKey, typeid(Set), [] {
        MXFSetDescription::Properties all;
        detail::appendAllProperties<Set>(all);
        return all;
    }());
    return description;
}

/// The factory of one class of sets: reads and codes what the class declares. It derives from the factory of the base
/// class, as the set does from the base class.
template <class Set>
class BRYX_API MXFSetFactory<Set, false> : public mxfutil::detail::BaseFactory<typename Set::Base>::type {
    using BaseFactory = typename mxfutil::detail::BaseFactory<typename Set::Base>::type;

public:
    MXFSetFactory() { this->addToPrimer(mxfutil::detail::ownProperties<Set>()); }

    using BaseFactory::getSetKey;
    using BaseFactory::getType;

    const std::type_info& getType() const override { return typeid(Set); }
    const KLVKey& getSetKey() const override { return Set::classKey; }
    bool allowBERLengths() const override { return Set::allowsBERLengths; }

    void parseProperties(const MXFProperties& properties, const std::shared_ptr<MetadataRoot>& object,
                         MXFPendingReferences& pending) override {
        requireClass(object.get());
        BaseFactory::parseProperties(properties, object, pending);
        this->parseList(mxfutil::detail::ownProperties<Set>(), properties, object, pending);
    }

    void codeProperties(const std::shared_ptr<const MetadataRoot>& object, MXFProperties& properties,
                        MXFOwnedSets& owned) override {
        requireClass(object.get());
        BaseFactory::codeProperties(object, properties, owned);
        this->codeList(mxfutil::detail::ownProperties<Set>(), *object, properties, owned);
    }

private:
    static void requireClass(const MetadataRoot* object) {
        if (dynamic_cast<const Set*>(object) == nullptr) {
            util::failAssertion((std::string("object is a ") + Set::className).c_str());
        }
    }
};

/// The factory of a class of sets that files hold.
template <class Set>
class BRYX_API MXFSetFactory<Set, true> : public MXFSetFactory<Set, false> {
public:
    std::shared_ptr<MetadataRoot> create() const override { return Set::create(); }
    std::shared_ptr<MetadataRootFactory> clone() const override { return std::make_shared<MXFSetFactory>(*this); }
};

#pragma once

#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "klv/ValueCoding.h"
#include "mxf/metadata/factories/MetadataRootFactory.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/metadata/model/dangling_ref.h"
#include "util/assertion_failure.h"

/// @file
/// What follows from the declaration of a set: its factory and its description. Needed where sets of an application's
/// own are made; those of the library come with their factories, such as PrefaceFactory.

namespace bryx {

namespace mxfutil::detail {

/// Lets allocate_shared construct sets, whose constructors are protected, and end them by endSet().
template <class T>
struct SetAllocator {
    using value_type = T;

    SetAllocator() = default;
    template <class U>
    SetAllocator(const SetAllocator<U>& /*other*/) noexcept {} // NOLINT: allocators convert

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) noexcept { std::allocator<T>().deallocate(memory, count); }
    template <class U>
    void construct(U* place) {
        ::new (static_cast<void*>(place)) U();
    }
    void destroy(MetadataRoot* set) noexcept { endSet(*set); }

    friend bool operator==(const SetAllocator& /*a*/, const SetAllocator& /*b*/) noexcept { return true; }
    friend bool operator!=(const SetAllocator& /*a*/, const SetAllocator& /*b*/) noexcept { return false; }
};

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

template <class T, class Variant>
struct IsAlternative;
template <class T, class... Alternatives>
struct IsAlternative<T, std::variant<Alternatives...>> : std::disjunction<std::is_same<T, Alternatives>...> {};

template <class T>
MXFScalar toScalar(const T& value) {
    if constexpr (IsAlternative<T, MXFScalar>::value) {
        return value;
    } else if constexpr (std::is_enum_v<T>) {
        return toScalar(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        return static_cast<std::int64_t>(value);
    } else if constexpr (std::is_integral_v<T>) {
        return static_cast<std::uint64_t>(value);
    } else {
        return toString(value);
    }
}

template <class T>
MXFPropertyValue toPropertyValue(const T& value) {
    return toScalar(value);
}

template <class T>
MXFPropertyValue toPropertyValue(const std::vector<T>& batch) {
    if constexpr (IsAlternative<std::vector<T>, MXFScalar>::value) {
        return MXFScalar(batch);
    } else {
        std::vector<MXFScalar> values;
        values.reserve(batch.size());
        for (const T& element : batch) {
            values.push_back(toScalar(element));
        }
        return values;
    }
}

template <class T>
bool hasValue(const T& /*required*/) noexcept {
    return true;
}
template <class T>
bool hasValue(const OptionalValue<T>& member) noexcept {
    return member.isPresent();
}
template <class T>
const T& valueOf(const T& member) noexcept {
    return member;
}
template <class T>
const T& valueOf(const OptionalValue<T>& member) noexcept {
    return member.orDefault();
}
template <class T>
void setValue(T& member, const T& value) {
    member = value;
}
template <class T>
void setValue(OptionalValue<T>& member, const T& value) {
    member.set(value);
}

/// A property whose values are of type @p T: the member is a T, or an optional one.
template <class T, class Member>
class ValueProperty final : public MXFProperty {
public:
    ValueProperty(const char* setName, const char* name, const MXFPropertyLabel& label, bool required,
                  Member MetadataRoot::*member)
        : MXFProperty(setName, name, label, required, Kind::Value), member_(member) {}

private:
    bool holdsValue(const MetadataRoot& set) const override { return hasValue(set.*member_); }
    MXFPropertyValue getValue(const MetadataRoot& set) const override { return toPropertyValue(valueOf(set.*member_)); }
    void read(const std::shared_ptr<MetadataRoot>& set, const std::vector<std::uint8_t>& octets,
              MXFPendingReferences& /*pending*/) const override {
        setValue((*set).*member_, klvutil::readValue<T>(octets));
    }
    void write(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& /*owned*/) const override {
        klvutil::OctetWriter(octets).write(valueOf(set.*member_));
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
struct PropertyOf<OptionalValue<T>> {
    using type = ValueProperty<T, OptionalValue<T>>;
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

/// Makes the properties that the lines of a class declare. The member tells the kind: a value, an optional one, a shared
/// pointer for a strong reference, a weak pointer for a weak one, a vector of shared pointers for strong references.
template <class Set>
class PropertyMaker {
public:
    template <class Member>
    void add(const char* name, const MXFPropertyLabel& label, bool required, Member Set::*member) {
        // The property works on any set of its class, whatever class the member is of.
        list.push_back(std::make_unique<typename PropertyOf<Member>::type>(
            Set::className, name, label, required, static_cast<Member MetadataRoot::*>(member)));
    }

    PropertyList list;
};

template <class Set>
struct SetLines {
    template <int number>
    static constexpr bool declaresProperty =
        !std::is_same_v<decltype(Set::property(Line<Set::firstLine + number>(), std::declval<PropertyMaker<Set>&>())),
                        NoProperty>;

    /// The lines that declare a property. They are found first, so that no code is made for the many that do not.
    template <int... numbers>
    static constexpr auto declaring(std::integer_sequence<int, numbers...> /*lines*/) {
        std::array<int, (std::size_t{declaresProperty<numbers>} + ...)> found{};
        std::size_t count = 0;
        ((declaresProperty<numbers> ? void(found[count++] = Set::firstLine + numbers) : void()), ...);
        return found;
    }
    static constexpr auto lines = declaring(std::make_integer_sequence<int, maxSetLines>());

    template <std::size_t... indices>
    static PropertyList list(std::index_sequence<indices...> /*of lines*/) {
        PropertyMaker<Set> maker;
        (Set::property(Line<lines[indices]>(), maker), ...);
        return std::move(maker.list);
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

template <class Set>
BRYX_API std::shared_ptr<Set> mxfutil::createSet() {
    return std::allocate_shared<Set>(detail::SetAllocator<Set>());
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

} // namespace bryx

#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <boost/optional.hpp>

#include "mxf/metadata/model/MXFPropertyLabel.h"
#include "util/Api.h"

/// @file
/// The words in which the class of a set is written down. Each property is one line, and everything else follows from
/// that line: the accessors, reading and coding, the primer, comparison, printing.
///
///     class BRYX_API TimelineTrack : public Track {
///         BRYX_SET(TimelineTrack, Track, "060e2b34.02530101.0d010101.01013b00");
///
///         /// Edit units per second.
///         BRYX_REQUIRED(EditRate, editRate, Rational, 0x4B01);
///         /// The edit unit in which the track starts.
///         BRYX_REQUIRED(Origin, origin, std::int64_t, 0x4B02);
///     };
///     using TimelineTrackFactory = MXFSetFactory<TimelineTrack>;
///
/// A property line says: the name in accessors, the name in messages, the type of the value or the class referred to,
/// and how files name it, as the constructors of MXFPropertyLabel do. Two properties never share a line. The class that
/// BRYX_ABSTRACT_SET declares has no create().
///
/// The accessors of a property P:
///
///     required value         getP, setP
///     optional value         getP, setP, hasP, removeP; getP requires "Class.p is present"
///     required reference     getP, setP; without a target, the pointer is empty
///     optional reference     getP, setP, hasP, removeP; getP requires "Class.p is present"
///     references             getPCount, getPAt, addP, insertPAt, removePAt; an index requires "valid Class.p index"
///     optional references    hasP and removeP, of all together, as well
///
/// A strong reference owns its target: setting it requires what MetadataRoot::swapOwnership() does. A required value that
/// was missing where the set was read is that of a new set, and is not coded until it is set; one that could not be read,
/// and a reference that leads nowhere, is coded as it was. A required reference that was never there cannot be coded.
///
/// An application adds sets of its own in the same way. Then mxf/metadata/factories/MXFSetFactory.h must be included
/// where such sets are made, and an MXFMetadataModelFactory lists their factories.

namespace bryx {

template <class Set, bool concrete = Set::isConcrete>
class MXFSetFactory;
class MXFSetDescription;
class MetadataRoot;

namespace mxfutil {

/// The description of a class of sets, which the library holds for its own, and mxf/metadata/factories/MXFSetFactory.h
/// makes for others.
template <class Set>
BRYX_API const MXFSetDescription& describeSet();

/// A new set, made in the same place: what a shared pointer needs to make one costs each source that has it made.
template <class Set>
BRYX_API std::shared_ptr<Set> createSet();

namespace detail {

/// The lines that a class may have after BRYX_SET.
inline constexpr int maxSetLines = 250;

/// Stands for a line of a class, so that what is written on it can be found by overload resolution.
template <int number>
struct Line {};

/// What a line of a class says if it declares no property.
struct NoProperty {};

/// Ends the life of a set, and then that of the sets that nothing but it held, without recursion.
BRYX_API void endSet(MetadataRoot& set) noexcept;

/// Constructs sets, whose constructors are protected, and ends them by endSet().
template <class T>
struct SetAllocator;

/// Sees what the lines of a class say.
template <class Set>
struct SetLines;

/// Throws assertion_failure: "setName.propertyName is present".
[[noreturn]] BRYX_API void failPresent(const char* setName, const char* propertyName);

inline void requirePresent(bool present, const char* setName, const char* propertyName) {
    if (!present) {
        failPresent(setName, propertyName);
    }
}

/// Requires "valid setName.propertyName index": that @p index is below @p end.
BRYX_API void requireIndex(std::size_t index, std::size_t end, const char* setName, const char* propertyName);

/// The value of a property that a set need not have.
template <class T>
class OptionalValue {
public:
    bool isPresent() const noexcept { return isPresent_; }
    /// The value, or that of a new T if it is absent.
    const T& orDefault() const noexcept { return value_; }
    /// Requires that it is present.
    const T& get(const char* setName, const char* propertyName) const {
        requirePresent(isPresent_, setName, propertyName);
        return value_;
    }
    void set(const T& value) {
        value_ = value;
        isPresent_ = true;
    }
    void remove() {
        value_ = T{};
        isPresent_ = false;
    }

private:
    T value_{};
    bool isPresent_ = false;
};

template <class Value>
bool isHeld(const boost::optional<Value>& member) noexcept {
    return member.has_value();
}
template <class Target>
bool isHeld(const std::shared_ptr<Target>& member) noexcept {
    return member != nullptr;
}
template <class Target>
bool isHeld(const std::weak_ptr<Target>& member) noexcept {
    return !member.expired();
}

/// What an optional reference leads to. Requires that it leads to something.
template <class Target>
const std::shared_ptr<Target>& held(const std::shared_ptr<Target>& member, const char* setName,
                                    const char* propertyName) {
    requirePresent(isHeld(member), setName, propertyName);
    return member;
}
template <class Target>
std::shared_ptr<Target> held(const std::weak_ptr<Target>& member, const char* setName, const char* propertyName) {
    requirePresent(isHeld(member), setName, propertyName);
    return member.lock();
}

/// The targets of a member that holds references; none if it is absent.
template <class Target>
const std::vector<std::shared_ptr<Target>>& elements(const std::vector<std::shared_ptr<Target>>& member) noexcept {
    return member;
}
template <class Target>
const std::vector<std::shared_ptr<Target>>&
elements(const boost::optional<std::vector<std::shared_ptr<Target>>>& member) noexcept {
    static const std::vector<std::shared_ptr<Target>> none;
    return member ? *member : none;
}

/// The same for changing them, which makes an absent member present.
template <class Target>
std::vector<std::shared_ptr<Target>>& writableElements(std::vector<std::shared_ptr<Target>>& member) noexcept {
    return member;
}
template <class Target>
std::vector<std::shared_ptr<Target>>& writableElements(boost::optional<std::vector<std::shared_ptr<Target>>>& member) {
    if (!member) {
        member.emplace();
    }
    return *member;
}

template <class Member>
auto elementAt(const Member& member, std::size_t index, const char* setName, const char* propertyName) {
    requireIndex(index, elements(member).size(), setName, propertyName);
    return elements(member)[index];
}

} // namespace detail
} // namespace mxfutil

// NOLINTBEGIN(bugprone-macro-parentheses): what stands for a type or a name cannot have parentheses

#define BRYX_DETAIL_SET(Class, BaseClass, keyText, concrete)                                                           \
public:                                                                                                                \
    using Base = BaseClass;                                                                                            \
    [[maybe_unused]] static constexpr const char* className = #Class;                                                  \
    [[maybe_unused]] static constexpr ::bryx::KLVKey classKey = ::bryx::klvutil::key(keyText);                         \
    [[maybe_unused]] static constexpr bool isConcrete = concrete;                                                      \
                                                                                                                       \
private:                                                                                                               \
    using Self = Class;                                                                                                \
    [[maybe_unused]] static constexpr int firstLine = __LINE__;                                                        \
    static ::bryx::mxfutil::detail::NoProperty property(...) {                                                         \
        return {};                                                                                                     \
    }                                                                                                                  \
    template <class>                                                                                                   \
    friend struct ::bryx::mxfutil::detail::SetAllocator;                                                               \
    template <class>                                                                                                   \
    friend struct ::bryx::mxfutil::detail::SetLines

/// Begins the declaration of a set that files hold; @p keyText is the key of the set as klvutil::key() takes it.
#define BRYX_SET(Class, BaseClass, keyText)                                                                            \
public:                                                                                                                \
    /** A new set with a fresh instance UID and default values. */                                                     \
    static std::shared_ptr<Class> create() {                                                                           \
        return ::bryx::mxfutil::createSet<Class>();                                                                    \
    }                                                                                                                  \
    const ::bryx::MXFSetDescription& getDescription() const override {                                                 \
        return ::bryx::mxfutil::describeSet<Class>();                                                                  \
    }                                                                                                                  \
    BRYX_DETAIL_SET(Class, BaseClass, keyText, true)

/// Begins the declaration of a class of sets that has more special ones only.
#define BRYX_ABSTRACT_SET(Class, BaseClass, keyText) BRYX_DETAIL_SET(Class, BaseClass, keyText, false)

// What it says is a template, so that it costs nothing where nobody asks.
#define BRYX_DETAIL_LINE(name, required, ...)                                                                          \
    template <class List>                                                                                              \
    static void property(::bryx::mxfutil::detail::Line<__LINE__>, List& list) {                                        \
        list.add(#name, ::bryx::MXFPropertyLabel(__VA_ARGS__), required, &Self::name##_);                              \
    }                                                                                                                  \
    static_assert(__LINE__ - firstLine < ::bryx::mxfutil::detail::maxSetLines, "a set has too many lines")

#define BRYX_DETAIL_SETTER(Name, name, Argument, ...)                                                                  \
    void set##Name(const Argument& value) {                                                                            \
        assign(name##_, value);                                                                                        \
        wasSet(::bryx::MXFPropertyLabel(__VA_ARGS__));                                                                 \
    }

#define BRYX_DETAIL_HAS_AND_REMOVE(Name, name, ...)                                                                    \
    bool has##Name() const noexcept {                                                                                  \
        return ::bryx::mxfutil::detail::isHeld(name##_);                                                               \
    }                                                                                                                  \
    void remove##Name() {                                                                                              \
        clear(name##_);                                                                                                \
        wasSet(::bryx::MXFPropertyLabel(__VA_ARGS__));                                                                 \
    }

#define BRYX_DETAIL_OPTIONAL_REFERENCE(Name, name, Target, Pointer, ...)                                               \
public:                                                                                                                \
    std::shared_ptr<Target> get##Name() {                                                                              \
        return ::bryx::mxfutil::detail::held(name##_, className, #name);                                               \
    }                                                                                                                  \
    std::shared_ptr<const Target> get##Name() const {                                                                  \
        return ::bryx::mxfutil::detail::held(name##_, className, #name);                                               \
    }                                                                                                                  \
    BRYX_DETAIL_SETTER(Name, name, std::shared_ptr<Target>, __VA_ARGS__)                                               \
    BRYX_DETAIL_HAS_AND_REMOVE(Name, name, __VA_ARGS__)                                                                \
                                                                                                                       \
private:                                                                                                               \
    Pointer<Target> name##_;                                                                                           \
    BRYX_DETAIL_LINE(name, false, __VA_ARGS__)

#define BRYX_DETAIL_REFERENCES(Name, name, Target, ...)                                                                \
public:                                                                                                                \
    std::size_t get##Name##Count() const noexcept {                                                                    \
        return ::bryx::mxfutil::detail::elements(name##_).size();                                                      \
    }                                                                                                                  \
    std::shared_ptr<Target> get##Name##At(std::size_t index) {                                                         \
        return ::bryx::mxfutil::detail::elementAt(name##_, index, className, #name);                                   \
    }                                                                                                                  \
    std::shared_ptr<const Target> get##Name##At(std::size_t index) const {                                             \
        return ::bryx::mxfutil::detail::elementAt(name##_, index, className, #name);                                   \
    }                                                                                                                  \
    void add##Name(const std::shared_ptr<Target>& target) {                                                            \
        insert##Name##At(get##Name##Count(), target);                                                                  \
    }                                                                                                                  \
    void insert##Name##At(std::size_t index, const std::shared_ptr<Target>& target) {                                  \
        ::bryx::mxfutil::detail::requireIndex(index, get##Name##Count() + 1, className, #name);                        \
        ::bryx::mxfutil::detail::requirePresent(target != nullptr, className, #name);                                  \
        insertElement(name##_, index, target);                                                                         \
        wasChanged(name##_, ::bryx::MXFPropertyLabel(__VA_ARGS__));                                                    \
    }                                                                                                                  \
    void remove##Name##At(std::size_t index) {                                                                         \
        ::bryx::mxfutil::detail::requireIndex(index, get##Name##Count(), className, #name);                            \
        removeElement(name##_, index);                                                                                 \
        wasChanged(name##_, ::bryx::MXFPropertyLabel(__VA_ARGS__));                                                    \
    }

/// A value that every set of the class has.
#define BRYX_REQUIRED(Name, name, Type, ...)                                                                           \
public:                                                                                                                \
    const Type& get##Name() const noexcept {                                                                           \
        return name##_;                                                                                                \
    }                                                                                                                  \
    void set##Name(const Type& value) {                                                                                \
        name##_ = value;                                                                                               \
        wasSet(::bryx::MXFPropertyLabel(__VA_ARGS__));                                                                 \
    }                                                                                                                  \
                                                                                                                       \
private:                                                                                                               \
    Type name##_{};                                                                                                    \
    BRYX_DETAIL_LINE(name, true, __VA_ARGS__)

/// A value that a set need not have.
#define BRYX_OPTIONAL(Name, name, Type, ...)                                                                           \
public:                                                                                                                \
    const Type& get##Name() const {                                                                                    \
        return name##_.get(className, #name);                                                                          \
    }                                                                                                                  \
    void set##Name(const Type& value) {                                                                                \
        name##_.set(value);                                                                                            \
        wasSet(::bryx::MXFPropertyLabel(__VA_ARGS__));                                                                 \
    }                                                                                                                  \
    bool has##Name() const noexcept {                                                                                  \
        return name##_.isPresent();                                                                                    \
    }                                                                                                                  \
    void remove##Name() {                                                                                              \
        name##_.remove();                                                                                              \
        wasSet(::bryx::MXFPropertyLabel(__VA_ARGS__));                                                                 \
    }                                                                                                                  \
                                                                                                                       \
private:                                                                                                               \
    ::bryx::mxfutil::detail::OptionalValue<Type> name##_;                                                              \
    BRYX_DETAIL_LINE(name, false, __VA_ARGS__)

/// A set that every set of the class owns.
#define BRYX_STRONG_REFERENCE(Name, name, Target, ...)                                                                 \
public:                                                                                                                \
    std::shared_ptr<Target> get##Name() {                                                                              \
        return name##_;                                                                                                \
    }                                                                                                                  \
    std::shared_ptr<const Target> get##Name() const {                                                                  \
        return name##_;                                                                                                \
    }                                                                                                                  \
    BRYX_DETAIL_SETTER(Name, name, std::shared_ptr<Target>, __VA_ARGS__)                                               \
                                                                                                                       \
private:                                                                                                               \
    std::shared_ptr<Target> name##_;                                                                                   \
    BRYX_DETAIL_LINE(name, true, __VA_ARGS__)

/// A set that a set may own.
#define BRYX_OPTIONAL_STRONG_REFERENCE(Name, name, Target, ...)                                                        \
    BRYX_DETAIL_OPTIONAL_REFERENCE(Name, name, Target, std::shared_ptr, __VA_ARGS__)

/// A set that a set may point at without owning it, and without keeping it in being.
#define BRYX_OPTIONAL_WEAK_REFERENCE(Name, name, Target, ...)                                                          \
    BRYX_DETAIL_OPTIONAL_REFERENCE(Name, name, Target, std::weak_ptr, __VA_ARGS__)

/// Sets that every set of the class owns, in their order.
#define BRYX_STRONG_REFERENCES(Name, name, Target, ...)                                                                \
    BRYX_DETAIL_REFERENCES(Name, name, Target, __VA_ARGS__)                                                            \
                                                                                                                       \
private:                                                                                                               \
    std::vector<std::shared_ptr<Target>> name##_;                                                                      \
    BRYX_DETAIL_LINE(name, true, __VA_ARGS__)

/// Sets that a set may own, in their order. Adding one makes the property present, removing the last leaves it empty.
#define BRYX_OPTIONAL_STRONG_REFERENCES(Name, name, Target, ...)                                                       \
    BRYX_DETAIL_REFERENCES(Name, name, Target, __VA_ARGS__)                                                            \
    BRYX_DETAIL_HAS_AND_REMOVE(Name, name, __VA_ARGS__)                                                                \
                                                                                                                       \
private:                                                                                                               \
    boost::optional<std::vector<std::shared_ptr<Target>>> name##_;                                                     \
    BRYX_DETAIL_LINE(name, false, __VA_ARGS__)

// NOLINTEND(bugprone-macro-parentheses)

} // namespace bryx

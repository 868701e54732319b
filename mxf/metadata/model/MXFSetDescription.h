#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "mxf/metadata/model/MXFPropertyValue.h"
#include "mxf/metadata/model/MXFSetContents.h"
#include "mxf/metadata/model/MetadataRoot.h"
#include "util/Api.h"

namespace bryx {

namespace mxfutil {

/// Where the model below @p a differs from that below @p b, as the way that leads there with the name of the property,
/// or an empty text if they are equal: in every set, instance UID, property and dark property, to the octet. Of several
/// differences it is one that is next to the roots.
BRYX_API std::string firstDifference(const MetadataRoot& a, const MetadataRoot& b);

/// The sets that @p set owns itself, by dark properties and then by others, in their order.
BRYX_API MXFOwnedSets ownedSets(const MetadataRoot& set);

} // namespace mxfutil

/// A property of a class of sets, for working with sets whatever class they have. Lives as long as the library.
class BRYX_API MXFProperty {
public:
    /// What a property holds: a value, or sets that it owns or points at.
    enum class Kind : std::uint8_t { Value, StrongReference, WeakReference };

    virtual ~MXFProperty();
    MXFProperty(const MXFProperty&) = delete;
    MXFProperty& operator=(const MXFProperty&) = delete;

    /// The name in messages, without and with the class before it: "version", "Preface.version".
    const char* name() const noexcept { return name_; }
    std::string fullName() const;

    const KLVKey& label() const noexcept { return label_; }
    /// The static or fixed local tag; 0 if each file gives the property one.
    std::uint16_t tag() const noexcept { return tag_; }
    bool isRequired() const noexcept { return required_; }
    Kind kind() const noexcept { return kind_; }

    /// Whether @p set has the property: an optional one that is there, a required one that was not missing in the file,
    /// a reference, be it unresolved. Requires "set has property": that its description lists this property.
    bool isPresent(const MetadataRoot& set) const;

    /// The value of the property in @p set; of an absent one, a default or an empty reference. An unresolved reference
    /// stands as the instance UID of its target. Requires "set has property".
    MXFPropertyValue value(const MetadataRoot& set) const;

protected:
    MXFProperty(const char* setName, const char* name, const MXFPropertyLabel& label, bool required, Kind kind);

    // What reading does with references.

    /// Notes that the reference at @p index leads to @p uid and is not resolved.
    void noteUnresolved(MetadataRoot& set, std::size_t index, const MXFUID& uid) const;
    static void release(MetadataRoot& set, const std::shared_ptr<MetadataRoot>& target);

private:
    friend class MetadataRootFactory;
    friend std::string mxfutil::firstDifference(const MetadataRoot& a, const MetadataRoot& b);
    friend MXFOwnedSets mxfutil::ownedSets(const MetadataRoot& set);

    /// Whether the value is one that was set or could be read.
    bool isKnown(const MetadataRoot& set) const;
    /// Whether it can be coded: it is known and a weak reference leads to a set of the same model, or it is a reference
    /// that is not resolved.
    bool isCodable(const MetadataRoot& set) const;
    /// The value, with unresolved references as the instance UIDs of their targets.
    MXFPropertyValue wholeValue(const MetadataRoot& set) const;
    /// Appends the coded value in @p set, where it is codable, to @p octets, and what it owns by it to @p owned.
    void code(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& owned) const;

    [[noreturn]] void failPresent() const;

    virtual bool holdsValue(const MetadataRoot& set) const = 0;
    virtual MXFPropertyValue getValue(const MetadataRoot& set) const = 0;
    /// Reads the value into @p set. Throws std::exception, and leaves the set as it is, if that is not possible.
    virtual void read(const std::shared_ptr<MetadataRoot>& set, const std::vector<std::uint8_t>& octets,
                      MXFPendingReferences& pending) const = 0;
    /// The same as code() for a value that is held, all of whose references are resolved.
    virtual void write(const MetadataRoot& set, std::vector<std::uint8_t>& octets, MXFOwnedSets& owned) const = 0;

    const char* setName_;
    const char* name_;
    KLVKey label_;
    std::uint16_t tag_;
    bool required_;
    Kind kind_;
};

/// A class of sets that files hold. Lives as long as the library.
class BRYX_API MXFSetDescription {
public:
    using Properties = std::vector<const MXFProperty*>;

    MXFSetDescription(const char* name, const KLVKey& key, const std::type_info& type, Properties properties);

    /// The name of the class.
    const char* name() const noexcept { return name_; }
    /// The key of the set in files.
    const KLVKey& key() const noexcept { return key_; }
    const std::type_info& type() const noexcept { return type_; }
    /// All properties, those of base classes first, each class's in the order of its declaration.
    const Properties& properties() const noexcept { return properties_; }

private:
    const char* name_;
    KLVKey key_;
    const std::type_info& type_;
    Properties properties_;
};

} // namespace bryx

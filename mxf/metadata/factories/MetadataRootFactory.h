#pragma once

#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "mxf/metadata/factories/MXFMetadataFactory.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "util/Api.h"

namespace bryx {

/// The base of the factories of single classes. Its own part are the instance UID and the dark properties.
class BRYX_API MetadataRootFactory : public MXFMetadataFactory {
public:
    MetadataRootFactory();
    ~MetadataRootFactory() override;
    MetadataRootFactory& operator=(const MetadataRootFactory&) = delete;

    void setErrorHandler(std::shared_ptr<ErrorHandler> errorHandler) override;
    bool canParse(const KLVKey& setKey) override;
    std::pair<std::shared_ptr<MetadataRoot>, MXFPendingReferences> parse(const MXFPrimedSet& set) override;
    /// Requires "expected set key".
    const std::type_info& getType(const KLVKey& setKey) override;
    bool canCode(const std::type_info& type) override;
    /// Requires "expected type", and of each value that its length fits the set.
    std::pair<MXFPrimedSet, MXFOwnedSets> code(std::shared_ptr<const MetadataRoot> set) override;
    /// Requires "expected type".
    const SetPrimer& getSetPrimer(const std::type_info& type) override;
    /// Requires "expected type".
    const KLVKey& getSetKey(const std::type_info& type) override;

    /// The class that the factory makes.
    virtual const std::type_info& getType() const = 0;
    /// The key of its sets.
    virtual const KLVKey& getSetKey() const = 0;
    /// A new set.
    virtual std::shared_ptr<MetadataRoot> create() const = 0;

    /// Reads @p properties into @p object, and adds its references to @p pending. A property that is wanting is
    /// reported as "missing", one that cannot be read as "invalid"; then it is kept as a dark property, except the
    /// instance UID, in whose place the fresh one stays. Requires
    /// "object is a" with the name of the class.
    virtual void parseProperties(const MXFProperties& properties, const std::shared_ptr<MetadataRoot>& object,
                                 MXFPendingReferences& pending);

    /// Writes @p object to @p properties, and adds the sets that it owns to @p owned.
    virtual void codeProperties(const std::shared_ptr<const MetadataRoot>& object, MXFProperties& properties,
                                MXFOwnedSets& owned);

    /// Whether the set may also come with BER item lengths, in which case octet 5 of its key is 13.
    virtual bool allowBERLengths() const;

    /// A new factory of the same class, with the same error handler.
    virtual std::shared_ptr<MetadataRootFactory> clone() const = 0;

protected:
    using PropertyList = std::vector<std::unique_ptr<const MXFProperty>>;

    MetadataRootFactory(const MetadataRootFactory&);

    const std::shared_ptr<ErrorHandler>& getErrorHandler() const noexcept { return errorHandler_; }

    /// Reports "missing" and the name of the property.
    void firePropertyRequiredError(const std::string& name);
    /// Reports "invalid", the name of the property, "value" and what @p reason says.
    void firePropertyInternalizeError(const std::string& name, const std::exception& reason);

    /// The set primer, for the constructors of derived classes to add to.
    SetPrimer& getSetPrimer() noexcept { return setPrimer_; }

    // The part of one class, whose properties are given.

    void addToPrimer(const PropertyList& list);
    void parseList(const PropertyList& list, const MXFProperties& properties,
                   const std::shared_ptr<MetadataRoot>& object, MXFPendingReferences& pending);
    static void codeList(const PropertyList& list, const MetadataRoot& object, MXFProperties& properties,
                         MXFOwnedSets& owned);

private:
    std::shared_ptr<ErrorHandler> errorHandler_;
    SetPrimer setPrimer_;
};

} // namespace bryx

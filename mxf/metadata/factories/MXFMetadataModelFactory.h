#pragma once

#include <map>
#include <memory>
#include <vector>

#include "mxf/metadata/factories/MXFMetadataFactory.h"
#include "util/Api.h"

namespace bryx {

/// A factory that leaves each class to another factory: the first in its list that accepts a key or a class.
class BRYX_API MXFMetadataModelFactory : public MXFMetadataFactory {
public:
    MXFMetadataModelFactory();
    /// The copy leaves classes to the factories that its own getFactories() lists.
    MXFMetadataModelFactory(const MXFMetadataModelFactory& other);
    MXFMetadataModelFactory& operator=(const MXFMetadataModelFactory&) = delete;
    ~MXFMetadataModelFactory() override;

    /// Where findings go; told to all factories in the list.
    void setErrorHandler(std::shared_ptr<ErrorHandler> errorHandler) override;
    bool canParse(const KLVKey& setKey) override;
    /// Requires "can handle set key" and "factory has created object".
    std::pair<std::shared_ptr<MetadataRoot>, MXFPendingReferences> parse(const MXFPrimedSet& set) override;
    /// Requires "can handle set key".
    const std::type_info& getType(const KLVKey& setKey) override;
    bool canCode(const std::type_info& type) override;
    /// Requires "can handle type", as the two that follow.
    std::pair<MXFPrimedSet, MXFOwnedSets> code(std::shared_ptr<const MetadataRoot> set) override;
    const SetPrimer& getSetPrimer(const std::type_info& type) override;
    const KLVKey& getSetKey(const std::type_info& type) override;

    /// The factories, in the order in which they are asked; always the same. None may be empty: "factory is present".
    virtual const std::vector<std::shared_ptr<MXFMetadataFactory>>& getFactories() = 0;

    /// Whether a property that the class does not know is a strong reference to another set. A derived class may say so
    /// of its sets; here no property is.
    virtual bool isReferenceDarkProperty(const KLVKey& setKey, const KLVKey& propertyKey);

protected:
    const std::shared_ptr<ErrorHandler>& getErrorHandler() const noexcept { return errorHandler_; }

    /// Reports "invalid reference dark property" with its key, "value" and what @p reason says.
    void fireReferenceDarkPropertyInternalizeError(const KLVKey& key, const std::exception& reason);

private:
    MXFMetadataFactory* find(const KLVKey& setKey);
    MXFMetadataFactory& forKey(const KLVKey& setKey);
    MXFMetadataFactory* find(const std::type_info& type);
    MXFMetadataFactory& forType(const std::type_info& type);

    std::shared_ptr<ErrorHandler> errorHandler_;
    std::map<KLVKey, std::shared_ptr<MXFMetadataFactory>> cache_;
};

} // namespace bryx

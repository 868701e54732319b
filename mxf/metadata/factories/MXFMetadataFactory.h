#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <typeinfo>
#include <utility>

#include "klv/KLVKey.h"
#include "mxf/metadata/model/MXFSetContents.h"
#include "mxf/structure/MXFPrimedSet.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;

/// Makes sets from what files hold, and the other way round. Used by one thread at a time.
class BRYX_API MXFMetadataFactory {
public:
    /// The labels of the properties that a class knows, and their static or fixed tags; 0 for those without.
    using SetPrimer = std::map<KLVKey, std::uint16_t>;

    virtual ~MXFMetadataFactory();

    /// Where findings about values go. Without one, nothing is reported.
    virtual void setErrorHandler(std::shared_ptr<ErrorHandler> errorHandler) = 0;

    /// Whether sets with @p setKey can be made. The version in the key does not matter.
    virtual bool canParse(const KLVKey& setKey) = 0;

    /// Makes one set, and tells which references it has. Requires canParse().
    virtual std::pair<std::shared_ptr<MetadataRoot>, MXFPendingReferences> parse(const MXFPrimedSet& set) = 0;

    /// The class of the sets with @p setKey. Requires canParse().
    virtual const std::type_info& getType(const KLVKey& setKey) = 0;

    /// Whether sets of exactly this class can be coded.
    virtual bool canCode(const std::type_info& type) = 0;

    /// Codes one set, and tells which sets it owns. Requires canCode() of its class, and of each required reference
    /// that it "is present".
    virtual std::pair<MXFPrimedSet, MXFOwnedSets> code(std::shared_ptr<const MetadataRoot> set) = 0;

    /// The properties of a class. Requires canCode().
    virtual const SetPrimer& getSetPrimer(const std::type_info& type) = 0;

    /// The key of the sets of a class. Requires canCode().
    virtual const KLVKey& getSetKey(const std::type_info& type) = 0;
};

} // namespace bryx

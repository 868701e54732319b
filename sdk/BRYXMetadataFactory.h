#pragma once

#include <memory>
#include <vector>

#include "mxf/metadata/factories/MXFMetadataFamilies.h"
#include "util/Api.h"

namespace bryx {

/// The factory of all sets that the library knows. A copy has factories of its own.
class BRYX_API BRYXMetadataFactory : public MXFMetadataModelFactory {
public:
    BRYXMetadataFactory();
    BRYXMetadataFactory(const BRYXMetadataFactory& other);
    BRYXMetadataFactory& operator=(const BRYXMetadataFactory&) = delete;
    ~BRYXMetadataFactory() override;

    const std::vector<std::shared_ptr<MXFMetadataFactory>>& getFactories() override { return factories_; }

private:
    void add(std::shared_ptr<MXFMetadataFamily> family);

    std::vector<std::shared_ptr<MXFMetadataFamily>> families_;
    std::vector<std::shared_ptr<MXFMetadataFactory>> factories_; ///< the same
};

/// A new BRYXMetadataFactory.
BRYX_API std::shared_ptr<MXFMetadataFactory> createBRYXDefaultMetadataFactory();

} // namespace bryx

#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "klv/KLVKey.h"
#include "mxf/structure/MXFPrimedSet.h"
#include "util/Api.h"

namespace bryx {

/// Receives the header metadata of one partition after the other: for each, startMetadata, the primer, the sets in
/// their order, endMetadata. Whoever writes header metadata makes the same calls.
class BRYX_API MXFMetadataHandler {
public:
    /// The entries of a primer pack: tags, and the labels of the properties that they stand for.
    using Primer = std::vector<std::pair<std::uint16_t, KLVKey>>;

    virtual ~MXFMetadataHandler();

    /// The header metadata of a partition begins.
    virtual void startMetadata() = 0;
    virtual void endMetadata() = 0;

    /// The primer with which the sets that follow are coded, in the order of the tags.
    virtual void primer(const Primer& primer) = 0;

    /// Whether sets with @p key are wanted. Asked for each set.
    virtual bool handlesSet(const KLVKey& key) = 0;

    /// A set that is wanted. The callee may take its contents.
    virtual void primedSet(MXFPrimedSet& set) = 0;

    /// A set that is not wanted, for those who care what refers to what. Does nothing here.
    virtual void unhandledSet(const MXFPrimedSet& set);
};

} // namespace bryx

#pragma once

#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "util/Api.h"

namespace bryx {

/// Wants no set, and does nothing at each call. Derive from it to do something at some of them.
class BRYX_API DullMXFMetadataHandler : public MXFMetadataHandler {
public:
    ~DullMXFMetadataHandler() override;
    void startMetadata() override {}
    void endMetadata() override {}
    void primer(const Primer& primer) override;
    bool handlesSet(const KLVKey& key) override;
    void primedSet(MXFPrimedSet& set) override;
};

} // namespace bryx

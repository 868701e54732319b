#pragma once

#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "util/Api.h"

namespace bryx {

/// Does nothing at each call. Derive from it to do something at some of them.
class BRYX_API DullMXFSDTICPSystemHandler : public MXFSDTICPSystemHandler {
public:
    ~DullMXFSDTICPSystemHandler() override;
    void systemMetadata(const MXFSystemMetadataPack& pack) override;
    void packageMetadata(const MXFGCItems& items) override;
    void pictureMetadata(const MXFGCItems& items) override;
    void soundMetadata(const MXFGCItems& items) override;
    void dataMetadata(const MXFGCItems& items) override;
    void controlData(const std::uint8_t* data, std::size_t size) override;
};

} // namespace bryx

#pragma once

#include <cstddef>
#include <cstdint>

#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "util/Api.h"

/// Codes SDTI-CP compatible system items (ST 326, ST 385) as the elements that files have, and passes those that are
/// wanted on. What a parser read and what this makes of it are the same elements, save the tag of control data, which is
/// 0 here.
class BRYX_API MXFSDTICPSystemCoder : public MXFSDTICPSystemHandler {
public:
    explicit MXFSDTICPSystemCoder(MXFGCSystemHandler& next) : next_(next) {}
    ~MXFSDTICPSystemCoder() override;

    void systemMetadata(const MXFSystemMetadataPack& pack) override;

    // Metadata requires "system metadata first", "valid block count": at most 255 items, and of each "valid SDTI-CP tag",
    // which is one octet, and "property fits item length".

    void packageMetadata(const MXFGCItems& items) override;
    void pictureMetadata(const MXFGCItems& items) override;
    void soundMetadata(const MXFGCItems& items) override;
    void dataMetadata(const MXFGCItems& items) override;

    /// Requires "announced control data": that the pack announces them, and that this is the only call.
    void controlData(const std::uint8_t* data, std::size_t size) override;

private:
    void set(mxfutil::SDTICPElement element, const MXFGCItems& items);

    MXFGCSystemHandler& next_;
    bool hasPack_ = false;
    bool awaitsControlData_ = false;
};

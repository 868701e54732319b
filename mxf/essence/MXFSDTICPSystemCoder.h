#pragma once

#include <cstddef>
#include <cstdint>

#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "util/Api.h"

namespace bryx {

/// Codes SDTI-CP compatible system items (ST 326, ST 385) as the elements that files have, and passes those that are
/// wanted on. What a parser passes on can be coded, whatever was wrong with it: the order and the pack's announcements
/// are the caller's. Block counts are right afterwards, and the tag of control data is 0.
class BRYX_API MXFSDTICPSystemCoder : public MXFSDTICPSystemHandler {
public:
    explicit MXFSDTICPSystemCoder(MXFGCSystemHandler& next) : next_(next) {}
    ~MXFSDTICPSystemCoder() override;

    void systemMetadata(const MXFSystemMetadataPack& pack) override;

    // Metadata requires of each item "valid SDTI-CP tag", which is one octet, and "property fits item length". The block
    // count of more than 255 items is 255.

    void packageMetadata(const MXFGCItems& items) override;
    void pictureMetadata(const MXFGCItems& items) override;
    void soundMetadata(const MXFGCItems& items) override;
    void dataMetadata(const MXFGCItems& items) override;

    /// The length of its item has four octets, which GenericKLVWriter writes for nothing but an empty one.
    void controlData(const std::uint8_t* data, std::size_t size) override;

private:
    void set(mxfutil::SDTICPElement element, const MXFGCItems& items);

    MXFGCSystemHandler& next_;
};

} // namespace bryx

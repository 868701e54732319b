#pragma once

#include <cstdint>

#include "klv/KLVCoding.h"
#include "mxf/essence/MXFGCSystemHandler.h"
#include "util/Api.h"

namespace bryx {

class KLVHandler;

/// Writes system elements as KLV triplets. Wants all; their keys tell the forms of tags and item lengths.
class BRYX_API MXFGCSystemCoder : public MXFGCSystemHandler {
public:
    /// @param receiver of the triplets; not owned
    explicit MXFGCSystemCoder(KLVHandler& receiver) : receiver_(receiver) {}
    ~MXFGCSystemCoder() override;

    /// The BER form of the lengths that follow, where it can hold them; 0x80 leaves the choice. Requires "valid BER
    /// length form".
    void setLengthForm(std::uint8_t form);

    bool wantsSystemElement(const KLVKey& key) override;
    // Requires of items "correct local item type and length": what the forms that the key tells can hold.
    void localSet(const KLVKey& key, const MXFGCItems& items) override;
    void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) override;
    void variableLengthPack(const KLVKey& key, const MXFGCItems& items) override;

private:
    KLVHandler& receiver_;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
};

} // namespace bryx

#pragma once

#include "mxf/essence/MXFGCEssenceHandler.h"
#include "util/Api.h"

namespace bryx {

/// Wants no element, and does nothing at each call. Derive from it to do something at some of them.
class BRYX_API DullMXFGCEssenceHandler : public MXFGCEssenceHandler {
public:
    ~DullMXFGCEssenceHandler() override;
    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override;
    void pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                         std::uint64_t offset) override;
    void setLengthForm(std::uint8_t form) override;
};

} // namespace bryx

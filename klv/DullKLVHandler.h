#pragma once

#include "klv/KLVHandler.h"

namespace bryx {

/// Does nothing and wants nothing: skips every triplet. Derive from it to override only what matters.
class BRYX_API DullKLVHandler : public KLVHandler {
public:
    void setLocator(const Locator& locator) override;
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;
    bool startLabel(const KLVKey& key) override;
    void endLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    void endUniversalSet(const KLVKey& key) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override;
    void endLocalItem(std::uint32_t tag) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override;
    void endVariableLengthPack(const KLVKey& key) override;
    bool startVariableLengthPackItem(std::uint64_t length) override;
    void endVariableLengthPackItem() override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;
    void endWrapper(const KLVKey& key) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;
};

} // namespace bryx

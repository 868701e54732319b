#pragma once

#include "klv/KLVHandler.h"

namespace bryx::klvutil::detail {

/// Overrides every event of KLVHandler with one call of `Base::pass(f)`, where f makes the same call on the handler
/// it is given and returns its result. What passing means is said once, in Base.
template <class Base>
class BRYX_API KLVForwarding : public Base {
public:
    using Base::Base;

    void setLocator(const Locator& locator) override {
        this->pass([&](KLVHandler& next) { next.setLocator(locator); });
    }
    void startStream(bool accurateLengths) override {
        this->pass([&](KLVHandler& next) { next.startStream(accurateLengths); });
    }
    void endStream(bool stopped) override {
        this->pass([&](KLVHandler& next) { next.endStream(stopped); });
    }
    void berLengthForm(std::uint8_t form) override {
        this->pass([&](KLVHandler& next) { next.berLengthForm(form); });
    }
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override {
        return this->pass([&](KLVHandler& next) { return next.startIndividualItem(key, length); });
    }
    void endIndividualItem(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endIndividualItem(key); });
    }
    bool startLabel(const KLVKey& key) override {
        return this->pass([&](KLVHandler& next) { return next.startLabel(key); });
    }
    void endLabel(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endLabel(key); });
    }
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override {
        return this->pass([&](KLVHandler& next) { return next.startUniversalSet(key, length); });
    }
    void endUniversalSet(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endUniversalSet(key); });
    }
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                       KLVFieldForm lengthForm) override {
        return this->pass([&](KLVHandler& next) { return next.startLocalSet(key, length, tagForm, lengthForm); });
    }
    void endLocalSet(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endLocalSet(key); });
    }
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override {
        return this->pass([&](KLVHandler& next) { return next.startLocalItem(tag, length); });
    }
    void endLocalItem(std::uint32_t tag) override {
        this->pass([&](KLVHandler& next) { next.endLocalItem(tag); });
    }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        return this->pass([&](KLVHandler& next) { return next.startFixedLengthPack(key, length); });
    }
    void endFixedLengthPack(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endFixedLengthPack(key); });
    }
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override {
        return this->pass([&](KLVHandler& next) { return next.startVariableLengthPack(key, length, itemLengthForm); });
    }
    void endVariableLengthPack(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endVariableLengthPack(key); });
    }
    bool startVariableLengthPackItem(std::uint64_t length) override {
        return this->pass([&](KLVHandler& next) { return next.startVariableLengthPackItem(length); });
    }
    void endVariableLengthPackItem() override {
        this->pass([](KLVHandler& next) { next.endVariableLengthPackItem(); });
    }
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override {
        return this->pass([&](KLVHandler& next) { return next.startWrapper(key, length, kind); });
    }
    void endWrapper(const KLVKey& key) override {
        this->pass([&](KLVHandler& next) { next.endWrapper(key); });
    }
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override {
        return this->pass([&](KLVHandler& next) { return next.getValueBuffer(length, offset, size, buffer); });
    }
    void value(const std::uint8_t* data, std::uint64_t size) override {
        this->pass([&](KLVHandler& next) { next.value(data, size); });
    }
};

} // namespace bryx::klvutil::detail

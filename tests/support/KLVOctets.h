#pragma once

#include <string>

#include "klv/DullKLVHandler.h"
#include "support/Octets.h"

/// Writes the octets of the packs and local sets that it is sent.
class KLVOctets : public DullKLVHandler {
public:
    std::string octets;

    void berLengthForm(std::uint8_t form) override { form_ = form; }
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm /*tags*/, KLVFieldForm lengths) override {
        lengths_ = lengths;
        return startFixedLengthPack(key, length);
    }
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override {
        const auto twoOctets = [](std::uint64_t n) {
            return ::octets::of({static_cast<int>(n >> 8U & 0xFFU), static_cast<int>(n & 0xFFU)});
        };
        octets +=
            twoOctets(tag) + (lengths_ == KLVFieldForm::BER ? ::octets::length(length, form_) : twoOctets(length));
        return true;
    }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        octets += ::octets::key(key) + ::octets::length(length, form_);
        return true;
    }
    bool getValueBuffer(std::uint64_t /*length*/, std::uint64_t& /*offset*/, std::uint64_t& /*size*/,
                        std::uint8_t*& /*buffer*/) override {
        return true;
    }
    void value(const std::uint8_t* data, std::uint64_t size) override { octets.append(data, data + size); }

private:
    std::uint8_t form_ = 0;
    KLVFieldForm lengths_ = KLVFieldForm::TwoOctets;
};

#pragma once

#include <cstdint>

#include "inspect/ElementCounter.h"
#include "klv/DullKLVHandler.h"

/// Counts what the bodies of generic stream partitions hold (ST 410), without wanting it.
class GenericStreamCounter final : public DullKLVHandler {
public:
    bool startIndividualItem(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startUniversalSet(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLocalSet(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*tagForm*/,
                       KLVFieldForm /*lengthForm*/) override {
        return start(length);
    }
    bool startFixedLengthPack(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startVariableLengthPack(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*form*/) override {
        return start(length);
    }
    bool startWrapper(const KLVKey& /*key*/, std::uint64_t length, KLVWrapperKind /*kind*/) override {
        return start(length);
    }
    void endIndividualItem(const KLVKey& key) override { end(key); }
    void endUniversalSet(const KLVKey& key) override { end(key); }
    void endLocalSet(const KLVKey& key) override { end(key); }
    void endFixedLengthPack(const KLVKey& key) override { end(key); }
    void endVariableLengthPack(const KLVKey& key) override { end(key); }
    void endWrapper(const KLVKey& key) override { end(key); }

    const ElementCounter& triplets() const { return triplets_; }

private:
    bool start(std::uint64_t length) {
        length_ = length;
        return false;
    }
    void end(const KLVKey& key) {
        if (key != klvutil::fillKey) {
            triplets_.add(key, length_);
        }
    }

    std::uint64_t length_ = 0; ///< of the triplet that started last
    ElementCounter triplets_;
};

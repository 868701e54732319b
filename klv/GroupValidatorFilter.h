#pragma once

#include <cstdint>
#include <vector>

#include "klv/KLVFilter.h"
#include "util/Api.h"

namespace bryx {

/// Sees to it that the sender of events keeps to the lengths it announced: that items come in sets and packs of their
/// kind and fill them exactly, that values have the octets announced, and that every end belongs to the last start. For
/// use in front of a writer; a reader's events are so by nature.
///
/// Events require "valid group item": an item of the group that is open, which has room for it; "complete value",
/// "complete group": all octets announced have come when it ends; and "matching end of KLV triplet". What the next
/// handler does not want is not counted.
class BRYX_API GroupValidatorFilter : public DullKLVFilter {
public:
    ~GroupValidatorFilter() override;

    /// Whether no triplet is open.
    bool isComplete() const noexcept { return open_.empty(); }

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
    void value(const std::uint8_t* data, std::uint64_t size) override;

private:
    enum class Kind : std::uint8_t { Value, Triplets, LocalSet, Pack, LocalItem, PackItem };
    struct Open {
        Kind kind;
        KLVKey key;        ///< of a triplet
        std::uint32_t tag; ///< of a local item
        std::uint64_t left;
        bool isKnown;
        bool isWanted;
        KLVFieldForm tagForm;
        KLVFieldForm lengthForm;
    };

    std::uint64_t itemHead(KLVFieldForm form, std::uint64_t length) const;
    void take(std::uint64_t size);
    void startTriplet(Kind kind, const KLVKey& key, std::uint64_t length, bool hasLength = true);
    bool wanted(bool isWanted);
    Open ending(Kind kind);
    void endTriplet(Kind kind, const KLVKey& key);

    std::vector<Open> open_;
    std::uint8_t form_ = 0x83;
};

} // namespace bryx

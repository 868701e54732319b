#pragma once

#include <cstdint>
#include <ios>

#include "klv/KLVFilter.h"
#include "klv/Locator.h"
#include "util/Api.h"

namespace bryx {

/// Where the KLV alignment grid of a partition begins: at the first octet of its pack (ST 377-1). Shared by all
/// that write to one stream.
struct KLVGrid {
    std::streamoff origin = 0;
};

/// Writes fill items behind what passes, for a length that is fixed or an end that is aligned: a filled item is whatever
/// passes between its start and its end.
class BRYX_API KLVFiller : public DullKLVFilter {
public:
    /// What fill is for.
    enum class Mode : std::uint8_t {
        Alignment = 0,  ///< a filled item ends at a multiple of the alignment, counted from the origin of the grid
        FixedLength = 1 ///< a filled item has the padded length
    };

    /// @param grid outlives the filler
    explicit KLVFiller(const KLVGrid& grid) : grid_(grid) {}
    ~KLVFiller() override;
    KLVFiller(const KLVFiller&) = delete;
    KLVFiller& operator=(const KLVFiller&) = delete;

    /// The locator tells where in the output the filler is.
    void setLocator(const Locator& locator) override;
    /// Requires "locator is present".
    virtual const Locator& getLocator() const;

    /// Takes effect when a filled item ends. Requires in fixed-length mode "padded length is multiple of alignment".
    /// @param alignment octets; 0 for none
    /// @param paddedLength octets of a filled item with its fill; counts in fixed-length mode alone
    virtual void setPadding(Mode mode, std::uint64_t alignment, std::uint64_t paddedLength);
    virtual Mode getMode() const { return mode_; }
    virtual std::uint64_t getAlignment() const { return alignment_; }
    virtual std::uint64_t getPaddedLength() const { return paddedLength_; }

    /// Requires "not in filled item".
    virtual void startFilledItem();

    /// Writes the fill. Requires "in filled item", and in fixed-length mode "achievable padded length": that of what
    /// passed, or longer by at least the key and the length of a fill item.
    virtual void endFilledItem();

    bool isInFilledItem() const noexcept { return inFilledItem_; }

    /// Octets that are to follow what is aligned before the grid is met, as those of a key and a length whose value is to
    /// be aligned. 0 unless set.
    void setExtraSize(std::uint64_t size) { extraSize_ = size; }

    /// The BER form of the lengths of fill items: 0x83 unless set. A fill item that needs a longer one gets 0x87. Requires
    /// "valid BER length form".
    void setFillLengthForm(std::uint8_t form);

    // The form of lengths is told again after a fill item.
    void berLengthForm(std::uint8_t form) override;

private:
    void writeFill(std::uint64_t size);
    std::uint64_t position() const;

    const KLVGrid& grid_;
    const Locator* locator_ = nullptr;
    Mode mode_ = Mode::Alignment;
    std::uint64_t alignment_ = 0;
    std::uint64_t paddedLength_ = 0;
    std::uint64_t extraSize_ = 0;
    std::uint8_t fillForm_ = 0x83;
    std::uint8_t form_ = 0; ///< told by the sender; 0 for none
    bool inFilledItem_ = false;
    std::uint64_t start_ = 0;
};

namespace klvutil {

/// The octets of the smallest fill item, key and length of BER form @p form included, that makes @p size octets end at a
/// multiple of @p alignment; 0 if they do without one.
BRYX_API std::uint64_t fillSize(std::uint64_t size, std::uint64_t alignment, std::uint8_t form);

} // namespace klvutil

} // namespace bryx

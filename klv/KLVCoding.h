#pragma once

#include <cstdint>
#include <iosfwd>

#include "klv/KLVKey.h"
#include "util/Api.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

/// @file
/// What ST 336 says of the form of a triplet: how its key tells the coding of its value, and how lengths are written.

namespace bryx {

/// The width of the tags of a local set and of the lengths of the items of a local set or variable-length pack.
enum class KLVFieldForm : std::uint8_t {
    OneOctet = 0,
    TwoOctets = 1,
    FourOctets = 2,
    BER = 3 ///< lengths only: short or long BER form
};

/// Octet 5 of a wrapper's key.
enum class KLVWrapperKind : std::uint8_t { Simple = 1, Complex = 2 };

/// How the value of a triplet is coded, as its key tells.
enum class KLVCoding : std::uint8_t {
    None, ///< not a SMPTE key, or a coding that ST 336 does not define
    IndividualItem,
    UniversalSet,
    LocalSet,
    VariableLengthPack,
    FixedLengthPack,
    Wrapper,
    Label
};

namespace klvutil {

/// The octets of a key.
inline constexpr std::uint64_t keySize = 16;

/// The length of a triplet whose length is not known yet (all bits set).
inline constexpr std::uint64_t unknownLength = ~std::uint64_t{0};

/// The BER length form that leaves the choice to the writer; also "none reported yet".
inline constexpr std::uint8_t automaticBERLengthForm = 0x80;

/// Whether @p key begins as every SMPTE key does: 06 0E 2B 34.
constexpr bool isSMPTEKey(const KLVKey& key) noexcept {
    return util::loadBigEndian<std::uint32_t>(key.octets.data()) == 0x060E2B34U;
}

/// The coding that octets 4 and 5 of @p key tell; KLVCoding::None when they tell none or it is not a SMPTE key.
constexpr KLVCoding classify(const KLVKey& key) noexcept {
    if (!isSMPTEKey(key)) {
        return KLVCoding::None;
    }
    switch (key[4]) {
    case 1:
        return KLVCoding::IndividualItem;
    case 2:
        switch (key[5] & 0x07U) {
        case 1:
            return KLVCoding::UniversalSet;
        case 3:
            return KLVCoding::LocalSet;
        case 4:
            return KLVCoding::VariableLengthPack;
        case 5:
            return KLVCoding::FixedLengthPack;
        default:
            return KLVCoding::None;
        }
    case 3:
        return KLVCoding::Wrapper;
    case 4:
        return KLVCoding::Label;
    default:
        return KLVCoding::None;
    }
}

/// The form of the lengths of the items in the local set or variable-length pack with @p key: bits 5 and 6 of octet 5.
BRYX_API KLVFieldForm itemLengthForm(const KLVKey& key) noexcept;

/// The form of the tags in the local set with @p key: bits 3 and 4 of octet 5. KLVFieldForm::BER stands for tags in the
/// form of BER object identifiers, which are not implemented.
BRYX_API KLVFieldForm itemTagForm(const KLVKey& key) noexcept;

/// Whether @p form selects a BER length: 1 for the short form, 0x81 to 0x88 for a long one.
constexpr bool isValidBERLengthForm(std::uint8_t form) noexcept {
    return form == 1 || (form >= 0x81 && form <= 0x88);
}

/// The most octets of a BER length field.
inline constexpr std::uint64_t longestBERLengthField = 9;

/// The octets of a BER length field in @p form: 1, or 2 to 9. Requires "valid BER length form".
inline std::uint8_t berLengthFieldSize(std::uint8_t form) {
    util::require(isValidBERLengthForm(form), "valid BER length form");
    return form == 1 ? std::uint8_t{1} : static_cast<std::uint8_t>((form & 0x7FU) + 1);
}

/// The BER length form for @p length: @p form if it can hold that, else 0x87. The automatic form is 0x83 if that can.
constexpr std::uint8_t fittingBERLengthForm(std::uint8_t form, std::uint64_t length) noexcept {
    const std::uint8_t preferred = form == automaticBERLengthForm ? std::uint8_t{0x83} : form;
    const unsigned bits = preferred == 1 ? 7 : 8 * (preferred & 0x7FU);
    return bits >= 64 || length >> bits == 0 ? preferred : std::uint8_t{0x87};
}

/// Writes @p length in BER form @p form to @p field, which has room for 9 octets, and returns the octets written.
/// Requires "valid BER length form" and "enough octets".
BRYX_API std::uint8_t storeBERLength(std::uint8_t* field, std::uint8_t form, std::uint64_t length);

/// The octets of a tag or fixed-width length in @p form. Requires "valid tag type": not KLVFieldForm::BER.
BRYX_API std::uint8_t fieldSize(KLVFieldForm form);

/// Writes a local tag or fixed-width local length, most significant octet first.
///
/// Requires "valid tag type", "enough octets" and "successful write()". The check for enough octets is a 32-bit shift
/// whose count is taken modulo 32, so a field of four octets takes the value 0 alone; MXF uses one and two octets.
BRYX_API void writeField(std::ostream& stream, KLVFieldForm form, std::uint32_t value);

} // namespace klvutil

} // namespace bryx

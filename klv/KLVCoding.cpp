#include "klv/KLVCoding.h"

#include <ostream>

#include "klv/internal/StreamAccess.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace bryx::klvutil {

KLVFieldForm itemLengthForm(const KLVKey& key) noexcept {
    static constexpr KLVFieldForm forms[] = {KLVFieldForm::BER, KLVFieldForm::OneOctet, KLVFieldForm::TwoOctets,
                                             KLVFieldForm::FourOctets};
    return forms[(key[5] >> 5U) & 0x03U];
}

KLVFieldForm itemTagForm(const KLVKey& key) noexcept {
    static constexpr KLVFieldForm forms[] = {KLVFieldForm::OneOctet, KLVFieldForm::BER, KLVFieldForm::TwoOctets,
                                             KLVFieldForm::FourOctets};
    return forms[(key[5] >> 3U) & 0x03U];
}

std::uint8_t storeBERLength(std::uint8_t* field, std::uint8_t form, std::uint64_t length) {
    const std::uint8_t size = berLengthFieldSize(form);
    if (form == 1) {
        util::require(length < 0x80, "enough octets");
        field[0] = static_cast<std::uint8_t>(length);
        return size;
    }
    const unsigned octets = size - 1U;
    util::require(octets == 8 || length >> (8 * octets) == 0, "enough octets");
    field[0] = form;
    util::storeBigEndian(field + 1, length, octets);
    return size;
}

std::uint8_t fieldSize(KLVFieldForm form) {
    switch (form) {
    case KLVFieldForm::OneOctet:
        return 1;
    case KLVFieldForm::TwoOctets:
        return 2;
    case KLVFieldForm::FourOctets:
        return 4;
    default:
        util::failAssertion("valid tag type");
    }
}

void writeField(std::ostream& stream, KLVFieldForm form, std::uint32_t value) {
    const std::uint8_t size = fieldSize(form);
    util::require(value >> ((8U * size) % 32U) == 0, "enough octets");
    std::uint8_t octets[4];
    util::storeBigEndian(octets, value, size);
    util::require(put(stream, octets, size) && stream.good(), "successful write()");
}

} // namespace bryx::klvutil

#include "mxf/essence/MXFGCSystemCoder.h"

#include "klv/KLVSending.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace {

std::uint64_t fieldSize(KLVFieldForm form, std::uint64_t value, std::uint8_t berForm) {
    if (form == KLVFieldForm::BER) {
        return klvutil::berLengthFieldSize(berForm);
    }
    const std::uint8_t size = klvutil::fieldSize(form);
    util::require(value >> (8U * size) == 0, "correct local item type and length");
    return size;
}

/// The octets of @p items, each with its length and, in a set, its tag.
std::uint64_t sizeOf(const MXFGCItems& items, const KLVKey& key, bool hasTags, std::uint8_t berForm) {
    std::uint64_t size = 0;
    for (const MXFGCItem& item : items) {
        size += item.size + fieldSize(klvutil::itemLengthForm(key), item.size, berForm) +
                (hasTags ? fieldSize(klvutil::itemTagForm(key), item.tag, berForm) : 0);
    }
    return size;
}

} // namespace

MXFGCSystemCoder::~MXFGCSystemCoder() = default;

void MXFGCSystemCoder::setLengthForm(std::uint8_t form) {
    util::require(form == klvutil::automaticBERLengthForm || klvutil::isValidBERLengthForm(form),
                  "valid BER length form");
    form_ = form;
}

bool MXFGCSystemCoder::wantsSystemElement(const KLVKey& /*key*/) {
    return true;
}

void MXFGCSystemCoder::localSet(const KLVKey& key, const MXFGCItems& items) {
    const std::uint8_t form = klvutil::fittingBERLengthForm(form_, sizeOf(items, key, true, 0x83));
    const std::uint64_t size = sizeOf(items, key, true, form);
    receiver_.berLengthForm(form);
    if (receiver_.startLocalSet(key, size, klvutil::itemTagForm(key), klvutil::itemLengthForm(key))) {
        for (const MXFGCItem& item : items) {
            if (receiver_.startLocalItem(item.tag, item.size)) {
                klvutil::sendValue(receiver_, item.data, item.size);
            }
            receiver_.endLocalItem(item.tag);
        }
    }
    receiver_.endLocalSet(key);
}

void MXFGCSystemCoder::fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) {
    receiver_.berLengthForm(klvutil::fittingBERLengthForm(form_, size));
    if (receiver_.startFixedLengthPack(key, size)) {
        klvutil::sendValue(receiver_, data, size);
    }
    receiver_.endFixedLengthPack(key);
}

void MXFGCSystemCoder::variableLengthPack(const KLVKey& key, const MXFGCItems& items) {
    const std::uint8_t form = klvutil::fittingBERLengthForm(form_, sizeOf(items, key, false, 0x83));
    const std::uint64_t size = sizeOf(items, key, false, form);
    receiver_.berLengthForm(form);
    if (receiver_.startVariableLengthPack(key, size, klvutil::itemLengthForm(key))) {
        for (const MXFGCItem& item : items) {
            if (receiver_.startVariableLengthPackItem(item.size)) {
                klvutil::sendValue(receiver_, item.data, item.size);
            }
            receiver_.endVariableLengthPackItem();
        }
    }
    receiver_.endVariableLengthPack(key);
}

} // namespace bryx

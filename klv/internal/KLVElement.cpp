#include "klv/internal/KLVElement.h"

#include "klv/KLVCoding.h"
#include "klv/KLVHandler.h"
#include "klv/internal/KLVWalk.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = klvutil::findings;

std::uint64_t KLVElement::readLength() {
    const std::uint64_t length = walk_.readBERLength();
    walk_.input.showTriplet();
    return length;
}

void KLVIndividualItem::parse() {
    const std::uint64_t length = readLength();
    walk_.walkContent(
        length, [&] { return walk_.handler.startIndividualItem(key_, length); }, [&] { walk_.deliver(length); },
        [&] { walk_.handler.endIndividualItem(key_); });
}

void KLVLabel::parse() {
    walk_.input.showTriplet();
    walk_.handler.startLabel(key_);
    walk_.handler.endLabel(key_);
}

void KLVUniversalSet::parse() {
    const std::uint64_t length = readLength();
    walk_.walkContent(
        length, [&] { return walk_.handler.startUniversalSet(key_, length); },
        [&] { walk_.walkContainer(length, findings::incorrectUniversalSetLength, [&] { walk_.walkTriplet(); }); },
        [&] { walk_.handler.endUniversalSet(key_); });
}

void KLVLocalSet::parse() {
    const std::uint64_t length = readLength();
    const KLVFieldForm tagForm = klvutil::itemTagForm(key_);
    if (tagForm == KLVFieldForm::BER) {
        walk_.input.fail(findings::unimplementedCoding);
    }
    const KLVFieldForm lengthForm = klvutil::itemLengthForm(key_);
    const auto item = [&] {
        const auto tag = static_cast<std::uint32_t>(walk_.readField(tagForm));
        const std::uint64_t size = walk_.readField(lengthForm);
        walk_.walkContent(
            size, [&] { return walk_.handler.startLocalItem(tag, size); }, [&] { walk_.deliver(size); },
            [&] { walk_.handler.endLocalItem(tag); });
    };
    walk_.walkContent(
        length, [&] { return walk_.handler.startLocalSet(key_, length, tagForm, lengthForm); },
        [&] { walk_.walkContainer(length, findings::incorrectLocalSetLength, item); },
        [&] { walk_.handler.endLocalSet(key_); });
}

void KLVFixedLengthPack::parse() {
    const std::uint64_t length = readLength();
    walk_.walkContent(
        length, [&] { return walk_.handler.startFixedLengthPack(key_, length); }, [&] { walk_.deliver(length); },
        [&] { walk_.handler.endFixedLengthPack(key_); });
}

void KLVVariableLengthPack::parse() {
    util::require(klvutil::classify(key_) == KLVCoding::VariableLengthPack, "valid variable length pack key");
    // Bits 3 and 4 tell the tags of a local set; a pack has none.
    if ((key_[5] & 0x18U) != 0) {
        walk_.input.fail(findings::invalidVariableLengthPackType);
    }
    const std::uint64_t length = readLength();
    const KLVFieldForm lengthForm = klvutil::itemLengthForm(key_);
    const auto item = [&] {
        const std::uint64_t size = walk_.readField(lengthForm);
        walk_.walkContent(
            size, [&] { return walk_.handler.startVariableLengthPackItem(size); }, [&] { walk_.deliver(size); },
            [&] { walk_.handler.endVariableLengthPackItem(); });
    };
    walk_.walkContent(
        length, [&] { return walk_.handler.startVariableLengthPack(key_, length, lengthForm); },
        [&] { walk_.walkContainer(length, findings::incorrectVariableLengthPackLength, item); },
        [&] { walk_.handler.endVariableLengthPack(key_); });
}

void KLVWrapper::parse() {
    util::require(klvutil::classify(key_) == KLVCoding::Wrapper, "valid wrapper key");
    const auto kind = static_cast<KLVWrapperKind>(key_[5]);
    if (kind != KLVWrapperKind::Simple && kind != KLVWrapperKind::Complex) {
        walk_.input.fail(findings::invalidWrapperType);
    }
    const std::uint64_t length = readLength();
    walk_.walkContent(
        length, [&] { return walk_.handler.startWrapper(key_, length, kind); }, [&] { walk_.deliver(length); },
        [&] { walk_.handler.endWrapper(key_); });
}

} // namespace bryx

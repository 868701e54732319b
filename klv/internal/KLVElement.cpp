#include "klv/internal/KLVElement.h"

#include <cstring>

#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace findings = klvutil::findings;

namespace {

struct BERLength {
    std::uint8_t form; ///< may be invalid; the length is 0 then
    std::uint64_t length;
};

/// @param source has a member number(n), which reads a number of n octets
template <class Source>
BERLength readBERField(Source& source) {
    const auto first = static_cast<std::uint8_t>(source.number(1));
    if (first < 0x80) {
        return {1, first};
    }
    return {first, klvutil::isValidBERLengthForm(first) ? source.number(first & 0x7FU) : 0};
}

/// A length field that has been read ahead, with as much as the longest has.
class FieldAhead {
public:
    explicit FieldAhead(const std::uint8_t* from) : next(from) {}
    const std::uint8_t* next;

    std::uint64_t number(unsigned octets) {
        const std::uint64_t result = util::loadLeadingOctets(next, octets);
        next += octets;
        return result;
    }
};

} // namespace

std::uint64_t KLVWalk::number(unsigned octets) {
    requireLeft(octets);
    return input.readNumber(octets);
}

inline void KLVWalk::tellForm(std::uint8_t form) {
    if (form != lastForm_) {
        lastForm_ = form;
        handler.berLengthForm(form);
    }
}

std::uint64_t KLVWalk::readBERLength() {
    const BERLength field = readBERField(*this);
    if (!klvutil::isValidBERLengthForm(field.form)) {
        input.fail(findings::invalidBERLongForm);
    }
    // In a container, an item that does not fit is still told of, but not one of the length that stands for "unknown".
    if (field.length > left() && (depth_ == 0 || field.length == klvutil::unknownLength)) {
        input.fail(*overrun_);
    }
    tellForm(field.form);
    return field.length;
}

void KLVWalk::walkTriplet() {
    requireLeft(klvutil::keySize);
    const std::streamoff outer = input.triplet();
    input.beginTriplet(input.position());
    const KLVKey key = input.readKey();
    switch (klvutil::classify(key)) {
    case KLVCoding::IndividualItem:
        KLVIndividualItem(*this, key).parse();
        break;
    case KLVCoding::UniversalSet:
        KLVUniversalSet(*this, key).parse();
        break;
    case KLVCoding::LocalSet:
        KLVLocalSet(*this, key).parse();
        break;
    case KLVCoding::VariableLengthPack:
        KLVVariableLengthPack(*this, key).parse();
        break;
    case KLVCoding::FixedLengthPack:
        KLVFixedLengthPack(*this, key).parse();
        break;
    case KLVCoding::Wrapper:
        KLVWrapper(*this, key).parse();
        break;
    case KLVCoding::Label:
        KLVLabel(*this, key).parse();
        break;
    case KLVCoding::None:
        input.fail(klvutil::isSMPTEKey(key) ? findings::unimplementedCoding : findings::invalidKey);
    }
    input.beginTriplet(depth_ == 0 ? input.position() : outer);
    input.showTriplet();
}

/// Before it, the input shows the position of what comes next: that of the triplet.
inline bool KLVWalk::walkItemAhead() {
    const std::uint8_t* const head = input.peekAhead(klvutil::keySize + klvutil::longestBERLengthField);
    if (itemHandler_ == nullptr || head == nullptr) {
        return false;
    }
    KLVKey key;
    std::memcpy(key.octets.data(), head, klvutil::keySize);
    FieldAhead field(head + klvutil::keySize);
    const auto [form, length] = readBERField(field);
    const std::uint64_t size = static_cast<std::uint64_t>(field.next - head) + length;
    if (klvutil::classify(key) != KLVCoding::IndividualItem || !klvutil::isValidBERLengthForm(form) ||
        length > KLVInput::pieceSize || size > left() || input.peekAhead(size) == nullptr) {
        return false;
    }
    tellForm(form);
    input.passAhead(size);
    itemHandler_->individualItem(key, field.next, length);
    input.beginTriplet(input.position());
    input.showTriplet();
    return true;
}

void KLVWalk::walkStream(std::streamoff end, const bool& stop) {
    while (!stop && !(end != -1 && input.position() >= end) && !input.atEnd()) {
        if (!walkItemAhead()) {
            walkTriplet();
        }
        util::require(input.good(), "successful parse() implies input stream is good");
    }
}

std::uint64_t KLVWalk::readField(KLVFieldForm form) {
    if (form == KLVFieldForm::BER) {
        return readBERLength();
    }
    return number(klvutil::fieldSize(form));
}

template <class Item>
void KLVWalk::walkContainer(std::uint64_t length, const klvutil::Finding& finding, Item item) {
    if (depth_ == maxDepth) {
        input.fail(findings::nestingTooDeep);
    }
    const std::streamoff outerEnd = end_;
    const klvutil::Finding* const outerOverrun = overrun_;
    ++depth_;
    end_ = input.position() + static_cast<std::streamoff>(length);
    overrun_ = &finding;
    while (left() > 0) {
        item();
    }
    --depth_;
    end_ = outerEnd;
    overrun_ = outerOverrun;
}

template <class Start, class Content, class End>
void KLVWalk::walkContent(std::uint64_t length, Start start, Content content, End end) {
    const bool fits = length <= left();
    const bool wanted = start();
    if (fits) {
        if (wanted) {
            content();
        } else {
            input.skip(length);
        }
    }
    end();
    if (!fits) {
        input.fail(*overrun_);
    }
}

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

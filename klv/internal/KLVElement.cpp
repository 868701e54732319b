#include "klv/internal/KLVElement.h"

#include "util/assertion_failure.h"

namespace findings = klvutil::findings;

inline std::uint64_t KLVWalk::readBERLength() {
    const std::uint64_t room = left();
    requireRoom(1, room);
    // Looked at as a whole if it can be, and passed over once.
    const std::uint8_t* const ahead = input.peekAhead(klvutil::longestBERLengthField);
    const auto pass = [&](std::uint64_t size) {
        if (ahead != nullptr) {
            input.passAhead(size);
        }
    };
    std::uint8_t form = ahead != nullptr ? *ahead : input.readOctet();
    std::uint64_t length = form;
    std::uint64_t size = 1;
    if (form < 0x80) {
        form = 1;
    } else {
        const unsigned octets = form & 0x7FU;
        size += octets;
        if (!klvutil::isValidBERLengthForm(form) || size > room) {
            pass(1);
            input.fail(klvutil::isValidBERLengthForm(form) ? *overrun_ : findings::invalidBERLongForm);
        }
        length = ahead != nullptr ? util::loadLeadingOctets(ahead + 1, octets) : input.readNumber(octets);
    }
    pass(size);
    // In a container, an item that does not fit is still told of, but not one of the length that stands for "unknown".
    if (length > room - size && (depth_ == 0 || length == klvutil::unknownLength)) {
        input.fail(*overrun_);
    }
    if (form != lastForm_) {
        lastForm_ = form;
        handler.berLengthForm(form);
    }
    return length;
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

inline std::uint64_t KLVElement::readLength() {
    const std::uint64_t length = walk_.readBERLength();
    walk_.input.showTriplet();
    return length;
}

inline void KLVIndividualItem::parse() {
    const std::uint64_t length = readLength();
    if (const std::uint8_t* const value = walk_.valueAhead(length)) {
        walk_.handler.individualItem(key_, value, length);
        return walk_.input.passAhead(length);
    }
    walk_.walkContent(
        length, [&] { return walk_.handler.startIndividualItem(key_, length); }, [&] { walk_.deliver(length); },
        [&] { walk_.handler.endIndividualItem(key_); });
}

/// Walks a triplet that is no individual item. Most are.
void KLVWalk::walkOther(KLVCoding coding, const KLVKey& key) {
    switch (coding) {
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
    default:
        input.fail(klvutil::isSMPTEKey(key) ? findings::unimplementedCoding : findings::invalidKey);
    }
}

inline void KLVWalk::walkTriplet() {
    requireRoom(klvutil::keySize, left());
    const std::streamoff outer = input.triplet();
    input.beginTriplet(input.position());
    const KLVKey key = input.readKey();
    const KLVCoding coding = klvutil::classify(key);
    if (coding == KLVCoding::IndividualItem) {
        KLVIndividualItem(*this, key).parse();
    } else {
        walkOther(coding, key);
    }
    input.beginTriplet(depth_ == 0 ? input.position() : outer);
    input.showTriplet();
}

void KLVWalk::walkStream(std::streamoff end, const bool& stop) {
    while (!stop && !(end != -1 && input.position() >= end) && !input.atEnd()) {
        walkTriplet();
        util::require(input.good(), "successful parse() implies input stream is good");
    }
}

std::uint64_t KLVWalk::readField(KLVFieldForm form) {
    if (form == KLVFieldForm::BER) {
        return readBERLength();
    }
    const unsigned octets = klvutil::fieldSize(form);
    requireRoom(octets, left());
    return input.readNumber(octets);
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

#include "klv/internal/KLVWalk.h"

#include <cstring>

#include "klv/internal/KLVElement.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace bryx {

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

} // namespace bryx

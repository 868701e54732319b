#include "mxf/structure/MXFPrimedSetParser.h"

#include <utility>

#include "mxf/structure/MXFPrimerFindings.h"
#include "mxf/structure/MXFTripletPosition.h"

namespace bryx {

namespace findings = mxfutil::findings;

namespace {

/// Up to this length a value is read straight into its vector. A longer one comes in pieces and grows with them, since
/// the length may be no more than a claim.
constexpr std::uint64_t longestAtOnce = 65536;

} // namespace

MXFPrimedSetParser::MXFPrimedSetParser() {
    setHandler(&noNext_);
}

MXFPrimedSetParser::~MXFPrimedSetParser() = default;

bool MXFPrimedSetParser::allowsBERLengths(const KLVKey& /*key*/) const {
    return false;
}

void MXFPrimedSetParser::setLocator(const Locator& locator) {
    locator_ = &locator;
    isLocated_ = true;
    next().setLocator(locator);
}

void MXFPrimedSetParser::startStream(bool accurateLengths) {
    util::require(std::exchange(isLocated_, false) || state_ == State::BeforeStart, "before start");
    util::require(locator_ != nullptr, "has locator");
    state_ = State::BetweenSets;
    reporter_.clear();
    next().startStream(accurateLengths);
}

void MXFPrimedSetParser::endStream(bool stopped) {
    state_ = State::BeforeStart;
    locator_ = nullptr;
    next().endStream(stopped);
}

void MXFPrimedSetParser::berLengthForm(std::uint8_t form) {
    form_ = form;
    next().berLengthForm(form);
}

bool MXFPrimedSetParser::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                       KLVFieldForm lengthForm) {
    if (tagForm == KLVFieldForm::TwoOctets) {
        util::require(state_ == State::BetweenSets, "before primed set");
        if (wantsSet(key)) {
            if (lengthForm != KLVFieldForm::TwoOctets && !(lengthForm == KLVFieldForm::BER && allowsBERLengths(key))) {
                reporter_.report(errorHandler_, findings::nonStandardItemLength, key);
            }
            const auto position = MXFTripletPosition::of(*locator_, form_, length);
            set_.key = key;
            set_.position = position.start;
            set_.length = position.end - position.start;
            set_.properties.clear();
            property_ = nullptr;
            state_ = State::InPrimedSet;
            return true;
        }
    }
    return next().startLocalSet(key, length, tagForm, lengthForm);
}

void MXFPrimedSetParser::endLocalSet(const KLVKey& key) {
    if (state_ != State::InPrimedSet) {
        return next().endLocalSet(key);
    }
    state_ = State::BetweenSets;
    primedSet(set_);
}

bool MXFPrimedSetParser::startLocalItem(std::uint32_t tag, std::uint64_t length) {
    if (state_ != State::InPrimedSet) {
        return next().startLocalItem(tag, length);
    }
    const auto shortTag = static_cast<std::uint16_t>(tag);
    const MXFPrimer& tags = primer();
    const auto entry = tags.find(shortTag);
    const KLVKey* const label = entry != tags.end() ? &entry->second : unknownTag(shortTag);
    property_ = nullptr;
    if (label == nullptr) {
        return false;
    }
    const auto [property, inserted] = set_.properties.try_emplace(*label);
    if (!inserted) {
        reporter_.report(errorHandler_, findings::repeatedProperty, tag, mxfutil::tagText(tag));
        return false;
    }
    property_ = &property->second;
    return true;
}

void MXFPrimedSetParser::endLocalItem(std::uint32_t tag) {
    if (state_ != State::InPrimedSet) {
        next().endLocalItem(tag);
    }
}

bool MXFPrimedSetParser::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                        std::uint8_t*& buffer) {
    if (state_ != State::InPrimedSet) {
        return next().getValueBuffer(length, offset, size, buffer);
    }
    util::require(property_ != nullptr, "in primed set");
    if (length <= longestAtOnce) {
        property_->resize(length);
        buffer = property_->data();
    }
    return true;
}

void MXFPrimedSetParser::value(const std::uint8_t* data, std::uint64_t size) {
    if (state_ != State::InPrimedSet) {
        return next().value(data, size);
    }
    util::require(property_ != nullptr, "in primed set");
    if (data != property_->data()) {
        property_->insert(property_->end(), data, data + size);
    }
}

} // namespace bryx

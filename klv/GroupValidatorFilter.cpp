#include "klv/GroupValidatorFilter.h"

namespace bryx {

using util::require;

GroupValidatorFilter::~GroupValidatorFilter() = default;

void GroupValidatorFilter::startStream(bool accurateLengths) {
    open_.clear();
    next().startStream(accurateLengths);
}

void GroupValidatorFilter::endStream(bool stopped) {
    require(open_.empty(), "matching end of KLV triplet");
    next().endStream(stopped);
}

void GroupValidatorFilter::berLengthForm(std::uint8_t form) {
    next().berLengthForm(form);
    form_ = form;
}

/// Takes octets from what is open.
void GroupValidatorFilter::take(std::uint64_t size) {
    if (!open_.empty() && open_.back().isKnown) {
        require(size <= open_.back().left, "valid group item");
        open_.back().left -= size;
    }
}

void GroupValidatorFilter::startTriplet(Kind kind, const KLVKey& key, std::uint64_t length, bool hasLength) {
    const bool isKnown = length != klvutil::unknownLength;
    require(open_.empty() || (open_.back().kind == Kind::Triplets && open_.back().isWanted), "valid group item");
    take(klvutil::keySize + (hasLength ? klvutil::berLengthFieldSize(form_) : 0));
    take(isKnown ? length : 0);
    open_.push_back({kind, key, 0, length, isKnown, false, KLVFieldForm::BER, KLVFieldForm::BER});
}

bool GroupValidatorFilter::wanted(bool isWanted) {
    open_.back().isWanted = isWanted;
    return isWanted;
}

GroupValidatorFilter::Open GroupValidatorFilter::ending(Kind kind) {
    require(!open_.empty() && open_.back().kind == kind, "matching end of KLV triplet");
    const Open ended = open_.back();
    open_.pop_back();
    const bool isGroup = kind == Kind::Triplets || kind == Kind::LocalSet || kind == Kind::Pack;
    require(!ended.isKnown || !ended.isWanted || ended.left == 0, isGroup ? "complete group" : "complete value");
    return ended;
}

void GroupValidatorFilter::endTriplet(Kind kind, const KLVKey& key) {
    require(ending(kind).key == key, "matching end of KLV triplet");
}

bool GroupValidatorFilter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    startTriplet(Kind::Value, key, length);
    return wanted(next().startIndividualItem(key, length));
}

void GroupValidatorFilter::endIndividualItem(const KLVKey& key) {
    endTriplet(Kind::Value, key);
    next().endIndividualItem(key);
}

bool GroupValidatorFilter::startLabel(const KLVKey& key) {
    startTriplet(Kind::Value, key, 0, false);
    return wanted(next().startLabel(key));
}

void GroupValidatorFilter::endLabel(const KLVKey& key) {
    endTriplet(Kind::Value, key);
    next().endLabel(key);
}

bool GroupValidatorFilter::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    startTriplet(Kind::Triplets, key, length);
    return wanted(next().startUniversalSet(key, length));
}

void GroupValidatorFilter::endUniversalSet(const KLVKey& key) {
    endTriplet(Kind::Triplets, key);
    next().endUniversalSet(key);
}

bool GroupValidatorFilter::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                         KLVFieldForm lengthForm) {
    startTriplet(Kind::LocalSet, key, length);
    open_.back().tagForm = tagForm;
    open_.back().lengthForm = lengthForm;
    return wanted(next().startLocalSet(key, length, tagForm, lengthForm));
}

void GroupValidatorFilter::endLocalSet(const KLVKey& key) {
    endTriplet(Kind::LocalSet, key);
    next().endLocalSet(key);
}

std::uint64_t GroupValidatorFilter::itemHead(KLVFieldForm form, std::uint64_t length) const {
    require(form == KLVFieldForm::BER || length >> (8U * klvutil::fieldSize(form)) == 0, "valid group item");
    return form == KLVFieldForm::BER ? klvutil::berLengthFieldSize(form_) : klvutil::fieldSize(form);
}

bool GroupValidatorFilter::startLocalItem(std::uint32_t tag, std::uint64_t length) {
    require(!open_.empty() && open_.back().kind == Kind::LocalSet && open_.back().isWanted, "valid group item");
    const Open& set = open_.back();
    take(klvutil::fieldSize(set.tagForm) + itemHead(set.lengthForm, length));
    take(length);
    open_.push_back({Kind::LocalItem, {}, tag, length, true, false, KLVFieldForm::BER, KLVFieldForm::BER});
    return wanted(next().startLocalItem(tag, length));
}

void GroupValidatorFilter::endLocalItem(std::uint32_t tag) {
    require(ending(Kind::LocalItem).tag == tag, "matching end of KLV triplet");
    next().endLocalItem(tag);
}

bool GroupValidatorFilter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    startTriplet(Kind::Value, key, length);
    return wanted(next().startFixedLengthPack(key, length));
}

void GroupValidatorFilter::endFixedLengthPack(const KLVKey& key) {
    endTriplet(Kind::Value, key);
    next().endFixedLengthPack(key);
}

bool GroupValidatorFilter::startVariableLengthPack(const KLVKey& key, std::uint64_t length,
                                                   KLVFieldForm itemLengthForm) {
    startTriplet(Kind::Pack, key, length);
    open_.back().lengthForm = itemLengthForm;
    return wanted(next().startVariableLengthPack(key, length, itemLengthForm));
}

void GroupValidatorFilter::endVariableLengthPack(const KLVKey& key) {
    endTriplet(Kind::Pack, key);
    next().endVariableLengthPack(key);
}

bool GroupValidatorFilter::startVariableLengthPackItem(std::uint64_t length) {
    require(!open_.empty() && open_.back().kind == Kind::Pack && open_.back().isWanted, "valid group item");
    take(itemHead(open_.back().lengthForm, length));
    take(length);
    open_.push_back({Kind::PackItem, {}, 0, length, true, false, KLVFieldForm::BER, KLVFieldForm::BER});
    return wanted(next().startVariableLengthPackItem(length));
}

void GroupValidatorFilter::endVariableLengthPackItem() {
    ending(Kind::PackItem);
    next().endVariableLengthPackItem();
}

bool GroupValidatorFilter::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) {
    startTriplet(Kind::Value, key, length);
    return wanted(next().startWrapper(key, length, kind));
}

void GroupValidatorFilter::endWrapper(const KLVKey& key) {
    endTriplet(Kind::Value, key);
    next().endWrapper(key);
}

void GroupValidatorFilter::value(const std::uint8_t* data, std::uint64_t size) {
    require(!open_.empty() && open_.back().isWanted, "valid group item");
    take(size);
    next().value(data, size);
}

} // namespace bryx

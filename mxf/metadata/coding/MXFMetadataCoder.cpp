#include "mxf/metadata/coding/MXFMetadataCoder.h"

#include "klv/KLVSending.h"
#include "mxf/structure/MXFPrimer.h"
#include "util/assertion_failure.h"

namespace bryx {

using util::require;

MXFMetadataCoder::MXFMetadataCoder(KLVHandler& next) : next_(next) {}

MXFMetadataCoder::~MXFMetadataCoder() = default;

void MXFMetadataCoder::setBERLengthForm(std::uint8_t form) {
    require(klvutil::isValidBERLengthForm(form), "valid BER length form");
    form_ = form;
}

void MXFMetadataCoder::startMetadata() {
    require(state_ == State::BeforeStart, "before start");
    state_ = State::BeforePrimer;
    tags_.clear();
}

void MXFMetadataCoder::endMetadata() {
    state_ = State::BeforeStart;
}

bool MXFMetadataCoder::handlesSet(const KLVKey& /*key*/) {
    return true;
}

void MXFMetadataCoder::codePrimer(const Primer& /*primer*/) {}

void MXFMetadataCoder::primer(const Primer& primer) {
    require(state_ == State::BeforePrimer, "before primer");
    codePrimer(primer);
    for (const auto& [tag, label] : primer) {
        tags_.emplace(label, tag);
    }
    state_ = State::BeforePrimedSet;
}

void MXFMetadataCoder::sendLengthForm(std::uint64_t length) {
    next_.berLengthForm(klvutil::fittingBERLengthForm(form_, length));
}

void MXFMetadataCoder::primedSet(MXFPrimedSet& set) {
    require(state_ == State::BeforePrimedSet, "before primed set");
    require((set.key[5] & 0x07U) == 3 && ((set.key[5] >> 3U) & 3U) == 2, "supported tag type");
    const KLVFieldForm lengthForm = klvutil::itemLengthForm(set.key);
    const auto lengthFieldSize = [&](std::uint64_t size) -> std::uint64_t {
        if (lengthForm == KLVFieldForm::BER) {
            return klvutil::berLengthFieldSize(klvutil::fittingBERLengthForm(form_, size));
        }
        const std::uint64_t octets = klvutil::fieldSize(lengthForm);
        require(size >> (8 * octets) == 0, "property fits item length");
        return octets;
    };
    std::uint64_t length = 0;
    for (const auto& [label, octets] : set.properties) {
        require(tags_.find(label) != tags_.end(), "valid property key");
        length += 2 + lengthFieldSize(octets.size()) + octets.size();
    }
    sendLengthForm(length);
    if (next_.startLocalSet(set.key, length, KLVFieldForm::TwoOctets, lengthForm)) {
        for (const auto& [label, octets] : set.properties) {
            if (lengthForm == KLVFieldForm::BER) {
                sendLengthForm(octets.size());
            }
            klvutil::sendLocalItem(next_, tags_.find(label)->second, octets);
        }
    }
    next_.endLocalSet(set.key);
}

MXFFormatMetadataCoder::~MXFFormatMetadataCoder() = default;

void MXFFormatMetadataCoder::codePrimer(const Primer& primer) {
    MXFPrimer byTag;
    std::map<KLVKey, std::uint16_t> byLabel;
    for (const auto& [tag, label] : primer) {
        require(byLabel.emplace(label, tag).second, "consistent primer key -> tag");
        require(byTag.emplace(tag, label).second, "consistent primer tag -> key");
    }
    const std::vector<std::uint8_t> octets = mxfutil::writePrimerPack(byTag);
    sendLengthForm(octets.size());
    if (next().startFixedLengthPack(mxfutil::primerPackKey, octets.size())) {
        klvutil::sendValue(next(), octets.data(), octets.size());
    }
    next().endFixedLengthPack(mxfutil::primerPackKey);
}

} // namespace bryx

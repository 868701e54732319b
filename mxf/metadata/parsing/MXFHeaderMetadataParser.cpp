#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "mxf/metadata/descriptive/GenericStreamTextBasedSet.h"
#include "mxf/metadata/descriptive/UTF16TextBasedSet.h"
#include "mxf/metadata/descriptive/UTF8TextBasedSet.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/structure/MXFPrimerFindings.h"
#include "mxf/structure/MXFStaticTags.h"
#include "util/internal/octets.h"

namespace bryx {

namespace findings = mxfutil::findings;

namespace {

/// The longest value of a primer pack that is read: room for every tag, with entries twice as long as they are.
constexpr std::uint64_t maxPrimerPackSize = 8 + mxfutil::primerEntrySize * 2 * 65536;

/// The keys of the sets that hold texts.
constexpr KLVKey textSetKeys[] = {GenericStreamTextBasedSet::classKey, UTF8TextBasedSet::classKey,
                                  UTF16TextBasedSet::classKey};

} // namespace

MXFHeaderMetadataParser::~MXFHeaderMetadataParser() = default;

void MXFHeaderMetadataParser::startStream(bool accurateLengths) {
    MXFPrimedSetParser::startStream(accurateLengths);
    if (primerSeen_) {
        previous_ = std::move(primer_);
        hasPrevious_ = true;
    }
    primer_.clear();
    primerSeen_ = false;
    inPrimerPack_ = false;
    handler_.startMetadata();
}

void MXFHeaderMetadataParser::endStream(bool stopped) {
    handler_.endMetadata();
    MXFPrimedSetParser::endStream(stopped);
}

bool MXFHeaderMetadataParser::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    if (key != mxfutil::primerPackKey) {
        return MXFPrimedSetParser::startFixedLengthPack(key, length);
    }
    if (length > maxPrimerPackSize) {
        reporter().report(errorHandler(), findings::invalidPrimerPack, 0, "too many octets");
        return false;
    }
    octets_.clear();
    inPrimerPack_ = true;
    return true;
}

void MXFHeaderMetadataParser::endFixedLengthPack(const KLVKey& key) {
    if (key != mxfutil::primerPackKey) {
        return MXFPrimedSetParser::endFixedLengthPack(key);
    }
    if (!std::exchange(inPrimerPack_, false)) {
        return;
    }
    primer_ = mxfutil::readPrimerPack(octets_.data(), octets_.size(), hasPrevious_ ? &previous_ : nullptr,
                                      errorHandler(), reporter());
    primerSeen_ = true;
    handler_.primer({primer_.begin(), primer_.end()});
}

bool MXFHeaderMetadataParser::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                             std::uint8_t*& buffer) {
    return inPrimerPack_ || MXFPrimedSetParser::getValueBuffer(length, offset, size, buffer);
}

void MXFHeaderMetadataParser::value(const std::uint8_t* data, std::uint64_t size) {
    if (inPrimerPack_) {
        util::append(octets_, data, size);
    } else {
        MXFPrimedSetParser::value(data, size);
    }
}

bool MXFHeaderMetadataParser::wantsSet(const KLVKey& key) {
    wanted_ = handler_.handlesSet(key);
    return true; // to be looked into at least
}

bool MXFHeaderMetadataParser::allowsBERLengths(const KLVKey& key) const {
    // RP 2057 lets long texts stand in sets.
    return std::any_of(std::begin(textSetKeys), std::end(textSetKeys), [&](KLVKey textSet) {
        textSet[5] = 0x13;
        return key == textSet;
    });
}

const KLVKey* MXFHeaderMetadataParser::unknownTag(std::uint16_t tag) {
    reporter().report(errorHandler(), findings::tagMissingInPrimer, tag, mxfutil::tagText(tag));
    return mxfutil::staticLabel(tag);
}

void MXFHeaderMetadataParser::primedSet(MXFPrimedSet& set) {
    if (wanted_) {
        handler_.primedSet(set);
    } else {
        handler_.unhandledSet(set);
    }
}

} // namespace bryx

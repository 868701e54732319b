#include "inspect/BodyCounter.h"

void BodyCounter::startContentPackage() {
    PackageCounter::startContentPackage();
    ++packages_;
    last_.reset();
}

void BodyCounter::startElement(const KLVKey& key) {
    PackageCounter::startElement(key);
    progress_.reached(positions_.position());
}

void BodyCounter::endElement(const KLVKey& key) {
    PackageCounter::endElement(key);
    if (mxfutil::isGCSystemElement(key)) {
        ++systemElements_;
    } else {
        essence_.add(key, length_);
    }
}

bool BodyCounter::startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& /*buffer*/,
                               std::uint64_t& /*size*/) {
    length_ = length;
    return false;
}

void BodyCounter::systemMetadata(const MXFSystemMetadataPack& pack) {
    const auto user = mxfutil::stampTimecode(pack, pack.userStamp);
    found(user ? user : mxfutil::stampTimecode(pack, pack.creationStamp));
}

void BodyCounter::pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& /*items*/) {
    if (!metadata.timecodes.empty()) {
        found(metadata.timecodes.front().timecode());
    }
}

void BodyCounter::found(const boost::optional<Timecode>& timecode) {
    last_ = timecode;
    if (packages_ == 1) {
        first_ = timecode;
    }
}

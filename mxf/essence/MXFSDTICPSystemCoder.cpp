#include "mxf/essence/MXFSDTICPSystemCoder.h"

#include <algorithm>
#include <vector>

#include "klv/ValueCoding.h"
#include "util/assertion_failure.h"

namespace bryx {

using mxfutil::SDTICPElement;
using util::require;

MXFSDTICPSystemCoder::~MXFSDTICPSystemCoder() = default;

void MXFSDTICPSystemCoder::systemMetadata(const MXFSystemMetadataPack& pack) {
    if (next_.wantsSystemElement(mxfutil::sdtiCPSystemMetadataKey)) {
        const std::vector<std::uint8_t> octets = klvutil::writeValue(pack);
        next_.fixedLengthPack(mxfutil::sdtiCPSystemMetadataKey, octets.data(), octets.size());
    }
}

void MXFSDTICPSystemCoder::set(SDTICPElement element, const MXFGCItems& items) {
    for (const MXFGCItem& item : items) {
        require(item.tag <= 255, "valid SDTI-CP tag");
        require(element == SDTICPElement::Control || item.size <= 65535, "property fits item length");
    }
    const KLVKey key =
        mxfutil::sdtiCPElementKey(element, static_cast<std::uint8_t>(std::min<std::size_t>(items.size(), 255)));
    if (next_.wantsSystemElement(key)) {
        next_.localSet(key, items);
    }
}

void MXFSDTICPSystemCoder::packageMetadata(const MXFGCItems& items) {
    set(SDTICPElement::Package, items);
}

void MXFSDTICPSystemCoder::pictureMetadata(const MXFGCItems& items) {
    set(SDTICPElement::Picture, items);
}

void MXFSDTICPSystemCoder::soundMetadata(const MXFGCItems& items) {
    set(SDTICPElement::Sound, items);
}

void MXFSDTICPSystemCoder::dataMetadata(const MXFGCItems& items) {
    set(SDTICPElement::Data, items);
}

void MXFSDTICPSystemCoder::controlData(const std::uint8_t* data, std::size_t size) {
    set(SDTICPElement::Control, {{0, data, size}});
}

} // namespace bryx

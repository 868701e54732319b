#include "mxf/essence/MXFSDTICPSystemHandler.h"

namespace bryx {

MXFSDTICPSystemHandler::~MXFSDTICPSystemHandler() = default;

namespace mxfutil {

namespace {

// Local sets with tags of one octet, and lengths of two octets or of four.
constexpr KLVKey metadataKey = klvutil::key("060e2b34.02430101.0d010301.04010000");
constexpr KLVKey controlKey = klvutil::key("060e2b34.02630101.0d010301.04010000");

constexpr std::size_t elementOctet = 14;
constexpr std::size_t countOctet = 15;

bool matches(KLVKey key, const KLVKey& pattern) noexcept {
    key[elementOctet] = key[countOctet] = 0;
    return key == pattern;
}

} // namespace

KLVKey sdtiCPElementKey(SDTICPElement element, std::uint8_t items) noexcept {
    KLVKey key = element == SDTICPElement::Control ? controlKey : metadataKey;
    key[elementOctet] = static_cast<std::uint8_t>(element);
    key[countOctet] = items;
    return key;
}

bool isSDTICPElementKey(const KLVKey& key) noexcept {
    return matches(key, metadataKey) || matches(key, controlKey);
}

SDTICPElement sdtiCPElement(const KLVKey& key) noexcept {
    const auto element = static_cast<SDTICPElement>(key[elementOctet]);
    const bool isKnown =
        element == SDTICPElement::Control
            ? matches(key, controlKey)
            : element >= SDTICPElement::Package && element < SDTICPElement::Control && matches(key, metadataKey);
    return isKnown ? element : SDTICPElement::None;
}

} // namespace mxfutil

} // namespace bryx

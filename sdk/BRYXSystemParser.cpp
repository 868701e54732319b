#include "sdk/BRYXSystemParser.h"

namespace bryx {

namespace {

/// The item type of system items that are not of the SDTI-CP compatible scheme (ST 379-1, ST 394).
constexpr std::uint8_t genericSystemItem = 0x14;

} // namespace

BRYXSystemParser::~BRYXSystemParser() = default;

MXFGCSystemHandler& BRYXSystemParser::parserOf(const KLVKey& key) {
    if (key[12] == genericSystemItem) {
        return pdProxy_;
    }
    return sdtiCP_;
}

void BRYXSystemParser::setErrorHandler(ErrorHandler* handler) {
    sdtiCP_.setErrorHandler(handler);
    pdProxy_.setErrorHandler(handler);
}

bool BRYXSystemParser::wantsSystemElement(const KLVKey& key) {
    return parserOf(key).wantsSystemElement(key);
}

void BRYXSystemParser::localSet(const KLVKey& key, const MXFGCItems& items) {
    parserOf(key).localSet(key, items);
}

void BRYXSystemParser::fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) {
    parserOf(key).fixedLengthPack(key, data, size);
}

void BRYXSystemParser::variableLengthPack(const KLVKey& key, const MXFGCItems& items) {
    parserOf(key).variableLengthPack(key, items);
}

} // namespace bryx

#pragma once

#include "mxf/essence/MXFGCSplitter.h"
#include "util/byte_order.h"

/// Cuts whatever is in a body: what is no element of a Generic Container is data, or a system element, all the same, as
/// long as its key is one.
class AnySplitter final : public MXFGCSplitter {
public:
    using MXFGCSplitter::MXFGCSplitter;

private:
    static bool isKey(const KLVKey& key) { return util::loadBigEndian<std::uint32_t>(&key.octets[0]) == 0x060E2B34; }
    bool isSystemElement(const KLVKey& key) const override { return isKey(key); }
    bool isEssenceElement(const KLVKey& key) const override { return isKey(key); }
    bool isDataElement(const KLVKey& key) const override {
        return !isPictureElement(key) && !isSoundElement(key) && !isCompoundElement(key);
    }
    bool allowsSecondKind() const override { return true; }
};

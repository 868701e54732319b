#include "mxf/metadata/model/MXFPropertyValue.h"

#include "klv/KLVCoding.h"
#include "mxf/metadata/model/MetadataRoot.h"
#include "util/hex.h"
#include "util/utf8.h"

namespace bryx::mxfutil {

namespace {

/// @p text, or if it is not UTF-8, with every octet that is not ASCII as "\\x" and two hexadecimal digits.
std::string validUTF8(const std::string& text) {
    try {
        return util::utf8::fromWide(util::utf8::toWide(text));
    } catch (const util::utf8::exception&) {
        std::string result;
        for (const char c : text) {
            const auto octet = static_cast<std::uint8_t>(c);
            if (octet < 0x80) {
                result += c;
            } else {
                result += "\\x";
                util::appendHex(result, &octet, 1);
            }
        }
        return result;
    }
}

struct Text {
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(std::uint64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return validUTF8(value); }
    std::string operator()(const std::wstring& value) const { return util::utf8::fromWide(value); }
    // A label may stand where an identifier is due, as it is.
    std::string operator()(const MXFUID& value) const {
        const KLVKey key{value.octets};
        return klvutil::isSMPTEKey(key) ? toString(key) : toString(value);
    }
    std::string operator()(const std::vector<std::uint8_t>& value) const {
        std::string text;
        util::appendHex(text, value.data(), value.size());
        return text;
    }
    std::string operator()(const std::shared_ptr<const MetadataRoot>& value) const {
        return value == nullptr ? std::string() : toString(value->getInstanceUID());
    }
    template <class Record>
    std::string operator()(const Record& value) const {
        return toString(value);
    }
};

} // namespace

std::string toText(const MXFScalar& value) {
    return std::visit(Text(), value);
}

} // namespace bryx::mxfutil

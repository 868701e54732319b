#include "sdk/BRYXPackageMetadata.h"

#include <algorithm>
#include <optional>

#include <boost/iostreams/device/array.hpp>
#include <boost/iostreams/stream.hpp>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/KLVCoding.h"
#include "klv/ValueCoding.h"
#include "util/internal/octets.h"
#include "util/utf8.h"

namespace bryx {

namespace {

/// Keeps the value of the first text.
class TextFinder final : public DullKLVHandler {
public:
    const std::optional<KLVKey>& key() const { return key_; }
    const std::vector<std::uint8_t>& octets() const { return octets_; }

    bool startIndividualItem(const KLVKey& key, std::uint64_t /*length*/) override {
        if (key_ || (key != mxfutil::utf8TextKey && key != mxfutil::utf16TextKey)) {
            return false;
        }
        key_ = key;
        return true;
    }
    bool getValueBuffer(std::uint64_t /*length*/, std::uint64_t& /*offset*/, std::uint64_t& /*size*/,
                        std::uint8_t*& /*buffer*/) override {
        return true;
    }
    void value(const std::uint8_t* data, std::uint64_t size) override { util::append(octets_, data, size); }

private:
    std::optional<KLVKey> key_;
    std::vector<std::uint8_t> octets_;
};

template <class Value>
std::vector<std::uint8_t> triplet(const KLVKey& key, const Value& value) {
    const std::vector<std::uint8_t> octets = klvutil::writeValue(value);
    std::uint8_t length[9];
    const std::uint8_t form = klvutil::fittingBERLengthForm(klvutil::automaticBERLengthForm, octets.size());
    const std::uint8_t size = klvutil::storeBERLength(length, form, octets.size());
    std::vector<std::uint8_t> result(key.octets.begin(), key.octets.end());
    result.insert(result.end(), length, length + size);
    result.insert(result.end(), octets.begin(), octets.end());
    return result;
}

const std::vector<std::uint8_t>* find(const BRYXPackageItems& items, unsigned tag) {
    const auto item = std::find_if(items.begin(), items.end(), [&](const auto& each) { return each.first == tag; });
    return item == items.end() ? nullptr : &item->second;
}

} // namespace

BRYXPackageItems createBRYXPackageMetadata(const UMID& umid, const std::vector<std::uint8_t>& klv) {
    BRYXPackageItems items{{mxfutil::packageUMIDTag, klvutil::writeValue(umid)}};
    if (!klv.empty()) {
        items.emplace_back(mxfutil::packageKLVTag, klv);
    }
    return items;
}

std::pair<UMID, std::vector<std::uint8_t>> parseBRYXPackageMetadata(const BRYXPackageItems& items) {
    std::pair<UMID, std::vector<std::uint8_t>> result{};
    if (const auto* const octets = find(items, mxfutil::packageUMIDTag)) {
        klvutil::OctetReader reader(octets->data(), octets->size());
        result.first = reader.read<UMID>();
    }
    if (const auto* const octets = find(items, mxfutil::packageKLVTag)) {
        result.second = *octets;
    }
    return result;
}

std::vector<std::uint8_t> createBRYXPackageKLVMetadata(const std::string& text) {
    return triplet(mxfutil::utf8TextKey, text);
}

std::vector<std::uint8_t> createBRYXPackageKLVMetadata(const std::wstring& text) {
    return triplet(mxfutil::utf16TextKey, text);
}

std::wstring parseBRYXPackageKLVMetadata(const std::vector<std::uint8_t>& klv) {
    if (klv.empty()) {
        return {}; // the stream cannot be made of no octets
    }
    boost::iostreams::stream<boost::iostreams::array_source> stream(reinterpret_cast<const char*>(klv.data()),
                                                                    klv.size());
    TextFinder text;
    GenericKLVReader reader;
    reader.setHandler(&text);
    reader.parse(stream, 0);
    if (!text.key()) {
        return {};
    }
    if (*text.key() == mxfutil::utf16TextKey) {
        return klvutil::readValue<std::wstring>(text.octets());
    }
    return util::utf8::toWide(klvutil::readValue<std::string>(text.octets()));
}

} // namespace bryx

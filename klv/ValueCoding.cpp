#include "klv/ValueCoding.h"

#include "util/utf8.h"

namespace bryx::klvutil {

void ValueCoding<std::string>::read(OctetReader& from, std::string& value) {
    const std::size_t size = from.left();
    const std::uint8_t* octets = from.take(size);
    value.assign(octets, std::find(octets, octets + size, std::uint8_t{0}));
}

void ValueCoding<std::string>::write(OctetWriter& to, const std::string& value) {
    to.put(reinterpret_cast<const std::uint8_t*>(value.data()), value.size());
}

void ValueCoding<std::wstring>::read(OctetReader& from, std::wstring& value) {
    std::u16string units;
    bool terminated = false;
    while (from.left() > 0) {
        const auto unit = from.read<std::uint16_t>();
        terminated = terminated || unit == 0;
        if (!terminated) {
            units += static_cast<char16_t>(unit);
        }
    }
    value = util::utf8::fromUTF16(units);
}

void ValueCoding<std::wstring>::write(OctetWriter& to, const std::wstring& value) {
    for (const char16_t unit : util::utf8::toUTF16(value)) {
        to.write(static_cast<std::uint16_t>(unit));
    }
}

} // namespace bryx::klvutil

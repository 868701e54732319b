#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "util/Api.h"
#include "util/byte_order.h"

/// @file
/// How each type of value stands on the wire, in both directions. Sets, packs and index tables all use this.
///
/// Integers are big-endian, a record is its fields in order, and an array or a batch of T is a header of two 32-bit
/// numbers, the count and the size of an element in octets, followed by the elements (ST 377-1 §4.3).

namespace bryx::klvutil {

/// Reads values from octets in memory. Never reads beyond them: a value that does not fit throws std::length_error.
class OctetReader {
public:
    OctetReader(const std::uint8_t* data, std::size_t size) noexcept : next_(data), left_(size) {}

    std::size_t left() const noexcept { return left_; }

    /// The next @p size octets, which stay where they are.
    const std::uint8_t* take(std::size_t size) {
        if (size > left_) {
            throw std::length_error("too few octets");
        }
        const std::uint8_t* taken = next_;
        next_ += size;
        left_ -= size;
        return taken;
    }

    template <class T>
    void read(T& value);

    template <class T>
    T read() {
        T value{};
        read(value);
        return value;
    }

private:
    const std::uint8_t* next_;
    std::size_t left_;
};

/// Appends values to a vector of octets.
class OctetWriter {
public:
    explicit OctetWriter(std::vector<std::uint8_t>& octets) noexcept : octets_(octets) {}

    void put(const std::uint8_t* data, std::size_t size) {
        const std::size_t end = octets_.size();
        octets_.resize(end + size);
        std::copy(data, data + size, octets_.begin() + static_cast<std::ptrdiff_t>(end));
    }

    template <class T>
    void write(const T& value);

private:
    std::vector<std::uint8_t>& octets_;
};

namespace detail {

template <class T, class = void>
struct HasOctets : std::false_type {};
template <class T>
struct HasOctets<T, std::void_t<decltype(T::octets)>> : std::true_type {};

} // namespace detail

/// The coding of one type. The primary template covers integers, enumerations, plain octet values (KLVKey, MXFUID,
/// UMID) and records that list their fields.
template <class T>
struct ValueCoding {
    static void read(OctetReader& from, T& value) {
        if constexpr (std::is_enum_v<T>) {
            value = static_cast<T>(from.read<std::underlying_type_t<T>>());
        } else if constexpr (std::is_integral_v<T>) {
            value = util::loadBigEndian<T>(from.take(sizeof(T)));
        } else if constexpr (detail::HasOctets<T>::value) {
            const std::uint8_t* octets = from.take(value.octets.size());
            std::copy(octets, octets + value.octets.size(), value.octets.begin());
        } else {
            T::fields(value, [&](const char*, auto& field) { from.read(field); });
        }
    }

    static void write(OctetWriter& to, const T& value) {
        if constexpr (std::is_enum_v<T>) {
            to.write(static_cast<std::underlying_type_t<T>>(value));
        } else if constexpr (std::is_integral_v<T>) {
            std::uint8_t octets[sizeof(T)];
            util::storeBigEndian(octets, static_cast<std::uint64_t>(value), sizeof(T));
            to.put(octets, sizeof(T));
        } else if constexpr (detail::HasOctets<T>::value) {
            to.put(value.octets.data(), value.octets.size());
        } else {
            T::fields(value, [&](const char*, const auto& field) { to.write(field); });
        }
    }
};

/// A boolean: one octet, 0 for false and 1 for true. Any other value is read as true.
template <>
struct ValueCoding<bool> {
    static void read(OctetReader& from, bool& value) { value = *from.take(1) != 0; }
    static void write(OctetWriter& to, bool value) { to.write(static_cast<std::uint8_t>(value ? 1 : 0)); }
};

/// Octets that are not looked into: all that are left.
template <>
struct ValueCoding<std::vector<std::uint8_t>> {
    static void read(OctetReader& from, std::vector<std::uint8_t>& value) {
        const std::size_t size = from.left();
        const std::uint8_t* octets = from.take(size);
        value.assign(octets, octets + size);
    }
    static void write(OctetWriter& to, const std::vector<std::uint8_t>& value) { to.put(value.data(), value.size()); }
};

/// Text of 8-bit characters (ISO/IEC 646): all octets that are left, up to a terminating NUL.
template <>
struct ValueCoding<std::string> {
    BRYX_API static void read(OctetReader& from, std::string& value);
    BRYX_API static void write(OctetWriter& to, const std::string& value);
};

/// Text in UTF-16: all octets that are left, up to a terminating NUL. It is written without one. Throws
/// util::utf8::invalid_utf16 for unpaired surrogates, and util::utf8::invalid_code_point when writing.
template <>
struct ValueCoding<std::wstring> {
    BRYX_API static void read(OctetReader& from, std::wstring& value);
    BRYX_API static void write(OctetWriter& to, const std::wstring& value);
};

/// An array or batch of elements of fixed size. An empty one may state any element size; it is written with the true
/// one.
template <class T>
struct ValueCoding<std::vector<T>> {
    /// Octets of an element. The types that batches hold have no padding: their size in memory is that on the wire.
    static constexpr std::uint32_t elementSize() {
        static_assert(std::is_integral_v<T> || std::is_enum_v<T> || detail::HasOctets<T>::value ||
                          std::is_same_v<T, Rational>,
                      "batches hold integers, labels, identifiers or rationals");
        return sizeof(T);
    }

    static void read(OctetReader& from, std::vector<T>& batch) {
        const auto count = from.read<std::uint32_t>();
        const auto size = from.read<std::uint32_t>();
        batch.clear();
        if (count == 0) {
            return;
        }
        if (size != elementSize()) {
            throw std::length_error("unexpected size of a batch element");
        }
        if (count > from.left() / size) {
            throw std::length_error("too few octets");
        }
        batch.resize(count);
        for (T& element : batch) {
            from.read(element);
        }
    }

    static void write(OctetWriter& to, const std::vector<T>& batch) {
        to.write(static_cast<std::uint32_t>(batch.size()));
        to.write(elementSize());
        for (const T& element : batch) {
            to.write(element);
        }
    }
};

template <class T>
void OctetReader::read(T& value) {
    ValueCoding<T>::read(*this, value);
}

template <class T>
void OctetWriter::write(const T& value) {
    ValueCoding<T>::write(*this, value);
}

/// The value that @p octets hold as a whole. Throws std::length_error if there are too few or too many of them, and
/// what the coding of the type throws.
template <class T>
T readValue(const std::vector<std::uint8_t>& octets) {
    OctetReader from(octets.data(), octets.size());
    T value = from.read<T>();
    if (from.left() != 0) {
        throw std::length_error("too many octets");
    }
    return value;
}

/// The octets of @p value.
template <class T>
std::vector<std::uint8_t> writeValue(const T& value) {
    std::vector<std::uint8_t> octets;
    OctetWriter(octets).write(value);
    return octets;
}

} // namespace bryx::klvutil

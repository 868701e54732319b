#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "util/byte_order.h"

/// @file
/// How each type of value stands on the wire, in both directions. Sets, packs and index tables all use this.
///
/// Integers are big-endian, a record is its fields in order, and an array or a batch of T is a header of two 32-bit
/// numbers, the count and the size of an element in octets, followed by the elements (ST 377-1 §4.3).

namespace klvutil {

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

    void put(const std::uint8_t* data, std::size_t size) { octets_.insert(octets_.end(), data, data + size); }

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

/// A batch of labels or identifiers. An empty batch may state any element size; it is written with the true one.
template <class T>
struct ValueCoding<std::vector<T>> {
    static_assert(detail::HasOctets<T>::value, "batches hold labels or identifiers");
    static constexpr std::uint32_t elementSize = sizeof(T::octets);

    static void read(OctetReader& from, std::vector<T>& batch) {
        const auto count = from.read<std::uint32_t>();
        const auto size = from.read<std::uint32_t>();
        batch.clear();
        if (count == 0) {
            return;
        }
        if (size != elementSize) {
            throw std::length_error("unexpected size of a batch element");
        }
        if (count > from.left() / elementSize) {
            throw std::length_error("too few octets");
        }
        batch.resize(count);
        for (T& element : batch) {
            from.read(element);
        }
    }

    static void write(OctetWriter& to, const std::vector<T>& batch) {
        to.write(static_cast<std::uint32_t>(batch.size()));
        to.write(elementSize);
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

} // namespace klvutil

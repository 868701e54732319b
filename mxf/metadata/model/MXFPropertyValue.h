#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "util/Api.h"

class MetadataRoot;

/// A value of any kind that a property can have: an enumeration stands as its number, a rare record as its text, and a
/// reference as the set that it leads to.
using MXFScalar =
    std::variant<bool, std::int64_t, std::uint64_t, std::string, std::wstring, KLVKey, MXFUID, UMID, Rational,
                 MXFTimestamp, MXFProductVersion, std::vector<std::uint8_t>, std::shared_ptr<const MetadataRoot>>;

/// The value of a property: one, or those of a batch or array.
using MXFPropertyValue = std::variant<MXFScalar, std::vector<MXFScalar>>;

namespace mxfutil {

/// A value as people read it, in UTF-8: "true", numbers in decimal, texts as they are, labels as "urn:smpte:ul:" and
/// other identifiers as "urn:uuid:" names, rationals as "25/1", timestamps by ISO 8601, octets in hexadecimal digits,
/// a reference as the instance UID of the set.
BRYX_API std::string toText(const MXFScalar& value);

/// Calls @p visit with each set that @p value refers to, in their order; a reference that leads nowhere is left out.
template <class Visit>
void forEachReference(const MXFPropertyValue& value, Visit visit) {
    const auto visitScalar = [&](const MXFScalar& scalar) {
        const auto* const target = std::get_if<std::shared_ptr<const MetadataRoot>>(&scalar);
        if (target != nullptr && *target != nullptr) {
            visit(*target);
        }
    };
    if (const auto* const single = std::get_if<MXFScalar>(&value)) {
        visitScalar(*single);
    } else {
        for (const MXFScalar& element : std::get<std::vector<MXFScalar>>(value)) {
            visitScalar(element);
        }
    }
}

namespace detail {

template <class T, class Variant>
struct IsAlternative;
template <class T, class... Alternatives>
struct IsAlternative<T, std::variant<Alternatives...>> : std::disjunction<std::is_same<T, Alternatives>...> {};

template <class T>
MXFScalar toScalar(const T& value) {
    if constexpr (IsAlternative<T, MXFScalar>::value) {
        return value;
    } else if constexpr (std::is_enum_v<T>) {
        return toScalar(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        return static_cast<std::int64_t>(value);
    } else if constexpr (std::is_integral_v<T>) {
        return static_cast<std::uint64_t>(value);
    } else {
        return toString(value);
    }
}

template <class T>
MXFPropertyValue toPropertyValue(const T& value) {
    return toScalar(value);
}

template <class T>
MXFPropertyValue toPropertyValue(const std::vector<T>& batch) {
    if constexpr (IsAlternative<std::vector<T>, MXFScalar>::value) {
        return MXFScalar(batch);
    } else {
        std::vector<MXFScalar> values;
        values.reserve(batch.size());
        for (const T& element : batch) {
            values.push_back(toScalar(element));
        }
        return values;
    }
}

} // namespace detail
} // namespace mxfutil

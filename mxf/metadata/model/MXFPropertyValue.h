#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "util/Api.h"

namespace bryx {

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

} // namespace mxfutil

} // namespace bryx

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "util/Api.h"

/// @file
/// The metadata of a content package, as the package metadata set of an SDTI-CP system item carries it (ST 331, ST 385):
/// which material the package belongs to, and KLV triplets about it.

namespace bryx {

/// Local tags and values: the items of a package metadata set.
using BRYXPackageItems = std::vector<std::pair<unsigned, std::vector<std::uint8_t>>>;

namespace mxfutil {

/// The tag of the package metadata item that holds a UMID (ST 331).
inline constexpr unsigned packageUMIDTag = 0x83;
/// The tag of the package metadata item that holds KLV triplets (ST 331).
inline constexpr unsigned packageKLVTag = 0x88;

/// The key of a KLV triplet with UTF-8 text (RP 2057).
inline constexpr KLVKey utf8TextKey = klvutil::key("060e2b34.0101010d.03010220.03010000");
/// The key of a KLV triplet with UTF-16 text (RP 2057).
inline constexpr KLVKey utf16TextKey = klvutil::key("060e2b34.0101010d.03010220.03020000");

} // namespace mxfutil

/// The items that tell @p umid, in 32 octets, and @p klv, the octets of KLV triplets; without any, there is no item for
/// them.
BRYX_API BRYXPackageItems createBRYXPackageMetadata(const UMID& umid, const std::vector<std::uint8_t>& klv);

/// What @p items tell: all zero where there is no UMID, no octets where there are no triplets. Of an item that is
/// repeated the first counts; of an extended UMID, with its 64 octets, the first 32.
/// @throws std::length_error if a UMID has fewer than 32 octets
BRYX_API std::pair<UMID, std::vector<std::uint8_t>> parseBRYXPackageMetadata(const BRYXPackageItems& items);

/// A text, which is UTF-8, as the octets of a KLV triplet.
BRYX_API std::vector<std::uint8_t> createBRYXPackageKLVMetadata(const std::string& text);

/// A text as the octets of a KLV triplet, in UTF-16.
/// @throws util::utf8::exception if the text cannot be encoded
BRYX_API std::vector<std::uint8_t> createBRYXPackageKLVMetadata(const std::wstring& text);

/// The first text among the KLV triplets in @p klv; an empty one if there is none.
/// @throws klvutil::parse_error if the octets are no KLV triplets
/// @throws util::utf8::exception or std::length_error if the text cannot be decoded
BRYX_API std::wstring parseBRYXPackageKLVMetadata(const std::vector<std::uint8_t>& klv);

} // namespace bryx

#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "klv/KLVKey.h"
#include "klv/parse_error.h"

/// Why @p file could not be read to its end, for people: that it ends within something, and what is whole before that; or
/// what @p failure says if something else is wrong.
///
/// A file that can seek is looked at where it ends: it stands elsewhere then.
///
/// @param element the key of the element that was being read; none if it was none
/// @param packages whole content packages
std::string describeEnd(const klvutil::parse_error& failure, std::istream& file, const std::optional<KLVKey>& element,
                        std::uint64_t packages);

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "inspect/Inspection.h"

/// @file
/// What a report calls things, whatever its form.

const char* textName(MXFPartitionStatus status);

/// The usual name of an operational pattern in brackets, such as " (OP1a)"; empty for patterns without one. Octets 12
/// and 13 tell the item and the package complexity (ST 377-1 §8.3); OP-Atom (ST 390) has 10h.
std::string patternName(const KLVKey& label);

/// "no errors", "1 error", "2 errors".
std::string quantity(std::uint64_t count, const std::string& thing);

/// A text in quotes, with nothing in it that a terminal would act on.
std::string inQuotes(const std::string& text);

/// @p text in UTF-8 with an ellipsis in place of what is beyond @p maxSize octets.
std::string cut(std::string text, std::size_t maxSize);

/// A value as people read it; long ones are cut.
std::string describe(const MXFScalar& value);

std::string describe(const MXFPropertyValue& value);

/// "from 10:00:00:00 to 10:00:01:24"; empty if neither the first nor the last package has a timecode.
std::string timecodeRange(const BodyCounter& body);

/// What to think of the file as a whole.
std::string verdict(const FindingCollector& findings);

/// Whether the model of a partition says what that of another one does.
bool repeats(const FoundModel& found, const FoundModel& other);

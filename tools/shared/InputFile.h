#pragma once

#include <cstdint>
#include <fstream>
#include <istream>
#include <optional>
#include <string>

/// The size of a file in octets, or none if it is something that cannot seek, such as a pipe.
std::optional<std::uint64_t> sizeOf(std::istream& file);

/// Opens @p name and tells on standard error if that is not possible.
bool openInput(std::ifstream& file, const std::string& name, const char* program);

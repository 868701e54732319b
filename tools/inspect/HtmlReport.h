#pragma once

#include <istream>
#include <string>

#include "inspect/Inspection.h"

/// @file
/// What inspect found as one HTML page that needs nothing beside itself: the file drawn to scale, tables, the metadata
/// as a tree, and the findings, with links between all of them.

/// Writes the page to the file @p target, and tells on standard error if that is not possible.
///
/// @param source the file that was inspected, which is read once more
bool writeHtml(const std::string& target, const std::string& name, std::istream& source, const Inspection& inspection);

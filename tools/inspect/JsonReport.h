#pragma once

#include <ostream>

#include "inspect/Inspection.h"

/// Prints one JSON object. Offsets and positions count from the first octet of the file, run-in included, except those
/// that are fields of a pack.
void printJson(std::ostream& out, const Inspection& inspection);

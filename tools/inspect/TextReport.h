#pragma once

#include <ostream>
#include <string>

#include "inspect/Inspection.h"

/// Prints what people want to see first: the structure as a table, what the bodies hold, what is wrong.
void printText(std::ostream& out, const std::string& name, const Inspection& inspection);

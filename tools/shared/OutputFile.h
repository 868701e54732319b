#pragma once

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

/// What goes wrong with the file @p name, with the reason that the system gave last.
std::runtime_error fileFailure(const std::string& name);

/// Creates the file @p name, to be written and read back. Throws fileFailure() if that is not possible.
std::shared_ptr<std::fstream> createOutput(const std::string& name);

/// Called where an exception has been caught: throws fileFailure() if @p file has failed, else that exception again.
[[noreturn]] void rethrow(const std::ostream& file, const std::string& name);

/// Throws boost::program_options::error if @p name, the argument called @p argument, stands for standard output.
void requireFile(const std::string& name, const char* argument);

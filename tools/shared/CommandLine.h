#pragma once

#include <functional>
#include <string>
#include <vector>

#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

/// What the programs exit with.
enum ExitCode { Success = 0, Failure = 1, BadUsage = 2 };

/// How a program is called.
struct CommandLine {
    const char* program;
    boost::program_options::options_description options; ///< what --help prints; --help itself is added
    std::vector<std::string> files;                      ///< names of the arguments that are no options, in their order
};

/// Runs a program: prints its help, or calls @p work with the arguments. What that throws is told on standard error:
/// boost::program_options::error is bad usage, any other exception a failure.
int runProgram(int argc, char** argv, CommandLine line,
               const std::function<ExitCode(const boost::program_options::variables_map& arguments)>& work);

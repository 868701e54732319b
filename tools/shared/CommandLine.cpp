#include "shared/CommandLine.h"

#include <exception>
#include <iostream>

#include <boost/program_options.hpp>

int runProgram(int argc, char** argv, CommandLine line,
               const std::function<ExitCode(const boost::program_options::variables_map& arguments)>& work) {
    namespace po = boost::program_options;
    try {
        line.options.add_options()("help", "print this text");
        po::options_description all;
        all.add(line.options);
        po::positional_options_description positional;
        for (const std::string& file : line.files) {
            all.add_options()(file.c_str(), po::value<std::string>());
            positional.add(file.c_str(), 1);
        }
        po::variables_map arguments;
        po::store(po::command_line_parser(argc, argv).options(all).positional(positional).run(), arguments);
        po::notify(arguments);
        if (arguments.count("help") != 0) {
            std::cout << line.options;
            return Success;
        }
        return work(arguments);
    } catch (const po::error& error) {
        std::cerr << line.program << ": " << error.what() << "\nTry " << line.program << " --help.\n";
        return BadUsage;
    } catch (const std::exception& error) {
        std::cerr << line.program << ": " << error.what() << '\n';
        return Failure;
    }
}

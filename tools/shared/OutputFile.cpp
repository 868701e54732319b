#include "shared/OutputFile.h"

#include <cerrno>
#include <system_error>

#include <boost/program_options/errors.hpp>

std::runtime_error fileFailure(const std::string& name) {
    return std::runtime_error(name + ": " + std::generic_category().message(errno));
}

std::shared_ptr<std::fstream> createOutput(const std::string& name) {
    auto file = std::make_shared<std::fstream>(name, std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary);
    if (!*file) {
        throw fileFailure(name);
    }
    return file;
}

void rethrow(const std::ostream& file, const std::string& name) {
    if (!file) {
        throw fileFailure(name);
    }
    throw;
}

void requireFile(const std::string& name, const char* argument) {
    if (name == "-") {
        throw boost::program_options::error(std::string(argument) + " must be a file, not standard output");
    }
}

#include "shared/InputFile.h"

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>

std::optional<std::uint64_t> sizeOf(std::istream& file) {
    const std::streamoff size = file.seekg(0, std::ios::end).tellg();
    file.clear();
    if (size < 0) {
        return std::nullopt;
    }
    file.seekg(0);
    return static_cast<std::uint64_t>(size);
}

bool openInput(std::ifstream& file, const std::string& name, const char* program) {
    std::error_code reason;
    if (std::filesystem::is_directory(name, reason)) {
        reason = std::make_error_code(std::errc::is_a_directory);
    } else {
        file.open(name, std::ios::binary);
        if (file) {
            return true;
        }
        reason = std::error_code(errno, std::generic_category());
    }
    std::cerr << program << ": " << name << ": " << reason.message() << '\n';
    return false;
}

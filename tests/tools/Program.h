#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

/// What a run of a program left behind.
struct Outcome {
    int status;       ///< what it exited with; -1 if it was ended from outside
    std::string text; ///< what it printed, on standard output and standard error
};

/// Runs a line of shell. The programs are found by their names alone.
inline Outcome run(const std::string& line) {
    const std::string command = "PATH='" BRYX_PROGRAMS "':\"$PATH\"; { " + line + "\n} 2>&1";
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("no shell");
    }
    Outcome result{-1, {}};
    char piece[4096];
    for (std::size_t size = 0; (size = std::fread(piece, 1, sizeof piece, pipe)) > 0;) {
        result.text.append(piece, size);
    }
    const int status = pclose(pipe);
    if (WIFEXITED(status)) {
        result.status = WEXITSTATUS(status);
    }
    return result;
}

/// A folder that is gone when the test ends. Its name has no spaces.
class Folder {
public:
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "bryx-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = name;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path(const std::string& name) const { return path_ + '/' + name; }
    bool has(const std::string& name) const { return std::filesystem::exists(path(name)); }

    /// Writes a file, and returns its path.
    std::string put(const std::string& name, const std::string& octets) const {
        std::ofstream(path(name), std::ios::binary) << octets;
        return path(name);
    }
    std::string get(const std::string& name) const {
        std::ostringstream octets;
        octets << std::ifstream(path(name), std::ios::binary).rdbuf();
        return octets.str();
    }

private:
    std::string path_;
};

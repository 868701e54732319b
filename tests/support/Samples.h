#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// The MXF files in the folder that BRYX_SAMPLES names; none if it names none.
inline std::vector<std::filesystem::path> sampleFiles() {
    std::vector<std::filesystem::path> files;
    if (const char* folder = std::getenv("BRYX_SAMPLES")) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".mxf") {
                files.push_back(entry.path());
            }
        }
    }
    return files;
}

inline std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

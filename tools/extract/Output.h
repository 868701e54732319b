#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>

/// What is written: standard output, or a file, which is not touched before there is something to write.
class Output {
public:
    /// @param name "-" for standard output
    explicit Output(std::string name) : name_(std::move(name)) {}

    /// Throws if that is not possible.
    void write(const std::uint8_t* data, std::uint64_t size);
    void finish();

private:
    std::ostream& stream();
    void check(const std::ostream& stream) const;

    std::string name_;
    std::ofstream file_;
};

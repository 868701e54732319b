#pragma once

#include <cstdint>
#include <string>

#include "klv/KLVKey.h"

/// A temporary MXF file of equal essence elements, removed with the object: one header partition and a body.
class BenchmarkFile {
public:
    /// @p elementSize octets of value each, with a four-octet BER length
    BenchmarkFile(std::uint64_t elements, std::uint64_t elementSize);
    ~BenchmarkFile();
    BenchmarkFile(const BenchmarkFile&) = delete;
    BenchmarkFile& operator=(const BenchmarkFile&) = delete;

    const std::string& path() const { return path_; }

    /// Octets before the first element.
    std::uint64_t bodyStart() const { return bodyStart_; }
    std::uint64_t elements() const { return elements_; }
    std::uint64_t elementSize() const { return elementSize_; }

private:
    std::string path_;
    std::uint64_t bodyStart_ = 0;
    std::uint64_t elements_;
    std::uint64_t elementSize_;
};

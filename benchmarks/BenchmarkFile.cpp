#include "BenchmarkFile.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "klv/KLVCoding.h"
#include "mxf/structure/MXFPartitionPack.h"

namespace {

constexpr KLVKey pictureKey{{0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01, 0x0D, 0x01, 0x03, 0x01, 0x15, 0x01, 0x05}};

std::string klvHead(const KLVKey& key, std::uint64_t length) {
    std::uint8_t field[9];
    std::string head(key.octets.begin(), key.octets.end());
    head.append(field, field + klvutil::storeBERLength(field, 0x83, length));
    return head;
}

} // namespace

BenchmarkFile::BenchmarkFile(std::uint64_t elements, std::uint64_t elementSize)
    : elements_(elements), elementSize_(elementSize) {
    const auto folder = std::filesystem::temp_directory_path();
    path_ =
        (folder / ("bryx_benchmark_" + std::to_string(elements) + "x" + std::to_string(elementSize) + ".mxf")).string();
    std::ofstream file(path_, std::ios::binary);
    MXFPartitionPack pack;
    pack.minorVersion = 3;
    pack.bodySID = 1;
    const std::vector<std::uint8_t> value = mxfutil::writePartitionPack(pack);
    std::string start =
        klvHead(mxfutil::partitionPackKey(MXFPartitionKind::Header, MXFPartitionStatus::OpenComplete), value.size());
    start.append(value.begin(), value.end());
    bodyStart_ = start.size();
    file << start;
    std::string element = klvHead(pictureKey, elementSize) + std::string(elementSize, '\0');
    for (std::uint64_t i = 0; i < elements; ++i) {
        element[20] = static_cast<char>(i);
        element.back() = static_cast<char>(i >> 8U);
        file << element;
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path_);
    }
}

BenchmarkFile::~BenchmarkFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

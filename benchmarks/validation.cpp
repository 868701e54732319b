/// What the strictest checks add to the time in which a file is read, essence and all.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "sdk/BRYX.h"
#include "support/GoodClip.h"

namespace {

/// Takes every element whole, in a buffer of its own, and counts its octets.
class Essence final : public DullMXFGCEssenceHandler {
public:
    explicit Essence(std::size_t size) : buffer_(size) {}

    std::uint64_t octets = 0;

    bool startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& buffer,
                      std::uint64_t& size) override {
        octets += length;
        buffer = buffer_.data();
        size = buffer_.size();
        return true;
    }

private:
    std::vector<std::uint8_t> buffer_;
};

/// Counts findings.
struct Findings final : DullErrorHandler {
    std::uint64_t count = 0;

    void warning(const util::uuid& /*id*/, const std::string& /*message*/) override { ++count; }
    void error(const util::uuid& /*id*/, const std::string& /*message*/) override { ++count; }
};

/// @return the octets of essence
std::uint64_t read(const std::filesystem::path& path, BRYXValidationMode::Enum mode) {
    constexpr std::size_t largest = 1U << 20U;
    const auto essence = std::make_shared<Essence>(largest);
    const auto findings = std::make_shared<Findings>();
    const auto reader = createBRYXReader(std::make_shared<std::ifstream>(path, std::ios::binary), mode);
    reader->setStructureHandler(std::make_shared<DullMXFStructureHandler>());
    reader->setMetadataHandler(std::make_shared<DullMXFMetadataModelHandler>());
    reader->setIndexHandler(std::make_shared<DullMXFIndexHandler>());
    reader->setSDTICPSystemHandler(std::make_shared<DullMXFSDTICPSystemHandler>());
    reader->setEssenceHandler(essence);
    reader->setErrorHandler(findings);
    reader->read();
    if (findings->count != 0) {
        std::fprintf(stderr, "a good file has findings\n");
        std::exit(1);
    }
    return essence->octets;
}

void add(const std::string& group, const ClipOptions& options) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / ("bryx_" + group + ".mxf");
    std::ofstream(path, std::ios::binary) << GoodClip(options).octets;
    const std::uint64_t expected = read(path, BRYXValidationMode::None);
    for (const auto& [name, mode] :
         {std::pair{"unchecked", BRYXValidationMode::None}, {"checked", BRYXValidationMode::Strict}}) {
        if (expected == 0 || read(path, mode) != expected) {
            std::fprintf(stderr, "%s: %s does not deliver the essence\n", group.c_str(), name);
            std::exit(1);
        }
        benchmark::RegisterBenchmark((group + "/" + name).c_str(),
                                     [path, mode = mode](benchmark::State& state) {
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(read(path, mode));
                                         }
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

} // namespace

void registerValidation() {
    ClipOptions large;
    large.frames = 500;
    large.pictureSize = 200000;
    large.partitionDuration = 100;
    add("validating-200KB-pictures", large);
    ClipOptions proxy; // 1.2 Mbit/s at 25 pictures a second
    proxy.frames = 10000;
    proxy.pictureSize = 6000;
    proxy.partitionDuration = 1000;
    add("validating-6KB-pictures", proxy);
    ClipOptions small; // smaller than any codec makes them: what it costs for each element
    small.frames = 20000;
    small.partitionDuration = 5000;
    add("validating-700-octet-pictures", small);
}

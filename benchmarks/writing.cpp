/// What writing costs beyond the bare minimum of the same work: a plain loop of write(2) over the same octets.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "sdk/BRYXWriter.h"
#include "support/LeastMetadata.h"

namespace {

constexpr KLVKey pictureKey = klvutil::key("060e2b34.01020101.0d010301.15010500");
constexpr std::size_t elementSize = 200000;
constexpr int elements = 2500;

std::filesystem::path target() {
    return std::filesystem::temp_directory_path() / "bryx_benchmark_written.mxf";
}

const std::vector<std::uint8_t>& element() {
    static const std::vector<std::uint8_t> octets(elementSize + 20, 7);
    return octets;
}

std::uint64_t plainWrite() {
    const int descriptor = ::open(target().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    for (int i = 0; i < elements; ++i) {
        if (::write(descriptor, element().data(), element().size()) != static_cast<ssize_t>(element().size())) {
            std::abort();
        }
    }
    ::close(descriptor);
    return std::filesystem::file_size(target());
}

void writePackages(BRYXWriter& writer, int count, std::size_t size) {
    MXFGCStructureHandler& structure = writer.structureReceiver();
    MXFGCEssenceHandler& essence = writer.essenceReceiver();
    for (int i = 0; i < count; ++i) {
        structure.startContentPackage();
        structure.startElement(pictureKey);
        essence.pictureElement(pictureKey, element().data(), size, 0);
        structure.endElement(pictureKey);
        structure.endContentPackage();
    }
}

std::uint64_t writer(bool isIndexed) {
    const auto writer = createBRYXWriter(std::make_shared<std::ofstream>(target(), std::ios::binary));
    writer->start(leastMetadata());
    BRYXEssenceContainer container;
    container.indexSID = isIndexed ? 2 : 0;
    writer->startEssence(container);
    writePackages(*writer, elements, elementSize);
    writer->endEssence();
    writer->finish(leastMetadata());
    return std::filesystem::file_size(target());
}

/// The octets of memory that a content package takes while a file of 100,000 is written.
double memoryPerPackage(bool isIndexed) {
    struct Nowhere : std::streambuf {
        std::streamsize xsputn(const char* /*data*/, std::streamsize size) override { return size; }
    } nowhere;
    const auto writer = createBRYXWriter(std::make_shared<std::ostream>(&nowhere));
    BRYXWriterConfiguration configuration;
    configuration.indexPlacement = BRYXWriterConfiguration::IndexPlacement::Footer;
    configuration.partitionDuration = 1000;
    writer->setConfiguration(configuration);
    writer->start(leastMetadata());
    BRYXEssenceContainer container;
    container.indexSID = isIndexed ? 2 : 0;
    writer->startEssence(container);
    constexpr int packages = 100000;
    const struct mallinfo2 before = mallinfo2();
    writePackages(*writer, packages, 64);
    const struct mallinfo2 after = mallinfo2();
    return static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) / packages;
}

template <class Work>
void add(const char* name, Work work) {
    const std::uint64_t octets = work();
    constexpr std::uint64_t essence = std::uint64_t{elements} * (elementSize + 20);
    if (octets < essence || octets > essence + 100000) {
        std::fprintf(stderr, "%s writes %llu octets\n", name, static_cast<unsigned long long>(octets));
        std::exit(1);
    }
    benchmark::RegisterBenchmark(name,
                                 [work](benchmark::State& state) {
                                     for (auto _ : state) {
                                         benchmark::DoNotOptimize(work());
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

} // namespace

void registerWriting() {
    // An entry of the index to be, in a vector that grows by doubling; and next to nothing without one.
    const double indexed = memoryPerPackage(true);
    const double plain = memoryPerPackage(false);
    std::printf("writing 100,000 content packages: %.2f octets each, without index %.2f\n", indexed, plain);
    if (indexed > 48 || plain > 1) {
        std::fprintf(stderr, "memory grows with the file\n");
        std::exit(1);
    }
    add("writing-200KB/write(2)", plainWrite);
    add("writing-200KB/BRYXWriter", [] { return writer(false); });
    add("writing-200KB/BRYXWriter-indexed", [] { return writer(true); });
}

/// What reading costs beyond the bare minimum of the same work: each group is a plain loop over the same octets of the
/// same file, and the library's readers. Before anything is timed, all of a group are shown to deliver the same octets.

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <memory>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "BenchmarkFile.h"
#include "Benchmarks.h"
#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCSplitter.h"

namespace {

/// What a contender has seen: the values' octets, and a sum over the first and last octet of each value.
struct Delivered {
    std::uint64_t octets = 0;
    std::uint64_t sum = 0;

    void add(const std::uint8_t* value, std::uint64_t size) {
        octets += size;
        sum += value[0] + 256U * value[size - 1];
    }
    bool operator==(const Delivered& other) const { return octets == other.octets && sum == other.sum; }
};

/// Takes every value whole, in a buffer of its own.
class OwnBuffer : public DullKLVHandler {
public:
    explicit OwnBuffer(std::uint64_t size) : buffer_(size) {}
    Delivered delivered;

    bool startIndividualItem(const KLVKey&, std::uint64_t) override { return true; }
    bool getValueBuffer(std::uint64_t, std::uint64_t&, std::uint64_t&, std::uint8_t*& buffer) override {
        buffer = buffer_.data();
        return true;
    }
    void value(const std::uint8_t* data, std::uint64_t size) override { delivered.add(data, size); }

private:
    std::vector<std::uint8_t> buffer_;
};

using Contender = std::function<Delivered(const BenchmarkFile&)>;

/// read(2), a value at a time, headers included: the least that the system can be asked to do.
Delivered plainRead(const BenchmarkFile& file) {
    Delivered delivered;
    std::vector<std::uint8_t> buffer(file.elementSize() + 20);
    const int descriptor = ::open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    if (::read(descriptor, buffer.data(), file.bodyStart()) < 0) {
        std::abort();
    }
    while (::read(descriptor, buffer.data(), buffer.size()) == static_cast<ssize_t>(buffer.size())) {
        delivered.add(buffer.data() + 20, file.elementSize());
    }
    ::close(descriptor);
    return delivered;
}

/// The same pieces through the same stream buffer as the library reads: key, first octet of the length, the rest of
/// the length, value.
Delivered streamBufferLoop(const BenchmarkFile& file) {
    Delivered delivered;
    std::vector<char> buffer(file.elementSize());
    std::ifstream stream(file.path(), std::ios::binary);
    std::streambuf& source = *stream.rdbuf();
    source.pubseekoff(static_cast<std::streamoff>(file.bodyStart()), std::ios::beg, std::ios::in);
    char head[16];
    const auto size = static_cast<std::streamsize>(file.elementSize());
    while (source.sgetn(head, 16) == 16 && source.sgetn(head, 1) == 1 && source.sgetn(head, 3) == 3 &&
           source.sgetn(buffer.data(), size) == size) {
        delivered.add(reinterpret_cast<const std::uint8_t*>(buffer.data()), file.elementSize());
    }
    return delivered;
}

Delivered klvReader(const BenchmarkFile& file) {
    std::ifstream stream(file.path(), std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(file.bodyStart()));
    OwnBuffer handler(file.elementSize());
    GenericKLVReader reader;
    reader.setHandler(&handler);
    reader.parse(stream, static_cast<std::streamoff>(file.bodyStart()));
    return handler.delivered;
}

Delivered mxfReader(const BenchmarkFile& file) {
    std::ifstream stream(file.path(), std::ios::binary);
    OwnBuffer handler(file.elementSize());
    MXFReader reader;
    reader.setBodyHandler(&handler);
    reader.read(stream);
    return handler.delivered;
}

/// Takes every element whole, in a buffer of its own.
class OwnElement : public MXFGCEssenceHandler {
public:
    explicit OwnElement(std::uint64_t size) : buffer_(size) {}
    Delivered delivered;

    bool startElement(const KLVKey&, std::uint64_t, std::uint8_t*& buffer, std::uint64_t& size) override {
        buffer = buffer_.data();
        size = buffer_.size();
        return true;
    }
    void pictureElement(const KLVKey&, const std::uint8_t* data, std::uint64_t size, std::uint64_t) override {
        delivered.add(data, size);
    }
    void soundElement(const KLVKey&, const std::uint8_t*, std::uint64_t, std::uint64_t) override {}
    void dataElement(const KLVKey&, const std::uint8_t*, std::uint64_t, std::uint64_t) override {}
    void compoundElement(const KLVKey&, const std::uint8_t*, std::uint64_t, std::uint64_t) override {}
    void setLengthForm(std::uint8_t) override {}

private:
    std::vector<std::uint8_t> buffer_;
};

Delivered gcSplitter(const BenchmarkFile& file) {
    std::ifstream stream(file.path(), std::ios::binary);
    OwnElement handler(file.elementSize());
    MXFGCSplitter splitter(nullptr, nullptr, &handler);
    MXFReader reader;
    reader.setBodyHandler(&splitter);
    reader.read(stream);
    return handler.delivered;
}

Delivered skipping(const BenchmarkFile& file) {
    std::ifstream stream(file.path(), std::ios::binary);
    MXFReader reader;
    reader.read(stream);
    return {};
}

void addGroup(const std::string& group, const BenchmarkFile& file,
              const std::vector<std::pair<std::string, Contender>>& contenders, bool delivering) {
    const Delivered expected = contenders.front().second(file);
    for (const auto& [name, contender] : contenders) {
        const Delivered delivered = contender(file);
        if (delivering && !(delivered == expected && delivered.octets == file.elements() * file.elementSize())) {
            std::fprintf(stderr, "%s/%s does not deliver what %s does\n", group.c_str(), name.c_str(),
                         contenders.front().first.c_str());
            std::exit(1);
        }
        benchmark::RegisterBenchmark((group + "/" + name).c_str(),
                                     [&file, contender = contender](benchmark::State& state) {
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(contender(file));
                                         }
                                         state.SetItemsProcessed(static_cast<std::int64_t>(file.elements()) *
                                                                 state.iterations());
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

} // namespace

void registerReading() {
    static const BenchmarkFile large(2500, 200000);
    static const BenchmarkFile small(1000000, 64);
    addGroup(
        "200KB-elements", large,
        {{"read(2)", plainRead}, {"KLVReader", klvReader}, {"MXFReader", mxfReader}, {"MXFGCSplitter", gcSplitter}},
        true);
    addGroup("64-octet-elements", small,
             {{"stream-buffer", streamBufferLoop},
              {"KLVReader", klvReader},
              {"MXFReader", mxfReader},
              {"MXFGCSplitter", gcSplitter}},
             true);
    addGroup("skipping-200KB", large, {{"read(2)", plainRead}, {"MXFReader", skipping}}, false);
}

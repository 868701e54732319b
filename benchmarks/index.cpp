/// What it costs to ask a large index table, beyond reading at random places of an array with an offset for each edit
/// unit; and what memory the table takes.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "mxf/index/MXFIndexCalculator.h"

namespace {

constexpr std::int64_t editUnits = 10000000;
constexpr std::int64_t segmentUnits = 4000; // fits the 16-bit length of the array

/// Where each edit unit begins: pictures in groups of twelve, I, P and B pictures, of sizes that vary by half.
std::vector<std::uint64_t> makeOffsets() {
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> offsets{0};
    for (std::int64_t unit = 0; unit + 1 < editUnits; ++unit) {
        const std::uint64_t octets = unit % 12 == 0 ? 600000 : unit % 3 == 0 ? 250000 : 100000;
        offsets.push_back(offsets.back() + octets + random() % (octets / 2));
    }
    return offsets;
}

/// Index entries of edit units from @p first on, with a slice, as one segment of a table.
MXFIndexTableSegment segment(std::int64_t first, const std::vector<std::uint64_t>& offsets) {
    MXFIndexTableSegment segment;
    segment.indexEditRate = {25, 1};
    segment.indexStartPosition = first;
    segment.indexDuration = segmentUnits;
    segment.bodySID = segment.indexSID = 1;
    segment.sliceCount = 1;
    segment.deltaEntryArray = {{-1, 0, 0}, {0, 1, 0}};
    for (std::int64_t unit = first; unit < first + segmentUnits; ++unit) {
        segment.indexEntryArray.push_back(
            {0, static_cast<std::int8_t>(-(unit % 12)), 0, offsets[static_cast<std::size_t>(unit)], {90000}, {}});
    }
    return segment;
}

std::size_t memoryInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Times @p lookup for what @p question makes of edit units at random, a few at a time, and tells the median of one.
template <class Question, class Lookup>
void add(const char* name, Question question, Lookup lookup) {
    benchmark::RegisterBenchmark(name, [question, lookup](benchmark::State& state) {
        constexpr std::size_t batch = 16;
        std::mt19937_64 random(1);
        std::uniform_int_distribution<std::int64_t> anyUnit(0, editUnits - 1);
        std::vector<decltype(question(0))> questions(batch);
        std::vector<double> times;
        for (auto _ : state) {
            std::generate(questions.begin(), questions.end(), [&] { return question(anyUnit(random)); });
            const auto start = std::chrono::steady_clock::now();
            for (const auto& asked : questions) {
                benchmark::DoNotOptimize(lookup(asked));
            }
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            state.SetIterationTime(time.count());
            times.push_back(time.count() / batch);
        }
        std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
        state.counters["median-ns"] = times[times.size() / 2] * 1e9;
    })->UseManualTime();
}

} // namespace

void registerIndex() {
    static const std::vector<std::uint64_t> array = makeOffsets();
    static MXFIndexCalculator index;
    const std::size_t before = memoryInUse();
    {
        MXFIndexCalculator::Collector collector;
        for (std::int64_t first = 0; first < editUnits; first += segmentUnits) {
            collector.indexTableSegment(segment(first, array));
        }
        index.setSegments(collector, collector.tables().front());
    }
    std::printf("index of 10,000,000 entries with a slice: %.2f octets an entry\n",
                static_cast<double>(memoryInUse() - before) / static_cast<double>(editUnits));
    for (const std::int64_t unit : {std::int64_t{0}, editUnits / 3, editUnits - 1}) {
        if (index.streamOffset(unit) != array[static_cast<std::size_t>(unit)] ||
            index.editUnitAt(array[static_cast<std::size_t>(unit)] + 99999).value_or(-1) != unit) {
            std::fprintf(stderr, "the index does not tell what it was given\n");
            std::exit(1);
        }
    }
    const auto unit = [](std::int64_t asked) { return asked; };
    const auto offset = [](std::int64_t asked) { return array[static_cast<std::size_t>(asked)] + 7; };
    add("index-lookup/array", unit, [](std::int64_t asked) { return array[static_cast<std::size_t>(asked)]; });
    add("index-lookup/streamOffset", unit, [](std::int64_t asked) { return index.streamOffset(asked); });
    add("index-lookup/elementOffset", unit, [](std::int64_t asked) { return index.elementOffset(asked, 1); });
    add("index-lookup/keyFrame", unit, [](std::int64_t asked) { return index.keyFrame(asked); });
    add("index-lookup/editUnitAt", offset, [](std::uint64_t asked) { return index.editUnitAt(asked); });
}

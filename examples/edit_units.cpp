/// Lists where the edit units of an MXF file stand, by its index tables.
///
///     edit_units FILE
///
/// This is how to find pictures without reading what is before them: a partial reader for partitions alone, a collector
/// for index table segments, a calculator that answers. Offsets count from the start of the essence container.

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>

#include "mxf/index/MXFIndexCalculator.h"
#include "sdk/BRYX.h"

namespace {

/// Keeps the random index, which tells where the partitions are.
class Partitions final : public DullMXFStructureHandler {
public:
    void randomIndex(const MXFRandomIndex& index) override { entries = index; }

    MXFRandomIndex entries;
};

void print(const MXFIndexCalculator& index) {
    for (const MXFIndexCalculator::Range& range : index.ranges()) {
        if (range.end == MXFIndexCalculator::endless) {
            std::cout << "  from " << range.first << " on, each " << index.size(range.first).value_or(0) << " octets\n";
            continue;
        }
        for (std::int64_t unit = range.first; unit < range.end; ++unit) {
            if (index.contains(unit)) {
                std::cout << "  " << unit << " at " << index.streamOffset(unit) << '\n';
            }
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: edit_units FILE\n";
        return 2;
    }
    const auto file = std::make_shared<std::ifstream>(argv[1], std::ios::binary);
    const auto partitions = std::make_shared<Partitions>();
    const auto segments = std::make_shared<MXFIndexCalculator::Collector>();
    const auto reader = createBRYXPartialReader(file);
    reader->setStructureHandler(partitions);
    reader->setIndexHandler(segments);
    try {
        const std::uint64_t runIn = reader->skipRunIn();
        if (!reader->readRandomIndexPack()) {
            std::cerr << "there is no random index\n";
            return 1;
        }
        for (const MXFRandomIndexEntry& entry : partitions->entries) {
            reader->readPartition(runIn + entry.byteOffset);
        }
    } catch (const klvutil::parse_error& error) {
        std::cerr << error.what() << " at octet " << std::streamoff{error.position()} << '\n';
        return 1;
    }
    for (const MXFIndexCalculator::Table& table : segments->tables()) {
        std::cout << "essence container " << table.bodySID << '\n';
        MXFIndexCalculator index;
        index.setSegments(*segments, table);
        print(index);
    }
}

#pragma once

#include <cstddef>
#include <cstdint>

#include "inspect/BoundedList.h"
#include "inspect/Findings.h"
#include "mxf/index/DullMXFIndexHandler.h"
#include "mxf/index/MXFIndexTableSegment.h"

struct FoundSegment {
    std::uint64_t offset;         ///< in octets from the first of the file
    MXFIndexTableSegment segment; ///< without its arrays
    std::size_t deltaEntries;
    std::size_t entries;
};

/// Collects what index table segments say, except their entries.
class IndexCollector final : public DullMXFIndexHandler {
public:
    using Segments = BoundedList<FoundSegment, 65536>;

    explicit IndexCollector(const FindingCollector& positions) : positions_(positions) {}

    void indexTableSegment(const MXFIndexTableSegment& segment) override;

    const Segments& segments() const { return segments_; }

private:
    const FindingCollector& positions_;
    Segments segments_;
};

#pragma once

#include "mxf/index/MXFIndexTableSegment.h"
#include "util/Api.h"

namespace bryx {

/// Receives index tables: for each partition that has one, startIndex, the segments in their order, endIndex. Whoever
/// writes index tables makes the same calls.
class BRYX_API MXFIndexHandler {
public:
    virtual ~MXFIndexHandler();

    /// The index table segments of a partition begin.
    virtual void startIndex() = 0;
    virtual void endIndex() = 0;
    /// A segment of an index table.
    virtual void indexTableSegment(const MXFIndexTableSegment& segment) = 0;
};

} // namespace bryx

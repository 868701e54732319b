#include "inspect/IndexCollector.h"

#include <utility>

void IndexCollector::indexTableSegment(const MXFIndexTableSegment& segment) {
    FoundSegment found{positions_.position(), {}, segment.deltaEntryArray.size(), segment.indexEntryArray.size()};
    found.segment.indexStartPosition = segment.indexStartPosition;
    found.segment.indexDuration = segment.indexDuration;
    found.segment.editUnitByteCount = segment.editUnitByteCount;
    found.segment.indexSID = segment.indexSID;
    found.segment.bodySID = segment.bodySID;
    found.segment.indexEditRate = segment.indexEditRate;
    found.segment.sliceCount = segment.sliceCount;
    found.segment.posTableCount = segment.posTableCount;
    segments_.add(std::move(found));
}

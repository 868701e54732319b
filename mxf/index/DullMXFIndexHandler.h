#pragma once

#include "mxf/index/MXFIndexHandler.h"
#include "util/Api.h"

namespace bryx {

/// Does nothing at each call. Derive from it to do something at some of them.
class BRYX_API DullMXFIndexHandler : public MXFIndexHandler {
public:
    ~DullMXFIndexHandler() override;
    void startIndex() override {}
    void endIndex() override {}
    void indexTableSegment(const MXFIndexTableSegment& segment) override;
};

} // namespace bryx

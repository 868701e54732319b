#pragma once

#include "mxf/index/MXFIndexHandler.h"
#include "mxf/structure/MXFPrimedSetParser.h"
#include "util/Api.h"

namespace bryx {

/// Decodes the index table segments of an index region (ST 377-1). It is the index handler of an MXFReader: the region
/// of each partition is a stream of its own to it.
///
/// Each segment is checked, and passed on whatever the checks find. A mandatory property that is wanting is reported as
/// "missing", a value that cannot be read as "invalid"; both have their initial value then. What is no segment is
/// forwarded to the next handler, if one is set. A parser can be used again, also after an exception has ended a reading.
class BRYX_API MXFIndexParser : public MXFPrimedSetParser {
public:
    /// @param handler not owned
    explicit MXFIndexParser(MXFIndexHandler& handler) : handler_(handler) {}
    ~MXFIndexParser() override;

    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;

private:
    const MXFPrimer& primer() const override;
    bool wantsSet(const KLVKey& key) override;
    bool allowsBERLengths(const KLVKey& key) const override;
    const KLVKey* unknownTag(std::uint16_t tag) override;
    void primedSet(MXFPrimedSet& set) override;
    void check(const MXFIndexTableSegment& segment, std::uint64_t position);

    MXFIndexHandler& handler_;
};

} // namespace bryx

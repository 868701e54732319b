#pragma once

#include <cstdint>

#include "klv/KLVFiller.h"
#include "util/Api.h"

namespace bryx {

/// Pads a whole stream: its start begins a filled item, and its end, which writes the fill, ends that. Neither goes
/// further, since the stream is a region of a longer one.
///
/// Regions are announced before they come: a partition pack tells how long they are.
class BRYX_API KLVStreamPadder : public KLVFiller {
public:
    using KLVFiller::KLVFiller;
    ~KLVStreamPadder() override;

    /// The region that may come next, fill included, has @p length octets.
    void announce(std::uint64_t length);

    /// Whether the region announced has come, which goes without saying if it is empty.
    bool isComplete() const { return length_ == announced_; }

    void startStream(bool accurateLengths) override;
    /// Requires "region is as long as announced".
    void endStream(bool stopped) override;

private:
    std::uint64_t announced_ = 0;
    std::uint64_t start_ = 0;
    std::uint64_t length_ = 0;
};

} // namespace bryx

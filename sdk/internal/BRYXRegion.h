#pragma once

#include <cstdint>

#include "klv/DullKLVHandler.h"
#include "klv/KLVMonitor.h"
#include "klv/KLVStreamPadder.h"

/// @file
/// The regions of header metadata and index that stand behind a partition pack, which says how long they are: so they are
/// measured by sending them to nobody first.

namespace bryx {

/// The octets that @p send sends.
template <class Send>
std::uint64_t sizeOf(Send send) {
    DullKLVHandler nobody;
    KLVMonitor monitor;
    monitor.setHandler(&nobody);
    monitor.startStream(true);
    send(monitor);
    return static_cast<std::uint64_t>(std::streamoff{monitor.getLocator().streampos()});
}

/// Whether @p size octets, and fill if need be, make a region of @p length.
bool fitsRegion(std::uint64_t size, std::uint64_t length);

/// Makes @p padder ready for a region of @p size octets, on the grid, with at least @p space octets of fill; for none if
/// @p size is 0.
void prepareRegion(KLVStreamPadder& padder, std::uint64_t size, std::uint64_t space, std::uint64_t kagSize);

template <class Send>
void sendRegion(KLVStreamPadder& padder, Send send) {
    padder.startStream(true);
    send(padder);
    padder.endStream(false);
}

} // namespace bryx

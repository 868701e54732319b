#pragma once

#include <memory>

#include "klv/KLVStreamPadder.h"
#include "util/Api.h"

namespace bryx {

class KLVHandler;
class KLVMonitor;
class KLVStreamFilter;
class MXFStructureCoder;

/// Assembles the chain that writes an MXF stream, and has a receiver for each kind of content: structure, header
/// metadata, index table segments and body. What they get is written in the order of the calls.
///
/// The receivers live as long as the muxer and are not to be deleted. The structure receiver starts and ends the stream.
/// The header metadata and index receivers take a region from its startStream to its endStream, and pad it.
class BRYX_API MXFMuxer {
public:
    MXFMuxer();
    virtual ~MXFMuxer();
    MXFMuxer(const MXFMuxer&) = delete;
    MXFMuxer& operator=(const MXFMuxer&) = delete;

    /// Where all is written to; not owned.
    void setKLVWriter(KLVHandler* writer);
    /// Requires "handler is present".
    KLVHandler* getKLVWriter() const;

    MXFStructureCoder& structureReceiver();
    KLVStreamPadder& headerMetadataReceiver();
    KLVStreamPadder& indexReceiver();
    KLVHandler& bodyReceiver();

    /// Where the next octet goes: octets from the end of the run-in.
    const Locator& getLocator() const;

    /// The alignment grid of the partition that is written.
    const KLVGrid& getGrid() const noexcept { return grid_; }

private:
    KLVGrid grid_;
    // Destroyed in the reverse order.
    std::unique_ptr<KLVMonitor> monitor_;
    std::unique_ptr<KLVStreamFilter> body_;
    std::unique_ptr<KLVStreamPadder> headerMetadata_;
    std::unique_ptr<KLVStreamPadder> index_;
    std::unique_ptr<MXFStructureCoder> structure_;
};

} // namespace bryx

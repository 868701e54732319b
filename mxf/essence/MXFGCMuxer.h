#pragma once

#include <memory>

#include "klv/KLVFiller.h"
#include "util/Api.h"

namespace bryx {

class MXFGCEssenceCoder;
class MXFGCEssenceHandler;
class MXFGCIndexer;
class MXFGCStructureHandler;
class MXFGCSystemHandler;

/// Assembles what writes a Generic Container, and has a receiver for each kind of content: structure, system elements and
/// essence elements. They take the calls that an MXFGCSplitter makes, so that a file can be written from one that is read.
/// Each element is followed by fill up to the KLV alignment grid, a system item as a whole.
///
/// An element has one triplet, which comes between its start and its end in the structure, within a content package. Calls
/// out of this order fail, and nothing is written: "in content package", "not in content package", "content package has
/// elements", "valid element key" (a SMPTE key, and none that means something else, such as fill), "in element", "one triplet in element", "correct element key", and "complete element", which is what one must
/// be when it ends, or anything else of the structure comes.
///
/// The receivers live as long as the muxer and are not to be deleted.
class BRYX_API MXFGCMuxer {
public:
    /// @param body the body receiver of an MXFWriter or MXFMuxer
    /// @param locator tells where in the stream the next octet goes
    /// @param grid of the partition
    /// All outlive the muxer, and are not owned.
    MXFGCMuxer(KLVHandler& body, const Locator& locator, const KLVGrid& grid);
    ~MXFGCMuxer();
    MXFGCMuxer(const MXFGCMuxer&) = delete;
    MXFGCMuxer& operator=(const MXFGCMuxer&) = delete;

    /// What comes behind an indexer, whose next handler it is: put one in front with setIndexer().
    MXFGCStructureHandler& padder();

    /// Makes the structure receiver pass all calls through @p indexer, which ends in padder(); not owned. Between content
    /// packages.
    void setIndexer(MXFGCIndexer& indexer);

    /// Whether a content package has started and not ended.
    bool isInContentPackage() const;

    MXFGCStructureHandler& structureReceiver();
    MXFGCSystemHandler& systemReceiver();
    MXFGCEssenceCoder& essenceReceiver();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace bryx

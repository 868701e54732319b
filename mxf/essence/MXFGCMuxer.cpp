#include "mxf/essence/MXFGCMuxer.h"

#include "mxf/essence/MXFGCEssenceCoder.h"
#include "mxf/essence/MXFGCIndexer.h"
#include "mxf/essence/MXFGCStructurePadder.h"
#include "mxf/essence/MXFGCSystemCoder.h"

namespace {

/// Has each element followed by fill up to the grid.
class Aligner final : public MXFGCStructureFilter {
public:
    using MXFGCStructureFilter::MXFGCStructureFilter;

    void startElement(const KLVKey& key) override {
        next().startElement(key);
        next().startAlign(0);
    }
    void endElement(const KLVKey& key) override {
        next().endAlign();
        next().endElement(key);
    }
};

} // namespace

struct MXFGCMuxer::Parts {
    Parts(KLVHandler& body, const Locator& locator, const KLVGrid& grid)
        : padder(body, locator, grid), structure(std::make_unique<Aligner>(padder)), system(body), essence(body) {}

    MXFGCStructurePadder padder;
    std::unique_ptr<Aligner> structure;
    MXFGCSystemCoder system;
    MXFGCEssenceCoder essence;
};

MXFGCMuxer::MXFGCMuxer(KLVHandler& body, const Locator& locator, const KLVGrid& grid)
    : parts_(std::make_unique<Parts>(body, locator, grid)) {}

MXFGCMuxer::~MXFGCMuxer() = default;

MXFGCStructureHandler& MXFGCMuxer::padder() {
    return parts_->padder;
}

void MXFGCMuxer::setIndexer(MXFGCIndexer& indexer) {
    parts_->structure = std::make_unique<Aligner>(indexer);
}

MXFGCStructureHandler& MXFGCMuxer::structureReceiver() {
    return *parts_->structure;
}

MXFGCSystemHandler& MXFGCMuxer::systemReceiver() {
    return parts_->system;
}

MXFGCEssenceCoder& MXFGCMuxer::essenceReceiver() {
    return parts_->essence;
}

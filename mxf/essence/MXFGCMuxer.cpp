#include "mxf/essence/MXFGCMuxer.h"

#include "mxf/essence/MXFGCEssenceCoder.h"
#include "mxf/essence/MXFGCIndexer.h"
#include "mxf/essence/MXFGCKeys.h"
#include "mxf/essence/MXFGCStructurePadder.h"
#include "mxf/essence/MXFGCSystemCoder.h"

namespace {

/// Has each element followed by fill up to the grid; the elements of a system item, of which there may be several, as
/// one.
class Aligner final : public MXFGCStructureFilter {
public:
    using MXFGCStructureFilter::MXFGCStructureFilter;

    void startElement(const KLVKey& key) override {
        isSystem_ = mxfutil::isGCSystemElement(key);
        if (!isSystem_) {
            endSystemItem();
        }
        next().startElement(key);
        if (!inSystemItem_) {
            next().startAlign(0);
        }
        inSystemItem_ = isSystem_;
    }
    void endElement(const KLVKey& key) override {
        if (!isSystem_) {
            next().endAlign();
        }
        next().endElement(key);
    }
    void endContentPackage() override {
        endSystemItem();
        next().endContentPackage();
    }

private:
    void endSystemItem() {
        if (inSystemItem_) {
            next().endAlign();
            inSystemItem_ = false;
        }
    }

    bool isSystem_ = false;
    bool inSystemItem_ = false;
};

/// Writes system elements with the length form of the essence.
class SystemCoder final : public MXFGCSystemCoder {
public:
    SystemCoder(KLVHandler& receiver, const MXFGCEssenceCoder& essence)
        : MXFGCSystemCoder(receiver), essence_(essence) {}

    bool wantsSystemElement(const KLVKey& key) override {
        setLengthForm(essence_.lengthForm());
        return MXFGCSystemCoder::wantsSystemElement(key);
    }

private:
    const MXFGCEssenceCoder& essence_;
};

} // namespace

struct MXFGCMuxer::Parts {
    Parts(KLVHandler& body, const Locator& locator, const KLVGrid& grid)
        : padder(body, locator, grid), structure(std::make_unique<Aligner>(padder)), essence(body),
          system(body, essence) {}

    MXFGCStructurePadder padder;
    std::unique_ptr<Aligner> structure;
    MXFGCEssenceCoder essence;
    SystemCoder system;
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

#include "mxf/essence/MXFGCStructurePadder.h"

#include "klv/KLVHandler.h"

namespace bryx {

MXFGCStructurePadder::MXFGCStructurePadder(KLVHandler& receiver, const Locator& locator, const KLVGrid& grid)
    : locator_(locator), filler_(grid) {
    filler_.setHandler(&receiver);
}

MXFGCStructurePadder::~MXFGCStructurePadder() = default;

void MXFGCStructurePadder::startStream(std::uint64_t kagSize) {
    kagSize_ = kagSize;
    filler_.setLocator(locator_);
    filler_.startStream(true);
    filler_.setFillLengthForm(0x83);
}

void MXFGCStructurePadder::endStream() {
    util::require(!filler_.isInFilledItem(), "not in filled item");
    filler_.endStream(false);
}

void MXFGCStructurePadder::start(std::uint64_t alignment, std::uint64_t extraSize) {
    filler_.setPadding(KLVFiller::Mode::Alignment, alignment, 0);
    filler_.setExtraSize(extraSize);
    filler_.startFilledItem();
}

void MXFGCStructurePadder::startPad(std::uint64_t extraSize) {
    start(kagSize_, extraSize);
}

void MXFGCStructurePadder::endPad() {
    filler_.endFilledItem();
}

void MXFGCStructurePadder::startAlign(std::uint64_t alignment) {
    util::require(kagSize_ == 0 || alignment % kagSize_ == 0, "alignment is multiple of KAG size");
    start(alignment == 0 ? kagSize_ : alignment, 0);
}

void MXFGCStructurePadder::endAlign() {
    filler_.endFilledItem();
}

} // namespace bryx

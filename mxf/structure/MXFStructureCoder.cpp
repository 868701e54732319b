#include "mxf/structure/MXFStructureCoder.h"

#include "klv/KLVSending.h"
#include "mxf/structure/MXFRandomIndex.h"

namespace bryx {

using util::require;

namespace {

/// The byte count of a region that the pack announces as @p given.
std::uint64_t byteCount(const KLVStreamPadder& padder, std::uint64_t given) {
    return padder.getMode() == KLVFiller::Mode::FixedLength ? padder.getPaddedLength() : given;
}

} // namespace

MXFStructureCoder::MXFStructureCoder(std::unique_ptr<KLVFiller> filler, const Locator& locator, KLVGrid& grid,
                                     KLVStreamPadder& headerMetadata, KLVStreamPadder& index)
    : filler_(std::move(filler)), locator_(locator), grid_(grid), headerMetadata_(headerMetadata), index_(index) {}

MXFStructureCoder::~MXFStructureCoder() = default;

void MXFStructureCoder::setBERLengthForm(std::uint8_t form) {
    require(klvutil::isValidBERLengthForm(form), "valid BER length form");
    form_ = form;
    filler_->setFillLengthForm(form == 1 ? 0x83 : form);
}

void MXFStructureCoder::runIn(std::uint64_t /*length*/) {}

void MXFStructureCoder::startStructure() {
    filler_->setLocator(locator_);
    filler_->startStream(true);
}

void MXFStructureCoder::endStructure() {
    filler_->endStream(false);
}

void MXFStructureCoder::complete(const KLVKey& key, MXFPartitionPack& pack) const {
    pack.headerByteCount = byteCount(headerMetadata_, pack.headerByteCount);
    pack.indexByteCount = byteCount(index_, pack.indexByteCount);
    if (pack.kagSize != 0) {
        require(pack.headerByteCount % pack.kagSize == 0, "header byte count is a multiple of KAG size");
        require(pack.indexByteCount % pack.kagSize == 0, "index byte count is a multiple of KAG size");
    }
    require(pack.majorVersion == 1, "valid major version");
    pack.previousPartition = lastPack_.thisPartition;
    pack.thisPartition = static_cast<std::uint64_t>(std::streamoff{locator_.streampos()});
    if (mxfutil::partitionKind(key) == MXFPartitionKind::Footer) {
        require(pack.footerPartition == 0 || pack.footerPartition == pack.thisPartition,
                "valid footer partition offset");
        pack.footerPartition = pack.thisPartition;
    } else {
        require(pack.footerPartition == 0 || pack.footerPartition > pack.thisPartition,
                "valid footer partition offset");
    }
}

void MXFStructureCoder::writePack(const KLVKey& key, const std::vector<std::uint8_t>& octets, std::uint8_t form) {
    filler_->berLengthForm(form);
    if (filler_->startFixedLengthPack(key, octets.size())) {
        klvutil::sendValue(*filler_, octets.data(), octets.size());
    }
    filler_->endFixedLengthPack(key);
}

void MXFStructureCoder::startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t /*value*/) {
    MXFPartitionPack completed = pack;
    complete(key, completed);
    grid_.origin = static_cast<std::streamoff>(completed.thisPartition);
    headerMetadata_.announce(completed.headerByteCount);
    index_.announce(completed.indexByteCount);
    filler_->setPadding(KLVFiller::Mode::Alignment, completed.kagSize, 0);
    filler_->startFilledItem();
    const std::vector<std::uint8_t> octets = mxfutil::writePartitionPack(completed);
    writePack(key, octets, klvutil::fittingBERLengthForm(form_, octets.size()));
    filler_->endFilledItem();
    lastPack_ = std::move(completed);
}

void MXFStructureCoder::endPartition(const KLVKey& /*key*/) {
    require(headerMetadata_.isComplete(), "header metadata is complete");
    require(index_.isComplete(), "index is complete");
}

void MXFStructureCoder::randomIndex(const MXFRandomIndex& index) {
    // The overall length depends on the form of the length.
    const std::uint64_t size = index.size() * mxfutil::randomIndexEntrySize + mxfutil::overallLengthSize;
    const std::uint8_t form = klvutil::fittingBERLengthForm(form_, size);
    writePack(mxfutil::randomIndexPackKey, mxfutil::writeRandomIndex(index, form), form);
}

} // namespace bryx

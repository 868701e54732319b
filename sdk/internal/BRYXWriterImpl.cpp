#include "sdk/internal/BRYXWriterImpl.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "klv/ValueCoding.h"
#include "mxf/essence/MXFGCEssenceCoder.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/model/MXFPropertyLabel.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/structure/MXFStructureCoder.h"
#include "sdk/internal/BRYXMetadataSurvey.h"
#include "sdk/internal/BRYXRegion.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace bryx {

using Placement = BRYXWriterConfiguration::IndexPlacement;
using util::require;

namespace {

constexpr std::uint32_t maxKAGSize = std::uint32_t{1} << 20U;
constexpr std::uint64_t maxHeaderSpace = std::uint64_t{1} << 32U;

constexpr std::uint16_t majorVersion = 1;

/// Codes header metadata as that of the version that the file is written in, whatever file it came from.
class HeaderMetadataCoder final : public MXFFormatMetadataCoder {
public:
    HeaderMetadataCoder(KLVHandler& next, std::uint16_t minorVersion)
        : MXFFormatMetadataCoder(next), version_(static_cast<std::uint16_t>(majorVersion << 8U | minorVersion)) {}

    void primedSet(MXFPrimedSet& set) override {
        if (set.key == Preface::classKey) {
            const auto version = set.properties.find(MXFPropertyLabel(0x3B05).label());
            if (version != set.properties.end()) {
                version->second = klvutil::writeValue(version_);
            }
        }
        MXFFormatMetadataCoder::primedSet(set);
    }

private:
    std::uint16_t version_;
};

void sendMetadata(KLVHandler& handler, const BRYXHeaderMetadata& metadata,
                  const BRYXWriterConfiguration& configuration) {
    HeaderMetadataCoder coder(handler, configuration.minorVersion);
    coder.setBERLengthForm(configuration.metadataLengthForm);
    metadata.send(coder);
}

bool isClosed(MXFPartitionStatus status) {
    return status == MXFPartitionStatus::ClosedIncomplete || status == MXFPartitionStatus::ClosedComplete;
}

bool isComplete(MXFPartitionStatus status) {
    return status == MXFPartitionStatus::OpenComplete || status == MXFPartitionStatus::ClosedComplete;
}

MXFPartitionStatus statusOf(bool isClosed, bool isComplete) {
    return isClosed     ? isComplete ? MXFPartitionStatus::ClosedComplete : MXFPartitionStatus::ClosedIncomplete
           : isComplete ? MXFPartitionStatus::OpenComplete
                        : MXFPartitionStatus::OpenIncomplete;
}

} // namespace

BRYXWriterImpl::BRYXWriterImpl(std::shared_ptr<std::ostream> stream, std::iostream* written)
    : output_(std::move(stream)), written_(written), cutter_([this] {
          auto self = shared_from_this();
          cutBody();
          return self;
      }) {
    setConfiguration({});
}

BRYXWriterImpl::~BRYXWriterImpl() = default;

void BRYXWriterImpl::setConfiguration(const BRYXWriterConfiguration& configuration) {
    require(state_ == State::BeforeStart, "before start");
    for (const std::uint8_t form : {configuration.packLengthForm, configuration.metadataLengthForm}) {
        require(klvutil::isValidBERLengthForm(form), "valid BER length form");
    }
    const std::uint8_t form = configuration.essenceLengthForm;
    require(form == klvutil::automaticBERLengthForm || klvutil::isValidBERLengthForm(form), "valid BER length form");
    require(configuration.fillKeyVersion <= 2, "valid fill item key version");
    require(configuration.kagSize <= maxKAGSize, "valid KAG size");
    require(configuration.headerSpace <= maxHeaderSpace, "valid header space");
    for (const auto status : {configuration.headerStatus, configuration.bodyStatus, configuration.footerStatus}) {
        require(status != MXFPartitionStatus::GenericStream, "valid partition status");
    }
    configuration_ = configuration;
    if (configuration_.uidGenerator == nullptr) {
        configuration_.uidGenerator = std::make_shared<BRYXDefaultUIDGenerator>();
    }
}

std::uint64_t BRYXWriterImpl::position() const {
    return chain_ == nullptr ? 0 : static_cast<std::uint64_t>(std::streamoff{chain_->writer.getLocator().streampos()});
}

MXFGCMuxer& BRYXWriterImpl::muxer() const {
    require(muxer_ != nullptr, "after start");
    return *muxer_;
}

MXFGCStructureHandler& BRYXWriterImpl::structureReceiver() {
    return cutter_;
}

MXFGCSystemHandler& BRYXWriterImpl::systemReceiver() {
    return muxer().systemReceiver();
}

MXFGCEssenceHandler& BRYXWriterImpl::essenceReceiver() {
    return muxer().essenceReceiver();
}

KLVHandler& BRYXWriterImpl::bodyReceiver() {
    return gate_;
}

void BRYXWriterImpl::requireBetween() const {
    require(state_ != State::BeforeStart, "after start");
    require(state_ != State::Finished, "not finished");
    require(state_ != State::Failed, "no failure before");
    require(state_ == State::Between, "not in essence");
}

void BRYXWriterImpl::requireBetweenPackages() const {
    require(!muxer().isInContentPackage(), "not in content package");
}

void BRYXWriterImpl::requireCodable(const BRYXHeaderMetadata& metadata) const {
    require(metadata.send != nullptr, "header metadata is present");
    sizeOf([&](KLVHandler& handler) { sendMetadata(handler, metadata, configuration_); });
}

/// The weaker of the caller's word and what can be seen of @p metadata and of the essence that has been written.
MXFPartitionStatus BRYXWriterImpl::heldStatus(const BRYXHeaderMetadata& metadata, MXFPartitionStatus word) const {
    const BRYXMetadataSurvey survey(metadata);
    const bool areTrue = std::all_of(containers_.begin(), containers_.end(), [&](const auto& each) {
        const Container& written = *each.second;
        const auto editUnits = written.index.editUnits(written.octets);
        // Without an index table nobody need have told the rate.
        const Rational rate = written.container.indexSID == 0 ? Rational() : written.container.editRate;
        return !editUnits || survey.fits(each.first, *editUnits, rate);
    });
    return statusOf(isClosed(word) && areTrue, isComplete(word) && survey.isComplete());
}

/// Streams of whatever kind share one set of SIDs.
void BRYXWriterImpl::requireFree(std::uint32_t sid, const char* condition) const {
    require(sid != 0 && sids_.count(sid) == 0, condition);
}

void BRYXWriterImpl::startPartition(MXFPartitionKind kind, MXFPartitionStatus status,
                                    const BRYXHeaderMetadata* metadata, const Part& index, std::uint32_t bodySID) {
    MXFPartitionPack pack = headerPack_;
    pack.headerByteCount = 0;
    pack.bodySID = bodySID;
    const auto container = containers_.find(bodySID);
    pack.bodyOffset = container == containers_.end() ? 0 : container->second->octets;
    pack.indexSID = index.table == nullptr ? 0 : index.table->container().indexSID;
    if (metadata != nullptr) {
        pack.operationalPattern = metadata->operationalPattern;
        pack.essenceContainers = metadata->essenceContainers;
    }
    MXFWriter& writer = chain_->writer;
    const auto sendSets = [&](KLVHandler& handler) { sendMetadata(handler, *metadata, configuration_); };
    prepareRegion(writer.headerMetadataReceiver(), metadata == nullptr ? 0 : sizeOf(sendSets),
                  kind == MXFPartitionKind::Header ? configuration_.headerSpace : 0, pack.kagSize);
    prepareRegion(writer.indexReceiver(), index.octets, 0, pack.kagSize);
    partitionKey_ = mxfutil::partitionPackKey(kind, status);
    const State before = std::exchange(state_, State::Failed); // if something fails from here on
    writer.structureReceiver().startPartition(partitionKey_, pack, 0);
    randomIndex_.push_back({bodySID, writer.structureReceiver().lastPack().thisPartition});
    if (metadata != nullptr) {
        sendRegion(writer.headerMetadataReceiver(), sendSets);
    }
    if (index.table != nullptr) {
        sendRegion(writer.indexReceiver(), [&](KLVHandler& handler) { index.table->send(handler, index); });
    }
    state_ = before;
}

void BRYXWriterImpl::endPartition() {
    chain_->writer.structureReceiver().endPartition(partitionKey_);
    output_.flush();
}

void BRYXWriterImpl::start(const BRYXHeaderMetadata& metadata) {
    const auto self = shared_from_this();
    require(state_ == State::BeforeStart, "before start");
    requireCodable(metadata);
    headerStatus_ = heldStatus(metadata, configuration_.headerStatus);
    output_.start(mxfutil::partitionPackKey(MXFPartitionKind::Header, headerStatus_));
    chain_ = std::make_unique<BRYXWriterChain>(output_.stream(), written_, configuration_);
    MXFWriter& writer = chain_->writer;
    gate_.setReceiver(writer.bodyReceiver());
    genericGate_.setReceiver(writer.bodyReceiver());
    muxer_ = std::make_unique<MXFGCMuxer>(gate_, writer.getLocator(), writer.getGrid());
    if (configuration_.essenceLengthForm != klvutil::automaticBERLengthForm) {
        muxer_->essenceReceiver().setFixedLengthForm(configuration_.essenceLengthForm);
    }
    headerPack_.majorVersion = majorVersion;
    headerPack_.minorVersion = configuration_.minorVersion;
    headerPack_.kagSize = configuration_.kagSize;
    headerPack_.operationalPattern = metadata.operationalPattern;
    headerPack_.essenceContainers = metadata.essenceContainers;
    writer.structureReceiver().startStructure();
    startPartition(MXFPartitionKind::Header, headerStatus_, &metadata, {}, 0);
    endPartition();
    headerPack_ = writer.structureReceiver().lastPack();
    state_ = State::Between;
}

// ---- Bodies ----

/// Checks all that can be checked of an essence container before it is begun.
std::unique_ptr<BRYXWriterImpl::Container> BRYXWriterImpl::newContainer(const BRYXEssenceContainer& what) const {
    requireFree(what.bodySID, "unique body SID");
    if (what.indexSID != 0) {
        requireFree(what.indexSID, "unique index SID");
        require(what.indexSID != what.bodySID, "unique index SID");
    }
    require(what.editRate.numerator > 0 && what.editRate.denominator > 0, "valid edit rate");
    const bool isBefore = configuration_.indexPlacement == Placement::BeforeEssence;
    require(!isBefore || what.indexSID == 0 || !what.segments.empty(), "index table segments are given");
    auto added = std::make_unique<Container>(what, configuration_, muxer_->padder(), chain_->writer.getLocator());
    if (!what.segments.empty()) {
        added->index.whole(0); // which fails where they cannot be coded
    }
    return added;
}

void BRYXWriterImpl::startEssence(const BRYXEssenceContainer& container) {
    const auto self = shared_from_this();
    requireBetween();
    const auto known = containers_.find(container.bodySID);
    std::unique_ptr<Container> added = known == containers_.end() ? newContainer(container) : nullptr;
    const bool isNew = added != nullptr;
    Container* const next = isNew ? added.get() : known->second.get();
    if (current_ != nullptr && next != current_) {
        // The next partition is another container's.
        writeIndexPartition(current_->index.next());
    }
    if (isNew) {
        sids_.insert(container.bodySID);
        sids_.insert(container.indexSID);
        containers_.emplace(container.bodySID, std::move(added));
    }
    current_ = next;
    muxer_->setIndexer(current_->index.indexer());
    // A table that comes before its essence comes once.
    openBody(isNew && current_->index.isBefore() ? current_->index.whole(0) : current_->index.next());
    state_ = State::InEssence;
    gate_.open();
    cutter_.open(muxer_->structureReceiver());
    gate_.repeatLengthForm();
    muxer_->padder().startStream(configuration_.kagSize);
}

void BRYXWriterImpl::openBody(const Part& index) {
    Container& now = *current_;
    startPartition(MXFPartitionKind::Body, configuration_.bodyStatus, nullptr, index, now.container.bodySID);
    now.bodyStart = position();
    now.packagesBefore = now.index.contentPackages();
    now.index.startBody(now.bodyStart, now.octets);
}

void BRYXWriterImpl::closeBody() {
    current_->octets += position() - current_->bodyStart;
    current_->index.endBody(position());
    endPartition();
}

/// Ends a partition, and begins the next one of the same container.
void BRYXWriterImpl::nextBody() {
    gate_.requireComplete();
    const Part index = current_->index.next(); // asks the caller, who may throw: before anything is written
    closeBody();
    openBody(index);
    gate_.repeatLengthForm();
}

void BRYXWriterImpl::cutBody() {
    requireBetweenPackages();
    const Container& now = *current_;
    const std::uint64_t octets = position() - now.bodyStart;
    const std::uint64_t units = now.index.contentPackages() - now.packagesBefore;
    const bool isFull = (configuration_.partitionSize != 0 && octets >= configuration_.partitionSize) ||
                        (configuration_.partitionDuration != 0 && units >= configuration_.partitionDuration);
    if (octets != 0 && isFull) {
        nextBody();
    }
}

void BRYXWriterImpl::startBodyPartition() {
    const auto self = shared_from_this();
    require(state_ == State::InEssence, "in essence");
    requireBetweenPackages();
    nextBody();
}

void BRYXWriterImpl::endEssence() {
    require(state_ == State::InEssence, "in essence");
    requireBetweenPackages();
    gate_.requireComplete();
    muxer_->padder().endStream();
    gate_.close();
    cutter_.close();
    closeBody();
    state_ = State::Failed; // if a table is wrong that stands in front
    require(current_->index.isAsAnnounced(current_->octets), "edit units have the size announced");
    state_ = State::Between;
}

KLVHandler& BRYXWriterImpl::startGenericStream(std::uint32_t bodySID) {
    requireBetween();
    requireFree(bodySID, "unique body SID");
    startPartition(MXFPartitionKind::Body, MXFPartitionStatus::GenericStream, nullptr, {}, bodySID);
    sids_.insert(bodySID);
    state_ = State::InGenericStream;
    genericGate_.open();
    const MXFWriter& writer = chain_->writer;
    genericStreamFiller_ = std::make_unique<KLVFiller>(writer.getGrid());
    genericStreamFiller_->setHandler(&genericGate_);
    genericStreamFiller_->setLocator(writer.getLocator());
    genericStreamFiller_->setPadding(KLVFiller::Mode::Alignment, configuration_.kagSize, 0);
    genericStreamFiller_->startFilledItem();
    return *genericStreamFiller_;
}

void BRYXWriterImpl::endGenericStream() {
    require(state_ == State::InGenericStream, "in generic stream");
    genericGate_.requireComplete();
    genericStreamFiller_->endFilledItem();
    genericGate_.close();
    endPartition();
    state_ = State::Between;
}

// ---- Index tables ----

std::set<std::uint32_t> BRYXWriterImpl::indexedContainers() const {
    std::set<std::uint32_t> result;
    for (const auto& [bodySID, container] : containers_) {
        if (container->index.isOwn()) {
            result.insert(bodySID);
        }
    }
    return result;
}

void BRYXWriterImpl::writeIndexPartition(const Part& index) {
    if (index.table != nullptr) {
        startPartition(MXFPartitionKind::Body, configuration_.bodyStatus, nullptr, index, 0);
        endPartition();
    }
}

// ---- The end ----

bool BRYXWriterImpl::finish(const BRYXHeaderMetadata& metadata) {
    const auto self = shared_from_this();
    requireBetween();
    // What cannot be coded or described fails before anything is written.
    requireCodable(metadata);
    const MXFPartitionStatus status = heldStatus(metadata, configuration_.footerStatus);
    std::vector<Part> indexes;
    for (const auto& [bodySID, container] : containers_) {
        if (container.get() != current_) {
            indexes.push_back(container->index.whole(container->octets));
        }
    }
    const Part last = current_ == nullptr ? Part() : current_->index.whole(current_->octets);
    state_ = State::Failed; // unless all is written
    for (const Part& index : indexes) {
        writeIndexPartition(index);
    }
    // No footer partition is open (ST 377-1, Partition Status): the header partition tells what is.
    const MXFPartitionStatus footerStatus = isClosed(status) ? status : MXFPartitionStatus::ClosedIncomplete;
    startPartition(MXFPartitionKind::Footer, footerStatus, &metadata, last, 0);
    endPartition();
    MXFStructureCoder& structure = chain_->writer.structureReceiver();
    const std::uint64_t footer = structure.lastPack().thisPartition;
    structure.randomIndex(randomIndex_);
    structure.endStructure();
    state_ = State::Finished;
    if (!output_.canSeek()) {
        return false;
    }
    const std::uint64_t end = position();
    tellFooter(footer);
    const bool isRewritten = rewriteHeader(metadata, status, footer);
    if (!isRewritten) {
        openHeader();
    }
    output_.seek(end);
    return isRewritten && status == MXFPartitionStatus::ClosedComplete;
}

/// Writes the offset of the footer partition into the packs of all partitions before it.
void BRYXWriterImpl::tellFooter(std::uint64_t footer) {
    const std::size_t packSize = mxfutil::writePartitionPack(headerPack_).size();
    const std::uint64_t head =
        klvutil::keySize +
        klvutil::berLengthFieldSize(klvutil::fittingBERLengthForm(configuration_.packLengthForm, packSize));
    // Two versions, KAG size, this and previous partition come before it.
    const std::uint64_t field = head + 2 + 2 + 4 + 8 + 8;
    std::uint8_t octets[8];
    util::storeBigEndian(octets, footer, sizeof octets);
    for (std::size_t i = 0; i + 1 < randomIndex_.size(); ++i) {
        output_.overwrite(randomIndex_[i].byteOffset + field, octets, sizeof octets);
    }
}

/// Writes the header partition again, if @p metadata fits in it.
bool BRYXWriterImpl::rewriteHeader(const BRYXHeaderMetadata& metadata, MXFPartitionStatus status,
                                   std::uint64_t footer) {
    const auto sendSets = [&](KLVHandler& handler) { sendMetadata(handler, metadata, configuration_); };
    const std::uint64_t space = headerPack_.headerByteCount;
    const std::uint64_t size = sizeOf(sendSets);
    if (!fitsRegion(size, space) || metadata.essenceContainers.size() != headerPack_.essenceContainers.size()) {
        return false;
    }
    output_.seek(0);
    BRYXWriterChain chain(output_.stream(), written_, configuration_);
    MXFStructureCoder& structure = chain.writer.structureReceiver();
    chain.writer.headerMetadataReceiver().setPadding(KLVFiller::Mode::FixedLength, headerPack_.kagSize, space);
    MXFPartitionPack pack = headerPack_;
    pack.footerPartition = footer;
    pack.operationalPattern = metadata.operationalPattern;
    pack.essenceContainers = metadata.essenceContainers;
    const KLVKey key = mxfutil::partitionPackKey(MXFPartitionKind::Header, status);
    structure.startStructure();
    structure.startPartition(key, pack, 0);
    sendRegion(chain.writer.headerMetadataReceiver(), sendSets);
    structure.endPartition(key);
    structure.endStructure();
    return true;
}

/// What a header partition says that stays as it was is out of date now.
void BRYXWriterImpl::openHeader() {
    if (isClosed(headerStatus_)) {
        constexpr std::size_t statusOctet = 14;
        const KLVKey key =
            mxfutil::partitionPackKey(MXFPartitionKind::Header, statusOf(false, isComplete(headerStatus_)));
        output_.overwrite(statusOctet, &key.octets[statusOctet], 1);
    }
}

} // namespace bryx

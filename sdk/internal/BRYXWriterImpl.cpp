#include "sdk/internal/BRYXWriterImpl.h"

#include <algorithm>
#include <utility>

#include "klv/DullKLVHandler.h"
#include "klv/KLVMonitor.h"
#include "mxf/index/MXFIndexCoder.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "mxf/structure/MXFStructureCoder.h"
#include "sdk/internal/BRYXFileVerifier.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

using Placement = BRYXWriterConfiguration::IndexPlacement;
using util::require;

namespace {

/// The least octets of a fill item with the usual form of its length.
constexpr std::uint64_t leastFill = klvutil::keySize + 4;

constexpr std::uint32_t maxKAGSize = std::uint32_t{1} << 20U;
constexpr std::uint64_t maxHeaderSpace = std::uint64_t{1} << 32U;

/// The length of a region for @p size octets: at least @p least, on the grid, and with room for fill if there is any.
std::uint64_t paddedLength(std::uint64_t size, std::uint64_t least, std::uint64_t kagSize) {
    const std::uint64_t step = std::max<std::uint64_t>(kagSize, 1);
    const auto rounded = [&](std::uint64_t length) { return (length + step - 1) / step * step; };
    const std::uint64_t length = rounded(std::max(size, least));
    return length == size || length - size >= leastFill ? length : rounded(size + leastFill);
}

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

void sendMetadata(KLVHandler& handler, const BRYXHeaderMetadata& metadata, std::uint8_t form) {
    MXFFormatMetadataCoder coder(handler);
    coder.setBERLengthForm(form);
    metadata.send(coder);
}

/// Makes @p padder ready for a region that @p send sends; for none if @p size is 0.
void preparePadder(KLVStreamPadder& padder, std::uint64_t size, std::uint64_t least, std::uint64_t kagSize) {
    if (size == 0) {
        padder.setPadding(KLVFiller::Mode::Alignment, kagSize, 0);
    } else {
        padder.setPadding(KLVFiller::Mode::FixedLength, kagSize, paddedLength(size, least, kagSize));
    }
}

template <class Send>
void sendRegion(KLVStreamPadder& padder, Send send) {
    padder.startStream(true);
    send(padder);
    padder.endStream(false);
}

} // namespace

// ---- The chain ----

BRYXWriterChain::BRYXWriterChain(std::ostream& stream, std::iostream* written,
                                 const BRYXWriterConfiguration& configuration)
    : writer(stream) {
    KLVHandler* const generic = writer.getKLVWriter();
    if (configuration.fillKeyVersion != 0) {
        fill_.setKeyVersion(configuration.fillKeyVersion);
    }
    if (written != nullptr) {
        verifying_ = std::make_unique<VerifyingKLVHandler>(*written, generic);
    }
    fill_.setHandler(verifying_ ? static_cast<KLVHandler*>(verifying_.get()) : generic);
    writer.setKLVWriter(&fill_);
    writer.structureReceiver().setBERLengthForm(configuration.packLengthForm);
}

// ---- Essence ----

/// An essence container, and how far it has been written.
struct BRYXWriterImpl::Container {
    /// Asks the caller what to say of a picture, and keeps nothing if there is to be no index table of this making.
    class Indexer final : public MXFGCIntraIndexer {
    public:
        Indexer(MXFGCStructureHandler& next, const Locator& locator, const BRYXEssenceContainer& container,
                Placement placement)
            : MXFGCIntraIndexer(next, locator), container_(container),
              keeps_(placement != Placement::None && container.indexSID != 0 && container.segments.empty()) {}

        std::uint64_t contentPackages() const noexcept { return contentPackages_; }

    private:
        void indexContentPackage(std::uint64_t start, const Offsets& offsets) override {
            ++contentPackages_;
            if (keeps_) {
                MXFGCIntraIndexer::indexContentPackage(start, offsets);
            }
        }
        void describe(std::int64_t editUnit, MXFIndexEntry& entry) const override {
            if (container_.describe) {
                container_.describe(editUnit, entry);
            } else {
                MXFGCIntraIndexer::describe(editUnit, entry);
            }
        }

        const BRYXEssenceContainer& container_;
        bool keeps_;
        std::uint64_t contentPackages_ = 0;
    };

    Container(BRYXEssenceContainer what, MXFGCStructureHandler& next, const Locator& locator, Placement placement)
        : container(std::move(what)), indexer(next, locator, container, placement) {}

    BRYXEssenceContainer container;
    Indexer indexer;
    std::uint64_t octets = 0;            ///< in the partitions that have ended
    std::uint64_t bodyStart = 0;         ///< position of the body that is written
    std::uint64_t packagesBefore = 0;    ///< content packages before that body
    std::vector<std::int64_t> indexedTo; ///< where the batches of segments end that stand in partitions
    std::size_t indexed = 0;             ///< the segments in these batches
    std::vector<MXFUID> segmentUIDs;     ///< of the segments of the table, as far as they have been made
    Segments constant;                   ///< the whole table, if it needs no entries
};

/// Index table segments for one partition. They take far more memory than what they are made of, so each is made when it is
/// sent, and anew when it is sent again.
struct BRYXWriterImpl::Index {
    Container* container = nullptr;  ///< null if there are no segments
    const Segments* given = nullptr; ///< the segments; null if the indexer makes them
    std::int64_t first = 0;          ///< edit unit
    std::vector<std::int64_t> ends;  ///< of the batches, each of as few segments as can be
    std::size_t number = 0;          ///< of the first segment in the table
    std::uint64_t octets = 0;
};

/// The structure receiver: ends a partition where a content package starts, if it has enough.
class BRYXWriterImpl::PartitionCutter final : public MXFGCStructureHandler {
public:
    explicit PartitionCutter(BRYXWriterImpl& writer) : writer_(writer) {}

    // The stream is the writer's.
    void startStream(std::uint64_t /*kagSize*/) override {}
    void endStream() override {}
    void startContentPackage() override {
        require(writer_.state_ == State::InEssence, "in essence");
        writer_.requireBetweenPackages();
        writer_.cutBody();
        next().startContentPackage();
    }
    void endContentPackage() override { next().endContentPackage(); }
    void startElement(const KLVKey& key) override { next().startElement(key); }
    void endElement(const KLVKey& key) override { next().endElement(key); }
    void startPad(std::uint64_t extraSize) override { next().startPad(extraSize); }
    void endPad() override { next().endPad(); }
    void startAlign(std::uint64_t alignment) override { next().startAlign(alignment); }
    void endAlign() override { next().endAlign(); }

private:
    MXFGCStructureHandler& next() { return writer_.muxer().structureReceiver(); }

    BRYXWriterImpl& writer_;
};

// ---- The writer ----

BRYXWriterImpl::BRYXWriterImpl(std::shared_ptr<std::ostream> stream, std::iostream* written)
    : stream_(std::move(stream)), written_(written), structure_(std::make_unique<PartitionCutter>(*this)) {
    require(stream_ != nullptr, "stream is present");
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
    return *structure_;
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
    sizeOf([&](KLVHandler& handler) { sendMetadata(handler, metadata, configuration_.metadataLengthForm); });
}

void BRYXWriterImpl::requireUnique(std::set<std::uint32_t>& known, std::uint32_t sid, const char* condition) {
    require(sid != 0 && known.insert(sid).second, condition);
}

void BRYXWriterImpl::startPartition(MXFPartitionKind kind, MXFPartitionStatus status,
                                    const BRYXHeaderMetadata* metadata, const Index& index, std::uint32_t bodySID) {
    MXFPartitionPack pack = headerPack_;
    pack.headerByteCount = 0;
    pack.bodySID = bodySID;
    const auto container = containers_.find(bodySID);
    pack.bodyOffset = container == containers_.end() ? 0 : container->second->octets;
    pack.indexSID = index.container == nullptr ? 0 : index.container->container.indexSID;
    if (metadata != nullptr) {
        pack.operationalPattern = metadata->operationalPattern;
        pack.essenceContainers = metadata->essenceContainers;
    }
    MXFWriter& writer = chain_->writer;
    const std::uint8_t form = configuration_.metadataLengthForm;
    const auto sendSets = [&](KLVHandler& handler) { sendMetadata(handler, *metadata, form); };
    preparePadder(writer.headerMetadataReceiver(), metadata == nullptr ? 0 : sizeOf(sendSets),
                  kind == MXFPartitionKind::Header ? configuration_.headerSpace : 0, pack.kagSize);
    preparePadder(writer.indexReceiver(), index.octets, 0, pack.kagSize);
    partitionKey_ = mxfutil::partitionPackKey(kind, status);
    const State before = std::exchange(state_, State::Failed); // if something fails from here on
    writer.structureReceiver().startPartition(partitionKey_, pack, 0);
    randomIndex_.push_back({bodySID, writer.structureReceiver().lastPack().thisPartition});
    if (metadata != nullptr) {
        sendRegion(writer.headerMetadataReceiver(), sendSets);
    }
    if (index.container != nullptr) {
        sendRegion(writer.indexReceiver(), [&](KLVHandler& handler) { sendIndex(handler, index); });
    }
    state_ = before;
}

void BRYXWriterImpl::endPartition() {
    chain_->writer.structureReceiver().endPartition(partitionKey_);
    require(static_cast<bool>(stream_->flush()), "successful write()");
}

void BRYXWriterImpl::start(const BRYXHeaderMetadata& metadata) {
    require(state_ == State::BeforeStart, "before start");
    requireCodable(metadata);
    if (*stream_) {
        base_ = stream_->tellp();
        stream_->clear(stream_->rdstate() & ~std::ios::failbit); // which one that cannot tell its position may set
    }
    chain_ = std::make_unique<BRYXWriterChain>(*stream_, written_, configuration_);
    MXFWriter& writer = chain_->writer;
    gate_.setReceiver(writer.bodyReceiver());
    genericGate_.setReceiver(writer.bodyReceiver());
    muxer_ = std::make_unique<MXFGCMuxer>(gate_, writer.getLocator(), writer.getGrid());
    if (configuration_.essenceLengthForm != klvutil::automaticBERLengthForm) {
        muxer_->essenceReceiver().setFixedLengthForm(configuration_.essenceLengthForm);
    }
    headerPack_.majorVersion = 1;
    headerPack_.minorVersion = configuration_.minorVersion;
    headerPack_.kagSize = configuration_.kagSize;
    headerPack_.operationalPattern = metadata.operationalPattern;
    headerPack_.essenceContainers = metadata.essenceContainers;
    writer.structureReceiver().startStructure();
    startPartition(MXFPartitionKind::Header, configuration_.headerStatus, &metadata, {}, 0);
    endPartition();
    headerPack_ = writer.structureReceiver().lastPack();
    state_ = State::Between;
}

// ---- Bodies ----

void BRYXWriterImpl::startEssence(const BRYXEssenceContainer& container) {
    requireBetween();
    const auto known = containers_.find(container.bodySID);
    if (known == containers_.end()) {
        const bool isBefore = configuration_.indexPlacement == Placement::BeforeEssence;
        require(!isBefore || container.indexSID == 0 || !container.segments.empty(), "index table segments are given");
        requireUnique(bodySIDs_, container.bodySID, "unique body SID");
        if (container.indexSID != 0) {
            requireUnique(indexSIDs_, container.indexSID, "unique index SID");
        }
    }
    if (current_ != nullptr && (known == containers_.end() || known->second.get() != current_)) {
        // The next partition is another container's.
        writeIndexPartition(newIndex(*current_));
    }
    if (known != containers_.end()) {
        current_ = known->second.get();
    } else {
        auto added = std::make_unique<Container>(container, muxer_->padder(), chain_->writer.getLocator(),
                                                 configuration_.indexPlacement);
        current_ = containers_.emplace(container.bodySID, std::move(added)).first->second.get();
    }
    muxer_->setIndexer(current_->indexer);
    // A table that comes before its essence comes once.
    const bool isFirst = known == containers_.end() && configuration_.indexPlacement == Placement::BeforeEssence;
    openBody(isFirst ? wholeIndex(*current_) : newIndex(*current_));
    state_ = State::InEssence;
    gate_.open();
    gate_.repeatLengthForm();
    muxer_->padder().startStream(configuration_.kagSize);
}

void BRYXWriterImpl::openBody(const Index& index) {
    Container& now = *current_;
    startPartition(MXFPartitionKind::Body, configuration_.bodyStatus, nullptr, index, now.container.bodySID);
    now.bodyStart = position();
    now.packagesBefore = now.indexer.contentPackages();
    now.indexer.startBody(now.bodyStart, now.octets);
}

void BRYXWriterImpl::closeBody() {
    current_->octets += position() - current_->bodyStart;
    endPartition();
}

/// Ends a partition, and begins the next one of the same container.
void BRYXWriterImpl::nextBody() {
    gate_.requireComplete();
    const Index index = newIndex(*current_); // asks the caller, who may throw: before anything is written
    closeBody();
    openBody(index);
    gate_.repeatLengthForm();
}

void BRYXWriterImpl::cutBody() {
    const Container& now = *current_;
    const std::uint64_t octets = position() - now.bodyStart;
    const std::uint64_t units = now.indexer.contentPackages() - now.packagesBefore;
    const bool isFull = (configuration_.partitionSize != 0 && octets >= configuration_.partitionSize) ||
                        (configuration_.partitionDuration != 0 && units >= configuration_.partitionDuration);
    if (octets != 0 && isFull) {
        nextBody();
    }
}

void BRYXWriterImpl::startBodyPartition() {
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
    closeBody();
    state_ = State::Between;
    const Container& now = *current_;
    if (configuration_.indexPlacement == Placement::BeforeEssence && now.container.segments.size() == 1 &&
        now.indexer.contentPackages() > 1) {
        const std::uint64_t size = now.container.segments.front().editUnitByteCount;
        require(size == 0 || now.octets == size * now.indexer.contentPackages(), "edit units have the size announced");
    }
}

KLVHandler& BRYXWriterImpl::startGenericStream(std::uint32_t bodySID) {
    requireBetween();
    requireUnique(bodySIDs_, bodySID, "unique body SID");
    startPartition(MXFPartitionKind::Body, MXFPartitionStatus::GenericStream, nullptr, {}, bodySID);
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

bool BRYXWriterImpl::isIndexed(const Container& container) const {
    return configuration_.indexPlacement != Placement::None && container.container.indexSID != 0;
}

std::set<std::uint32_t> BRYXWriterImpl::indexedContainers() const {
    std::set<std::uint32_t> result;
    for (const auto& [bodySID, container] : containers_) {
        if (isIndexed(*container) && container->container.segments.empty()) {
            result.insert(bodySID);
        }
    }
    return result;
}

/// Sends the segments, with what they do not say filled in, and returns their number. One that was sent before has the
/// instance UID that it had.
std::size_t BRYXWriterImpl::sendIndex(KLVHandler& handler, const Index& index) {
    Container& container = *index.container;
    std::size_t number = index.number;
    MXFIndexCoder coder(handler);
    coder.setBERLengthForm(configuration_.metadataLengthForm);
    const auto send = [&](MXFIndexTableSegment segment) {
        segment.indexEditRate = container.container.editRate;
        segment.indexSID = container.container.indexSID;
        segment.bodySID = container.container.bodySID;
        if (number == container.segmentUIDs.size()) {
            container.segmentUIDs.push_back(configuration_.uidGenerator->generateUID());
        }
        segment.instanceUID = container.segmentUIDs[number++];
        coder.indexTableSegment(segment);
    };
    coder.startIndex();
    if (index.given != nullptr) {
        std::for_each(index.given->begin(), index.given->end(), send);
    }
    std::int64_t first = index.first;
    for (const std::int64_t end : index.ends) {
        while (first < end) {
            MXFIndexTableSegment segment = container.indexer.segment(first, end);
            first += segment.indexDuration;
            send(std::move(segment));
        }
    }
    coder.endIndex();
    return number - index.number;
}

/// The segments for what has been written since the last ones, if they stand behind their essence.
BRYXWriterImpl::Index BRYXWriterImpl::newIndex(Container& container) {
    const std::int64_t end = container.indexer.editUnits();
    const std::int64_t first = container.indexedTo.empty() ? 0 : container.indexedTo.back();
    if (!isIndexed(container) || configuration_.indexPlacement != Placement::AfterEssence ||
        container.container.isConstant || !container.container.segments.empty() || end == first) {
        return {};
    }
    Index index{&container, nullptr, first, {end}, container.indexed, 0};
    std::size_t count = 0;
    index.octets = sizeOf([&](KLVHandler& handler) { count = sendIndex(handler, index); });
    container.indexedTo.push_back(end);
    container.indexed += count;
    return index;
}

/// The whole table. What stands in partitions already is repeated as it is.
BRYXWriterImpl::Index BRYXWriterImpl::wholeIndex(Container& container) {
    if (!isIndexed(container)) {
        return {};
    }
    Index index{&container, nullptr, 0, {}, 0, 0};
    if (!container.container.segments.empty()) {
        index.given = &container.container.segments;
    } else if (container.container.isConstant) {
        container.constant = {container.indexer.constantSegment(container.octets)};
        if (container.constant.front().editUnitByteCount != 0) {
            index.given = &container.constant;
        }
    }
    if (index.given == nullptr) {
        index.ends = container.indexedTo;
        index.ends.push_back(container.indexer.editUnits());
    }
    std::size_t count = 0;
    index.octets = sizeOf([&](KLVHandler& handler) { count = sendIndex(handler, index); });
    return count == 0 ? Index() : index;
}

void BRYXWriterImpl::writeIndexPartition(const Index& index) {
    if (index.container != nullptr) {
        startPartition(MXFPartitionKind::Body, configuration_.bodyStatus, nullptr, index, 0);
        endPartition();
    }
}

// ---- The end ----

bool BRYXWriterImpl::finish(const BRYXHeaderMetadata& metadata) {
    requireBetween();
    // What cannot be coded or described fails before anything is written.
    requireCodable(metadata);
    std::vector<Index> indexes;
    for (const auto& [bodySID, container] : containers_) {
        if (container.get() != current_) {
            indexes.push_back(wholeIndex(*container));
        }
    }
    const Index last = current_ == nullptr ? Index() : wholeIndex(*current_);
    state_ = State::Failed; // unless all is written
    for (const Index& index : indexes) {
        writeIndexPartition(index);
    }
    startPartition(MXFPartitionKind::Footer, configuration_.footerStatus, &metadata, last, 0);
    endPartition();
    MXFStructureCoder& structure = chain_->writer.structureReceiver();
    const std::uint64_t footer = structure.lastPack().thisPartition;
    structure.randomIndex(randomIndex_);
    structure.endStructure();
    state_ = State::Finished;
    if (base_ < 0) {
        return false;
    }
    const std::streampos end = stream_->tellp();
    tellFooter(footer);
    const bool isClosed = closeHeader(metadata, footer);
    stream_->seekp(end);
    require(static_cast<bool>(stream_->flush()), "successful write()");
    return isClosed;
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
        const std::streamoff place = base_ + static_cast<std::streamoff>(randomIndex_[i].byteOffset + field);
        stream_->seekp(place);
        require(static_cast<bool>(stream_->write(reinterpret_cast<const char*>(octets), sizeof octets)),
                "successful write()");
        // One that was opened for appending does not.
        require(std::streamoff{stream_->tellp()} == place + std::streamoff{sizeof octets},
                "stream writes where it stands");
    }
}

/// Writes the header partition again, closed and complete, if @p metadata fits in it.
bool BRYXWriterImpl::closeHeader(const BRYXHeaderMetadata& metadata, std::uint64_t footer) {
    const auto sendSets = [&](KLVHandler& handler) {
        sendMetadata(handler, metadata, configuration_.metadataLengthForm);
    };
    const std::uint64_t space = headerPack_.headerByteCount;
    const std::uint64_t size = sizeOf(sendSets);
    const bool fits = size == space || (size < space && space - size >= leastFill);
    if (!fits || metadata.essenceContainers.size() != headerPack_.essenceContainers.size()) {
        return false;
    }
    stream_->seekp(base_);
    BRYXWriterChain chain(*stream_, written_, configuration_);
    MXFStructureCoder& structure = chain.writer.structureReceiver();
    chain.writer.headerMetadataReceiver().setPadding(KLVFiller::Mode::FixedLength, headerPack_.kagSize, space);
    MXFPartitionPack pack = headerPack_;
    pack.footerPartition = footer;
    pack.operationalPattern = metadata.operationalPattern;
    pack.essenceContainers = metadata.essenceContainers;
    const KLVKey key = mxfutil::partitionPackKey(MXFPartitionKind::Header, MXFPartitionStatus::ClosedComplete);
    structure.startStructure();
    structure.startPartition(key, pack, 0);
    sendRegion(chain.writer.headerMetadataReceiver(), sendSets);
    structure.endPartition(key);
    structure.endStructure();
    return true;
}

// ---- The verifying writer ----

VerifyingBRYXWriterImpl::VerifyingBRYXWriterImpl(std::shared_ptr<std::iostream> stream)
    : stream_(std::move(stream)), writer_(stream_, stream_.get()) {}

VerifyingBRYXWriterImpl::~VerifyingBRYXWriterImpl() = default;

void VerifyingBRYXWriterImpl::setConfiguration(const BRYXWriterConfiguration& configuration) {
    writer_.setConfiguration(configuration);
}
void VerifyingBRYXWriterImpl::start(const BRYXHeaderMetadata& metadata) {
    const std::streampos start = stream_->tellp();
    writer_.start(metadata); // it is no start where this fails
    start_ = start;
}
void VerifyingBRYXWriterImpl::startEssence(const BRYXEssenceContainer& container) {
    writer_.startEssence(container);
}
MXFGCStructureHandler& VerifyingBRYXWriterImpl::structureReceiver() {
    return writer_.structureReceiver();
}
MXFGCSystemHandler& VerifyingBRYXWriterImpl::systemReceiver() {
    return writer_.systemReceiver();
}
MXFGCEssenceHandler& VerifyingBRYXWriterImpl::essenceReceiver() {
    return writer_.essenceReceiver();
}
KLVHandler& VerifyingBRYXWriterImpl::bodyReceiver() {
    return writer_.bodyReceiver();
}
void VerifyingBRYXWriterImpl::startBodyPartition() {
    writer_.startBodyPartition();
}
void VerifyingBRYXWriterImpl::endEssence() {
    writer_.endEssence();
}
KLVHandler& VerifyingBRYXWriterImpl::startGenericStream(std::uint32_t bodySID) {
    return writer_.startGenericStream(bodySID);
}
void VerifyingBRYXWriterImpl::endGenericStream() {
    writer_.endGenericStream();
}
std::uint64_t VerifyingBRYXWriterImpl::position() const {
    return writer_.position();
}

bool VerifyingBRYXWriterImpl::finish(const BRYXHeaderMetadata& metadata) {
    const bool isClosed = writer_.finish(metadata);
    const std::streampos end = stream_->tellp();
    verifyFile(*stream_, start_, writer_.indexedContainers());
    stream_->seekp(end);
    return isClosed;
}

#include "sdk/internal/BRYXWriterImpl.h"

#include <algorithm>
#include <string>
#include <utility>

#include "klv/DullErrorHandler.h"
#include "klv/DullKLVHandler.h"
#include "klv/KLVMonitor.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "mxf/structure/MXFIndexCoder.h"
#include "mxf/structure/MXFStructureCoder.h"
#include "util/assertion_failure.h"

using Placement = BRYXWriterConfiguration::IndexPlacement;
using util::require;

namespace {

/// The least octets of a fill item with the usual form of its length.
constexpr std::uint64_t leastFill = klvutil::keySize + 4;

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

void sendIndex(KLVHandler& handler, const std::vector<MXFIndexTableSegment>& segments) {
    MXFIndexCoder coder(handler);
    coder.startIndex();
    for (const MXFIndexTableSegment& segment : segments) {
        coder.indexTableSegment(segment);
    }
    coder.endIndex();
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

/// Whatever a reader finds wrong ends the reading.
class Objector final : public DullErrorHandler {
public:
    void error(const util::uuid& /*id*/, const std::string& message) override {
        throw VerifyingKLVHandler::exception("the file does not read back as written: " + message);
    }
    void fatalError(const util::uuid& id, const std::string& message) override { error(id, message); }
};

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
    std::vector<std::int64_t> indexedTo; ///< where the batches of segments end that stand in partitions
    std::vector<MXFUID> segmentUIDs;     ///< of the segments in these
    std::uint64_t bodyStart = 0;         ///< position of the body that is written
    std::uint64_t packagesBefore = 0;    ///< content packages before that body
    bool isIndexed = false;              ///< whether the whole index table stands in a partition
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
    MXFGCStructureHandler& next() { return writer_.muxer_->structureReceiver(); }

    BRYXWriterImpl& writer_;
};

// ---- The writer ----

BRYXWriterImpl::BRYXWriterImpl(std::shared_ptr<std::ostream> stream, std::iostream* written)
    : stream_(std::move(stream)), written_(written), base_(stream_->tellp()),
      structure_(std::make_unique<PartitionCutter>(*this)) {
    stream_->clear(stream_->rdstate() & ~std::ios::failbit); // as one that cannot tell its position may be
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
    require(configuration.headerStatus != MXFPartitionStatus::GenericStream, "header partition status");
    configuration_ = configuration;
    if (configuration_.uidGenerator == nullptr) {
        configuration_.uidGenerator = std::make_shared<BRYXDefaultUIDGenerator>();
    }
    chain_ = std::make_unique<BRYXWriterChain>(*stream_, written_, configuration_);
    muxer_ = std::make_unique<MXFGCMuxer>(chain_->writer.bodyReceiver(), chain_->writer.getLocator(),
                                          chain_->writer.getGrid());
    if (form != klvutil::automaticBERLengthForm) {
        muxer_->essenceReceiver().setFixedLengthForm(form);
    }
}

std::uint64_t BRYXWriterImpl::position() const {
    return static_cast<std::uint64_t>(std::streamoff{chain_->writer.getLocator().streampos()});
}

MXFGCStructureHandler& BRYXWriterImpl::structureReceiver() {
    return *structure_;
}

MXFGCSystemHandler& BRYXWriterImpl::systemReceiver() {
    return muxer_->systemReceiver();
}

MXFGCEssenceHandler& BRYXWriterImpl::essenceReceiver() {
    return muxer_->essenceReceiver();
}

void BRYXWriterImpl::startPartition(MXFPartitionKind kind, MXFPartitionStatus status,
                                    const BRYXHeaderMetadata* metadata,
                                    const std::vector<MXFIndexTableSegment>& segments, std::uint32_t bodySID) {
    MXFPartitionPack pack = headerPack_;
    pack.headerByteCount = 0;
    pack.bodySID = bodySID;
    const auto container = containers_.find(bodySID);
    pack.bodyOffset = container == containers_.end() ? 0 : container->second->octets;
    pack.indexSID = segments.empty() ? 0 : segments.front().indexSID;
    if (metadata != nullptr) {
        pack.operationalPattern = metadata->operationalPattern;
        pack.essenceContainers = metadata->essenceContainers;
    }
    MXFWriter& writer = chain_->writer;
    const std::uint8_t form = configuration_.metadataLengthForm;
    const auto sendSets = [&](KLVHandler& handler) { sendMetadata(handler, *metadata, form); };
    const auto sendSegments = [&](KLVHandler& handler) { sendIndex(handler, segments); };
    preparePadder(writer.headerMetadataReceiver(), metadata == nullptr ? 0 : sizeOf(sendSets),
                  kind == MXFPartitionKind::Header ? configuration_.headerSpace : 0, pack.kagSize);
    preparePadder(writer.indexReceiver(), segments.empty() ? 0 : sizeOf(sendSegments), 0, pack.kagSize);
    partitionKey_ = mxfutil::partitionPackKey(kind, status);
    writer.structureReceiver().startPartition(partitionKey_, pack, 0);
    randomIndex_.push_back({bodySID, writer.structureReceiver().lastPack().thisPartition});
    if (metadata != nullptr) {
        sendRegion(writer.headerMetadataReceiver(), sendSets);
    }
    if (!segments.empty()) {
        sendRegion(writer.indexReceiver(), sendSegments);
    }
}

void BRYXWriterImpl::endPartition() {
    chain_->writer.structureReceiver().endPartition(partitionKey_);
    require(static_cast<bool>(stream_->flush()), "successful write()");
}

void BRYXWriterImpl::start(const BRYXHeaderMetadata& metadata) {
    require(state_ == State::BeforeStart, "before start");
    metadata_ = metadata;
    headerPack_.majorVersion = 1;
    headerPack_.minorVersion = configuration_.minorVersion;
    headerPack_.kagSize = configuration_.kagSize;
    headerPack_.operationalPattern = metadata.operationalPattern;
    headerPack_.essenceContainers = metadata.essenceContainers;
    chain_->writer.structureReceiver().startStructure();
    startPartition(MXFPartitionKind::Header, configuration_.headerStatus, &metadata, {}, 0);
    endPartition();
    headerPack_ = chain_->writer.structureReceiver().lastPack();
    state_ = State::Between;
}

// ---- Bodies and their index ----

BRYXWriterImpl::Container& BRYXWriterImpl::current() const {
    return *current_;
}

void BRYXWriterImpl::startEssence(const BRYXEssenceContainer& container) {
    require(state_ != State::BeforeStart, "after start");
    require(state_ == State::Between, "not in essence");
    const auto known = containers_.find(container.bodySID);
    if (current_ != nullptr && (known == containers_.end() || known->second.get() != current_)) {
        writePendingIndex();
    }
    if (known != containers_.end()) {
        current_ = known->second.get();
    } else {
        auto added = std::make_unique<Container>(container, muxer_->padder(), chain_->writer.getLocator(),
                                                 configuration_.indexPlacement);
        current_ = containers_.emplace(container.bodySID, std::move(added)).first->second.get();
    }
    current().isIndexed = false;
    muxer_->setIndexer(current().indexer);
    state_ = State::InEssence;
    muxer_->padder().startStream(configuration_.kagSize);
    openBody();
}

void BRYXWriterImpl::openBody() {
    Container& now = current();
    std::vector<MXFIndexTableSegment> segments;
    if (configuration_.indexPlacement == Placement::AfterEssence) {
        segments = pendingSegments(now, false);
    } else if (configuration_.indexPlacement == Placement::BeforeEssence && now.octets == 0) {
        segments = completed(now, now.container.segments);
    }
    startPartition(MXFPartitionKind::Body, MXFPartitionStatus::ClosedComplete, nullptr, segments,
                   now.container.bodySID);
    now.bodyStart = position();
    now.packagesBefore = now.indexer.contentPackages();
    now.indexer.startBody(now.bodyStart, now.octets);
}

void BRYXWriterImpl::closeBody() {
    current().octets += position() - current().bodyStart;
    endPartition();
}

void BRYXWriterImpl::cutBody() {
    const Container& now = current();
    const std::uint64_t octets = position() - now.bodyStart;
    const std::uint64_t units = now.indexer.contentPackages() - now.packagesBefore;
    const bool isFull = (configuration_.partitionSize != 0 && octets >= configuration_.partitionSize) ||
                        (configuration_.partitionDuration != 0 && units >= configuration_.partitionDuration);
    if (octets != 0 && isFull) {
        closeBody();
        openBody();
    }
}

KLVHandler& BRYXWriterImpl::bodyReceiver() {
    return chain_->writer.bodyReceiver();
}

void BRYXWriterImpl::startBodyPartition() {
    require(state_ == State::InEssence, "in essence");
    closeBody();
    openBody();
}

void BRYXWriterImpl::endEssence() {
    require(state_ == State::InEssence, "in essence");
    muxer_->padder().endStream();
    closeBody();
    state_ = State::Between;
}

std::vector<MXFIndexTableSegment> BRYXWriterImpl::completed(const Container& container,
                                                            std::vector<MXFIndexTableSegment> segments) const {
    for (MXFIndexTableSegment& segment : segments) {
        segment.indexEditRate = container.container.editRate;
        segment.indexSID = container.container.indexSID;
        segment.bodySID = container.container.bodySID;
        segment.instanceUID = configuration_.uidGenerator->generateUID();
    }
    return segments;
}

/// The segments that stand in no partition yet; if @p isLast, all segments.
std::vector<MXFIndexTableSegment> BRYXWriterImpl::pendingSegments(Container& container, bool isLast) {
    const bool isWanted =
        configuration_.indexPlacement != Placement::None && container.container.indexSID != 0 && !container.isIndexed;
    const bool isLate = container.container.isConstant || !container.container.segments.empty();
    if (!isWanted || (isLate && !isLast)) {
        return {};
    }
    if (!container.container.segments.empty()) {
        return completed(container, container.container.segments);
    }
    if (container.container.isConstant) {
        const MXFIndexTableSegment constant = container.indexer.constantSegment(container.octets);
        if (constant.editUnitByteCount != 0) {
            return completed(container, {constant});
        }
    }
    // What stands in a partition already is repeated as it is.
    std::int64_t first = container.indexedTo.empty() || isLast ? 0 : container.indexedTo.back();
    if (container.indexer.editUnits() > (container.indexedTo.empty() ? 0 : container.indexedTo.back())) {
        container.indexedTo.push_back(container.indexer.editUnits());
    }
    std::vector<MXFIndexTableSegment> segments;
    for (const std::int64_t end : container.indexedTo) {
        if (end > first) {
            const auto batch = container.indexer.segments(first, end);
            segments.insert(segments.end(), batch.begin(), batch.end());
            first = end;
        }
    }
    segments = completed(container, std::move(segments));
    const std::size_t repeated = isLast ? std::min(segments.size(), container.segmentUIDs.size()) : 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if (i < repeated) {
            segments[i].instanceUID = container.segmentUIDs[i];
        } else {
            container.segmentUIDs.push_back(segments[i].instanceUID);
        }
    }
    return segments;
}

/// Writes the index table of the container that was written last into a partition of its own, since something else
/// follows.
void BRYXWriterImpl::writePendingIndex() {
    const std::vector<MXFIndexTableSegment> segments = pendingSegments(current(), true);
    current().isIndexed = true;
    if (!segments.empty()) {
        startPartition(MXFPartitionKind::Body, MXFPartitionStatus::ClosedComplete, nullptr, segments, 0);
        endPartition();
    }
}

KLVHandler& BRYXWriterImpl::startGenericStream(std::uint32_t bodySID) {
    require(state_ != State::BeforeStart, "after start");
    require(state_ == State::Between, "not in essence");
    startPartition(MXFPartitionKind::Body, MXFPartitionStatus::GenericStream, nullptr, {}, bodySID);
    state_ = State::InGenericStream;
    MXFWriter& writer = chain_->writer;
    genericStreamFiller_ = std::make_unique<KLVFiller>(writer.getGrid());
    genericStreamFiller_->setHandler(&writer.bodyReceiver());
    genericStreamFiller_->setLocator(writer.getLocator());
    genericStreamFiller_->setPadding(KLVFiller::Mode::Alignment, configuration_.kagSize, 0);
    genericStreamFiller_->startFilledItem();
    return *genericStreamFiller_;
}

void BRYXWriterImpl::endGenericStream() {
    require(state_ == State::InGenericStream, "in essence");
    genericStreamFiller_->endFilledItem();
    endPartition();
    state_ = State::Between;
}

// ---- The end ----

bool BRYXWriterImpl::finish(const BRYXHeaderMetadata& metadata) {
    require(state_ != State::BeforeStart, "after start");
    require(state_ != State::Finished, "not finished");
    require(state_ == State::Between, "not in essence");
    const auto segments = current_ != nullptr ? pendingSegments(current(), true) : std::vector<MXFIndexTableSegment>();
    startPartition(MXFPartitionKind::Footer, MXFPartitionStatus::ClosedComplete, &metadata, segments, 0);
    endPartition();
    const std::uint64_t footer = chain_->writer.structureReceiver().lastPack().thisPartition;
    chain_->writer.structureReceiver().randomIndex(randomIndex_);
    chain_->writer.structureReceiver().endStructure();
    state_ = State::Finished;
    return rewriteHeader(metadata, footer);
}

bool BRYXWriterImpl::rewriteHeader(const BRYXHeaderMetadata& metadata, std::uint64_t footer) {
    const std::uint64_t space = headerPack_.headerByteCount;
    const std::uint64_t size =
        sizeOf([&](KLVHandler& handler) { sendMetadata(handler, metadata, configuration_.metadataLengthForm); });
    const bool fits = size == space || (size < space && space - size >= leastFill);
    if (base_ < 0 || !fits || metadata.essenceContainers.size() != headerPack_.essenceContainers.size()) {
        return false;
    }
    const std::streampos end = stream_->tellp();
    stream_->seekp(base_);
    BRYXWriterChain chain(*stream_, written_, configuration_);
    MXFStructureCoder& structure = chain.writer.structureReceiver();
    KLVStreamPadder& receiver = chain.writer.headerMetadataReceiver();
    receiver.setPadding(KLVFiller::Mode::FixedLength, headerPack_.kagSize, space);
    MXFPartitionPack pack = headerPack_;
    pack.footerPartition = footer;
    pack.operationalPattern = metadata.operationalPattern;
    pack.essenceContainers = metadata.essenceContainers;
    const KLVKey key = mxfutil::partitionPackKey(MXFPartitionKind::Header, MXFPartitionStatus::ClosedComplete);
    structure.startStructure();
    structure.startPartition(key, pack, 0);
    sendRegion(receiver,
               [&](KLVHandler& handler) { sendMetadata(handler, metadata, configuration_.metadataLengthForm); });
    structure.endPartition(key);
    structure.endStructure();
    require(static_cast<bool>(stream_->seekp(end)), "successful write()");
    return true;
}

// ---- The verifying writer ----

VerifyingBRYXWriterImpl::VerifyingBRYXWriterImpl(std::shared_ptr<std::iostream> stream)
    : stream_(std::move(stream)), start_(stream_->tellp()), writer_(stream_, stream_.get()) {}

VerifyingBRYXWriterImpl::~VerifyingBRYXWriterImpl() = default;

void VerifyingBRYXWriterImpl::setConfiguration(const BRYXWriterConfiguration& configuration) {
    writer_.setConfiguration(configuration);
}
void VerifyingBRYXWriterImpl::start(const BRYXHeaderMetadata& metadata) {
    writer_.start(metadata);
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
    stream_->seekg(start_);
    Objector objector;
    MXFReader reader;
    reader.setErrorHandler(&objector);
    try {
        reader.read(*stream_);
    } catch (const klvutil::parse_error& error) {
        throw VerifyingKLVHandler::exception(std::string("the file does not read back as written: ") + error.what());
    }
    stream_->clear();
    stream_->seekp(end);
    return isClosed;
}

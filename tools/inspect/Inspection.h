#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "klv/DullKLVHandler.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "sdk/BRYX.h"
#include "shared/ProgressBar.h"

/// @file
/// The handlers through which inspect learns what a file holds. Each keeps what the report needs and no more: however
/// large or damaged the file is, the memory they use stays within fixed limits.

/// A list that keeps the first of its entries and counts the others.
template <class Entry, std::size_t limit>
class BoundedList {
public:
    void add(Entry entry) {
        if (entries_.size() < limit) {
            entries_.push_back(std::move(entry));
        } else {
            ++omitted_;
        }
    }
    void omit() { ++omitted_; }

    /// Calls @p visit with each entry that is kept.
    template <class Visit>
    void forEach(Visit visit) const {
        std::for_each(entries_.begin(), entries_.end(), visit);
    }
    std::uint64_t omitted() const { return omitted_; }

private:
    // A deque grows without a second copy of itself, as a vector would need for a while.
    std::deque<Entry> entries_;
    std::uint64_t omitted_ = 0;
};

// ---- Findings ----

/// What inspect itself finds, in the form of the library's own findings.
namespace findings {

inline constexpr util::uuid inspectBase{
    {0xae, 0xa2, 0xdd, 0x36, 0xb1, 0xd1, 0x41, 0xaa, 0xb8, 0x4c, 0xd2, 0xaf, 0x3d, 0x0c, 0x47, 0x00}};

/// The rows of the table: name, base, index, level, message
#define BRYX_INSPECT_FINDINGS(ROW)                                                                                     \
    ROW(emptyFile, inspectBase, 1, fatal, "the file is empty")                                                         \
    ROW(readingFailed, inspectBase, 2, fatal, "reading failed")

BRYX_INSPECT_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace findings

inline const char* name(klvutil::FindingLevel level) {
    switch (level) {
    case klvutil::FindingLevel::warning:
        return "warning";
    case klvutil::FindingLevel::error:
        return "error";
    case klvutil::FindingLevel::fatal:
        break;
    }
    return "fatal";
}

struct ReportedFinding {
    klvutil::FindingLevel level;
    std::uint64_t position; ///< in octets from the first of the file
    util::uuid id;
    std::string message;
};

/// Collects what the library reports about the file, and what ended the reading if it did not come to the end.
///
/// No report throws: where reading cannot go on, the library throws klvutil::parse_error when the report returns.
class FindingCollector final : public ErrorHandler {
public:
    // More than one locator may come in the course of a file; none is to be used after endStream.
    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override {}
    void endStream() override {
        lastPosition_ = position();
        locator_ = nullptr;
    }

    void warning(const util::uuid& id, const std::string& message) override {
        add({klvutil::FindingLevel::warning, position(), id, message});
    }
    void error(const util::uuid& id, const std::string& message) override {
        add({klvutil::FindingLevel::error, position(), id, message});
    }
    void fatalError(const util::uuid& id, const std::string& message) override {
        add({klvutil::FindingLevel::fatal, position(), id, message});
    }

    /// Reading has ended with @p failure, which may have been reported just before it was thrown.
    void readingEnded(const klvutil::parse_error& failure) {
        if (latest_ && latest_->id == failure.id() && latest_->message == failure.what()) {
            --counter(latest_->level);
            latest_.reset();
        }
        const std::streamoff position = failure.position();
        add({klvutil::FindingLevel::fatal, static_cast<std::uint64_t>(position), failure.id(), failure.what()});
    }

    /// Reading has ended with @p finding of inspect itself.
    void readingEnded(const klvutil::Finding& finding, const std::string& detail = {}) {
        add({finding.level, position(), finding.id, klvutil::describe(finding, detail)});
    }

    /// Where the reader is: the first octet of the KLV triplet that it deals with.
    std::uint64_t position() const {
        return locator_ == nullptr ? lastPosition_ : static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
    }

    /// The number of findings of that level, kept or not.
    std::uint64_t count(klvutil::FindingLevel level) const { return counts_[static_cast<std::size_t>(level)]; }

    /// Calls @p visit with the findings that are kept: the first ones, and the last.
    template <class Visit>
    void forEach(Visit visit) const {
        earlier_.forEach(visit);
        if (latest_) {
            visit(*latest_);
        }
    }

    /// The number of findings before the last that are not kept.
    std::uint64_t omitted() const { return earlier_.omitted(); }

private:
    std::uint64_t& counter(klvutil::FindingLevel level) { return counts_[static_cast<std::size_t>(level)]; }

    void add(ReportedFinding finding) {
        ++counter(finding.level);
        if (latest_) {
            earlier_.add(*std::move(latest_));
        }
        latest_ = std::move(finding);
    }

    const Locator* locator_ = nullptr;
    std::uint64_t lastPosition_ = 0;
    std::array<std::uint64_t, 3> counts_{};
    BoundedList<ReportedFinding, 1000> earlier_;
    std::optional<ReportedFinding> latest_; ///< may turn out to be what ended the reading
};

// ---- Partitions and random index ----

inline const char* name(MXFPartitionKind kind) {
    switch (kind) {
    case MXFPartitionKind::Header:
        return "header";
    case MXFPartitionKind::Body:
        return "body";
    case MXFPartitionKind::Footer:
        break;
    }
    return "footer";
}

struct FoundPartition {
    std::uint64_t offset; ///< of the pack, in octets from the first of the file
    KLVKey key;           ///< tells the kind and the status
    MXFPartitionPack pack;
};

/// Collects the run-in, the partition packs and the random index.
class StructureCollector final : public DullMXFStructureHandler {
public:
    using Partitions = BoundedList<FoundPartition, 65536>;
    using RandomIndex = BoundedList<MXFRandomIndexEntry, 65536>;

    /// A structure handler gets no locator. That of the error handler serves: it shows the partition pack when its
    /// partition begins.
    explicit StructureCollector(const FindingCollector& positions) : positions_(positions) {}

    void runIn(std::uint64_t length) override { runIn_ = length; }

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t /*headerStart*/) override {
        partitionOffset_ = positions_.position();
        labels_ += pack.essenceContainers.size();
        if (labels_ <= maxLabels) {
            partitions_.add({positions_.position(), key, pack});
        } else {
            partitions_.omit();
        }
    }

    void randomIndex(const MXFRandomIndex& index) override {
        randomIndex_.emplace();
        for (const MXFRandomIndexEntry& entry : index) {
            randomIndex_->add(entry);
        }
    }

    std::uint64_t runIn() const { return runIn_; }
    /// Of the pack of the partition that began last, in octets from the first of the file.
    std::uint64_t partitionOffset() const { return partitionOffset_; }
    const Partitions& partitions() const { return partitions_; }
    const std::optional<RandomIndex>& randomIndex() const { return randomIndex_; }

private:
    static constexpr std::uint64_t maxLabels = std::uint64_t{1} << 18U;

    const FindingCollector& positions_;
    std::uint64_t runIn_ = 0;
    std::uint64_t partitionOffset_ = 0;
    std::uint64_t labels_ = 0; ///< essence container labels in all packs
    Partitions partitions_;
    std::optional<RandomIndex> randomIndex_;
};

// ---- Header metadata ----

struct FoundModel {
    std::uint64_t partition; ///< offset of its pack, in octets from the first of the file
    MXFMetadataModelHandler::Model model;
};

/// The sets that @p property of @p set refers to, if it owns them.
inline std::vector<std::shared_ptr<const MetadataRoot>> ownedBy(const MetadataRoot& set, const MXFProperty& property) {
    std::vector<std::shared_ptr<const MetadataRoot>> sets;
    if (property.kind() == MXFProperty::Kind::StrongReference) {
        mxfutil::forEachReference(property.value(set), [&](const auto& target) { sets.push_back(target); });
    }
    return sets;
}

/// The value of a dark property as that of any other.
inline MXFScalar scalarOf(const MetadataRoot::DarkValue& value) {
    return std::visit([](const auto& content) { return MXFScalar(content); }, value);
}

/// Calls @p visit with @p set and all sets that it owns, depth first.
template <class Visit>
void forEachSet(const MetadataRoot& set, const Visit& visit) {
    visit(set);
    for (const MXFProperty* property : set.getDescription().properties()) {
        for (const auto& owned : ownedBy(set, *property)) {
            forEachSet(*owned, visit);
        }
    }
}

/// Collects the models of header metadata.
class MetadataCollector final : public DullMXFMetadataHandler, public MXFMetadataModelHandler {
public:
    using Models = BoundedList<FoundModel, 256>;

    explicit MetadataCollector(const StructureCollector& structure) : structure_(structure) {}

    void startMetadata() override { inRegion_ = true; }
    void endMetadata() override {
        inRegion_ = false;
        sets_.clear();
    }
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override { sets_.push_back(std::move(set)); }
    void model(const Model& model) override {
        for (const auto& root : model) {
            forEachSet(*root, [&](const MetadataRoot&) { ++setCount_; });
        }
        if (setCount_ <= maxSets) {
            models_.add({structure_.partitionOffset(), model});
        } else {
            models_.omit();
        }
    }

    /// Reading has ended, perhaps within header metadata. What was read of that makes a model too; it has no error
    /// handler, since much is bound to be missing.
    void readingEnded() {
        if (!inRegion_) {
            return;
        }
        const auto factory = createBRYXDefaultMetadataFactory();
        MXFMetadataModelParser parser(*factory, *this);
        std::vector<MXFPrimedSet> sets = std::move(sets_);
        parser.startMetadata();
        for (MXFPrimedSet& set : sets) {
            if (parser.handlesSet(set.key)) {
                parser.primedSet(set);
            }
        }
        parser.endMetadata();
    }

    const Models& models() const { return models_; }

private:
    static constexpr std::uint64_t maxSets = 200000;

    const StructureCollector& structure_;
    bool inRegion_ = false;
    std::vector<MXFPrimedSet> sets_; ///< of the region being read
    std::uint64_t setCount_ = 0;     ///< in all models
    Models models_;
};

// ---- Index tables ----

struct FoundSegment {
    std::uint64_t offset;         ///< in octets from the first of the file
    MXFIndexTableSegment segment; ///< without its arrays
    std::size_t deltaEntries;
    std::size_t entries;
};

/// Collects what index table segments say, save their entries.
class IndexCollector final : public DullMXFIndexHandler {
public:
    using Segments = BoundedList<FoundSegment, 65536>;

    explicit IndexCollector(const FindingCollector& positions) : positions_(positions) {}

    void indexTableSegment(const MXFIndexTableSegment& segment) override {
        FoundSegment found{positions_.position(), {}, segment.deltaEntryArray.size(), segment.indexEntryArray.size()};
        found.segment.indexStartPosition = segment.indexStartPosition;
        found.segment.indexDuration = segment.indexDuration;
        found.segment.editUnitByteCount = segment.editUnitByteCount;
        found.segment.indexSID = segment.indexSID;
        found.segment.bodySID = segment.bodySID;
        found.segment.indexEditRate = segment.indexEditRate;
        found.segment.sliceCount = segment.sliceCount;
        found.segment.posTableCount = segment.posTableCount;
        segments_.add(std::move(found));
    }

    const Segments& segments() const { return segments_; }

private:
    const FindingCollector& positions_;
    Segments segments_;
};

// ---- Body ----

/// The octets of @p key before octet 12, the others 0: what keys of one family have in common.
inline KLVKey prefixOf(const KLVKey& key) {
    KLVKey prefix = key;
    std::fill(prefix.octets.begin() + 12, prefix.octets.end(), std::uint8_t{0});
    return prefix;
}

/// What the essence element with @p key holds: one of the Generic Container, or of a private kind (octets 4 and 5 of its key
/// say essence, octet 8 a registration of an organisation's own, ST 336), which is taken for data.
inline MXFGCEssenceKind classifyEssence(const KLVKey& key) {
    const bool isPrivate = key[4] == 1 && key[5] == 2 && key[8] == 0x0E;
    return isPrivate ? MXFGCEssenceKind::Data : mxfutil::gcEssenceKind(key);
}

/// The same as a word; null if the key is that of something else.
inline const char* essenceKind(const KLVKey& key) {
    switch (classifyEssence(key)) {
    case MXFGCEssenceKind::Picture:
        return "picture";
    case MXFGCEssenceKind::Sound:
        return "sound";
    case MXFGCEssenceKind::Data:
        return "data";
    case MXFGCEssenceKind::Compound:
        return "compound";
    case MXFGCEssenceKind::None:
        break;
    }
    return nullptr;
}

struct ElementCount {
    KLVKey key;
    std::uint64_t elements = 0;
    std::uint64_t octets = 0; ///< of the values
};

/// Counts triplets by their keys, which it lists in the order in which they occur first. Triplets with a further key,
/// when there are very many, are omitted.
class ElementCounter {
public:
    void add(const KLVKey& key, std::uint64_t octets) {
        // Equality of KLVKey leaves octet 7 out, the version, which does not tell one element from another.
        auto place = places_.find(key);
        if (place == places_.end()) {
            if (entries_.size() == maxKeys) {
                ++omitted_;
                return;
            }
            place = places_.emplace(key, entries_.size()).first;
            entries_.push_back({key});
        }
        ElementCount& count = entries_[place->second];
        ++count.elements;
        count.octets += octets;
    }

    template <class Visit>
    void forEach(Visit visit) const {
        std::for_each(entries_.begin(), entries_.end(), visit);
    }
    std::uint64_t omitted() const { return omitted_; }

private:
    static constexpr std::size_t maxKeys = 4096;

    std::map<KLVKey, std::size_t> places_; ///< in entries_
    std::vector<ElementCount> entries_;
    std::uint64_t omitted_ = 0;
};

/// Has the reader take for essence what inspect does.
class EssenceClassifier final : public BRYXGCEssenceKeyClassifier {
public:
    MXFGCEssenceKind classify(const KLVKey& key) const override { return classifyEssence(key); }
};

/// Counts what the bodies of the partitions hold, and keeps the timecodes that the system items of the first and of the
/// last content package have. It wants no essence, so that the reader passes over it, with a seek where the stream allows
/// it.
///
/// An element is counted when it ends: one that the end of the file cuts off has a start event but no end event.
class BodyCounter final : public DullMXFGCStructureHandler,
                          public DullMXFGCEssenceHandler,
                          public DullMXFSDTICPSystemHandler,
                          public MXFPDProxySystemHandler {
public:
    BodyCounter(const FindingCollector& positions, ProgressBar& progress)
        : positions_(positions), progress_(progress) {}

    void startContentPackage() override {
        ++packages_;
        last_.reset();
    }
    void startElement(const KLVKey& /*key*/) override { progress_.reached(positions_.position()); }
    void endElement(const KLVKey& key) override {
        if (mxfutil::isGCSystemElement(key)) {
            ++systemElements_;
        } else {
            essence_.add(key, length_);
        }
    }

    bool startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        length_ = length;
        return false;
    }
    void systemMetadata(const MXFSystemMetadataPack& pack) override {
        const auto user = mxfutil::stampTimecode(pack, pack.userStamp);
        found(user ? user : mxfutil::stampTimecode(pack, pack.creationStamp));
    }
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& /*items*/) override {
        if (!metadata.timecodes.empty()) {
            found(metadata.timecodes.front().timecode());
        }
    }

    const ElementCounter& essence() const { return essence_; }
    std::uint64_t systemElements() const { return systemElements_; }
    std::uint64_t packages() const { return packages_; }
    const boost::optional<Timecode>& firstTimecode() const { return first_; }
    const boost::optional<Timecode>& lastTimecode() const { return last_; }

private:
    void found(const boost::optional<Timecode>& timecode) {
        last_ = timecode;
        if (packages_ == 1) {
            first_ = timecode;
        }
    }

    const FindingCollector& positions_;
    ProgressBar& progress_;
    std::uint64_t length_ = 0; ///< of the element that started last
    ElementCounter essence_;
    std::uint64_t systemElements_ = 0;
    std::uint64_t packages_ = 0;
    boost::optional<Timecode> first_;
    boost::optional<Timecode> last_;
};

/// Counts what the bodies of generic stream partitions hold (ST 410), without wanting it.
class GenericStreamCounter final : public DullKLVHandler {
public:
    bool startIndividualItem(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startUniversalSet(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLocalSet(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*tagForm*/,
                       KLVFieldForm /*lengthForm*/) override {
        return start(length);
    }
    bool startFixedLengthPack(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startVariableLengthPack(const KLVKey& /*key*/, std::uint64_t length, KLVFieldForm /*form*/) override {
        return start(length);
    }
    bool startWrapper(const KLVKey& /*key*/, std::uint64_t length, KLVWrapperKind /*kind*/) override {
        return start(length);
    }
    void endIndividualItem(const KLVKey& key) override { end(key); }
    void endUniversalSet(const KLVKey& key) override { end(key); }
    void endLocalSet(const KLVKey& key) override { end(key); }
    void endFixedLengthPack(const KLVKey& key) override { end(key); }
    void endVariableLengthPack(const KLVKey& key) override { end(key); }
    void endWrapper(const KLVKey& key) override { end(key); }

    const ElementCounter& triplets() const { return triplets_; }

private:
    bool start(std::uint64_t length) {
        length_ = length;
        return false;
    }
    void end(const KLVKey& key) {
        if (key != klvutil::fillKey) {
            triplets_.add(key, length_);
        }
    }

    std::uint64_t length_ = 0; ///< of the triplet that started last
    ElementCounter triplets_;
};

// ---- The whole ----

/// What a file holds, as far as it could be read.
struct Inspection {
    Inspection(std::optional<std::uint64_t> size, ProgressBar& progress) : fileSize(size), body(findings, progress) {}
    // The handlers know one another.
    Inspection(const Inspection&) = delete;
    Inspection& operator=(const Inspection&) = delete;

    std::optional<std::uint64_t> fileSize; ///< none for a pipe
    FindingCollector findings;
    StructureCollector structure{findings};
    MetadataCollector metadata{structure};
    IndexCollector index{findings};
    BodyCounter body;
    GenericStreamCounter genericStreams;
    EssenceClassifier classifier;
};

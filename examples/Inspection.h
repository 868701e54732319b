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

#include "ProgressBar.h"
#include "klv/DullKLVHandler.h"
#include "klv/ErrorHandler.h"
#include "klv/Finding.h"
#include "klv/Locator.h"
#include "klv/parse_error.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFIndexParser.h"
#include "sdk/BRYXMetadataFactory.h"
#include "sdk/BRYXSystemParser.h"

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

inline constexpr klvutil::Finding emptyFile{klvutil::findingId(inspectBase, 1), klvutil::FindingLevel::fatal,
                                            "the file is empty"};
inline constexpr klvutil::Finding readingFailed{klvutil::findingId(inspectBase, 2), klvutil::FindingLevel::fatal,
                                                "reading failed"};

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
class MetadataCollector final : public MXFMetadataModelHandler {
public:
    using Models = BoundedList<FoundModel, 256>;

    MetadataCollector(FindingCollector& findings, const StructureCollector& structure) : structure_(structure) {
        modelParser_.setErrorHandler(&findings);
        headerParser_.setErrorHandler(&findings);
        // The factory shares its error handler. This one belongs to somebody else, and so the pointer owns nothing.
        factory_.setErrorHandler({std::shared_ptr<void>(), &findings});
    }

    /// The handler of header metadata for the reader.
    KLVHandler& handler() { return headerParser_; }

    void startMetadata() override { inRegion_ = true; }
    void endMetadata() override { inRegion_ = false; }
    void model(const Model& model) override {
        for (const auto& set : model) {
            forEachSet(*set, [&](const MetadataRoot&) { ++sets_; });
        }
        if (sets_ <= maxSets) {
            models_.add({structure_.partitionOffset(), model});
        } else {
            models_.omit();
        }
    }

    /// Reading has ended, perhaps within header metadata. What was read of that makes a model too.
    void readingEnded() {
        if (inRegion_) {
            modelParser_.setErrorHandler(nullptr); // much is bound to be missing
            modelParser_.endMetadata();
        }
    }

    const Models& models() const { return models_; }

private:
    static constexpr std::uint64_t maxSets = 200000;

    const StructureCollector& structure_;
    BRYXMetadataFactory factory_;
    MXFMetadataModelParser modelParser_{factory_, *this};
    MXFHeaderMetadataParser headerParser_{modelParser_};
    bool inRegion_ = false;
    std::uint64_t sets_ = 0; ///< in all models
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
class IndexCollector final : public MXFIndexHandler {
public:
    using Segments = BoundedList<FoundSegment, 65536>;

    explicit IndexCollector(FindingCollector& findings) : positions_(findings) { parser_.setErrorHandler(&findings); }

    /// The handler of index regions for the reader.
    KLVHandler& handler() { return parser_; }

    void startIndex() override {}
    void endIndex() override {}
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
    MXFIndexParser parser_{*this};
    Segments segments_;
};

// ---- Body ----

/// The octets of @p key before octet 12, the others 0: what keys of one family have in common.
inline KLVKey prefixOf(const KLVKey& key) {
    KLVKey prefix = key;
    std::fill(prefix.octets.begin() + 12, prefix.octets.end(), std::uint8_t{0});
    return prefix;
}

/// The kind of the Generic Container essence element (ST 379-1) with @p key, or null if it is none.
inline const char* essenceKind(const KLVKey& key) {
    switch (mxfutil::gcEssenceKind(key)) {
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

/// Counts content packages, and keeps the timecodes that the system items of the first and of the last one have.
class PackageCollector final : public DullMXFGCStructureHandler,
                               public MXFSDTICPSystemHandler,
                               public MXFPDProxySystemHandler {
public:
    explicit PackageCollector(FindingCollector& findings) {
        system_.setSDTICPSystemHandler(this);
        system_.setPDProxySystemHandler(this);
        system_.setErrorHandler(&findings);
    }

    MXFGCSystemHandler& systemHandler() { return system_; }

    void startContentPackage() override {
        ++count_;
        last_.reset();
    }
    void endStream() override { system_.endSystemItems(); }

    void systemMetadata(const MXFSystemMetadataPack& pack) override {
        const auto user = mxfutil::stampTimecode(pack, pack.userStamp);
        found(user ? user : mxfutil::stampTimecode(pack, pack.creationStamp));
    }
    void packageMetadata(const MXFGCItems& /*items*/) override {}
    void pictureMetadata(const MXFGCItems& /*items*/) override {}
    void soundMetadata(const MXFGCItems& /*items*/) override {}
    void dataMetadata(const MXFGCItems& /*items*/) override {}
    void controlData(const std::uint8_t* /*data*/, std::size_t /*size*/) override {}

    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& /*items*/) override {
        if (!metadata.timecodes.empty()) {
            found(metadata.timecodes.front().timecode());
        }
    }

    std::uint64_t count() const { return count_; }
    const boost::optional<Timecode>& firstTimecode() const { return first_; }
    const boost::optional<Timecode>& lastTimecode() const { return last_; }

private:
    void found(const boost::optional<Timecode>& timecode) {
        last_ = timecode;
        if (count_ == 1) {
            first_ = timecode;
        }
    }

    BRYXSystemParser system_;
    std::uint64_t count_ = 0;
    boost::optional<Timecode> first_;
    boost::optional<Timecode> last_;
};

/// Counts what the bodies of the partitions hold. It wants no values: start events return false, so that the reader
/// passes over the essence, with a seek where the stream allows it.
///
/// A triplet is counted when it ends: one that the end of the file cuts off has a start event but no end event. What is
/// no element of a Generic Container is counted, and does not concern the splitter.
class BodyCounter final : public MXFGCSplitter {
public:
    BodyCounter(FindingCollector& findings, ProgressBar& progress) : packages_(findings), progress_(progress) {
        setStructureHandler(&packages_);
        setSystemHandler(&packages_.systemHandler());
        setErrorHandler(&findings);
    }

    // Each body is a stream of its own, and its locator comes with it.
    void setLocator(const Locator& locator) override { locator_ = &locator; }

    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override {
        start(length);
        return essenceKind(key) != nullptr && MXFGCSplitter::startIndividualItem(key, length);
    }
    bool startLabel(const KLVKey& /*key*/) override { return start(0); }
    bool startUniversalSet(const KLVKey& /*key*/, std::uint64_t length) override { return start(length); }
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                       KLVFieldForm lengthForm) override {
        start(length);
        return mxfutil::isGCSystemElement(key) && MXFGCSplitter::startLocalSet(key, length, tagForm, lengthForm);
    }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        start(length);
        return mxfutil::isGCSystemElement(key) && MXFGCSplitter::startFixedLengthPack(key, length);
    }
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override {
        start(length);
        return mxfutil::isGCSystemElement(key) && MXFGCSplitter::startVariableLengthPack(key, length, itemLengthForm);
    }
    bool startWrapper(const KLVKey& /*key*/, std::uint64_t length, KLVWrapperKind /*kind*/) override {
        return start(length);
    }

    void endIndividualItem(const KLVKey& key) override {
        MXFGCSplitter::endIndividualItem(key);
        end(key);
    }
    void endLabel(const KLVKey& key) override { end(key); }
    void endUniversalSet(const KLVKey& key) override { end(key); }
    void endLocalSet(const KLVKey& key) override {
        MXFGCSplitter::endLocalSet(key);
        end(key);
    }
    void endFixedLengthPack(const KLVKey& key) override {
        MXFGCSplitter::endFixedLengthPack(key);
        end(key);
    }
    void endVariableLengthPack(const KLVKey& key) override {
        MXFGCSplitter::endVariableLengthPack(key);
        end(key);
    }
    void endWrapper(const KLVKey& key) override { end(key); }

    const PackageCollector& packages() const { return packages_; }
    const ElementCounter& essence() const { return essence_; }
    std::uint64_t systemElements() const { return systemElements_; }
    const ElementCounter& others() const { return others_; }

private:
    bool start(std::uint64_t length) {
        length_ = length;
        const std::streamoff position = locator_->streampos();
        progress_.reached(static_cast<std::uint64_t>(position));
        return false;
    }

    void end(const KLVKey& key) {
        if (essenceKind(key) != nullptr) {
            essence_.add(key, length_);
        } else if (mxfutil::isGCSystemElement(key)) {
            ++systemElements_;
        } else if (key != klvutil::fillKey) {
            others_.add(key, length_);
        }
    }

    PackageCollector packages_;
    ProgressBar& progress_;
    const Locator* locator_ = nullptr;
    std::uint64_t length_ = 0; ///< of the triplet that started last
    ElementCounter essence_;
    std::uint64_t systemElements_ = 0;
    ElementCounter others_;
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
    MetadataCollector metadata{findings, structure};
    IndexCollector index{findings};
    BodyCounter body;
};

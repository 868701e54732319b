#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "mxf/essence/DullMXFGCEssenceHandler.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/index/DullMXFIndexHandler.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFTripletPosition.h"
#include "rewrap/AnySplitter.h"
#include "rewrap/MetadataCollector.h"

/// What must be known of an index table to make it again, beside the places of edit units; or to copy it.
struct IndexTable {
    std::uint32_t indexSID;
    Rational editRate;
    bool isConstant; ///< all edit units have one size
    /// By the edit unit that they begin at. Empty unless they are copied: that of a clip, or all to keep the layout.
    std::map<std::int64_t, MXFIndexTableSegment> segments;
};

/// What is whole of a clip, all edit units of which are in one element, in a file that breaks off within that.
struct CutClip {
    std::uint32_t bodySID;
    KLVKey key;
    std::uint64_t position;                ///< of the value, in octets from the first of the file
    std::uint64_t octets;                  ///< of the value that are whole edit units
    std::optional<std::int64_t> editUnits; ///< none if there is no index table
};

/// What must be known of a file before it is written again.
class Survey final : public DullMXFStructureHandler,
                     private DullMXFGCStructureHandler,
                     private DullMXFGCEssenceHandler,
                     private DullMXFIndexHandler {
public:
    Survey(ErrorPrinter& errors, bool keepsLayout);

    std::uint64_t runInLength = 0;
    MXFPartitionPack pack; ///< of the partition with the latest labels
    MetadataCollector metadata;
    MXFIndexCalculator::Collector index;
    std::map<std::uint32_t, IndexTable> tables; ///< by body SID

    /// Where the triplet begins within which the file breaks off; none if it does not.
    std::optional<std::uint64_t> brokenAt;
    /// The file breaks off, or ends without a footer partition: what came last in it may not be whole.
    bool isCut = false;
    std::optional<CutClip> cutClip;

    void read(std::istream& file);

    /// The content packages of an essence container that are whole.
    std::int64_t contentPackages(std::uint32_t bodySID) const;

private:
    struct Container {
        std::int64_t packages = 0;      ///< that are whole
        bool isInPackage = false;       ///< which the file may not have whole
        bool isLastWhole = true;        ///< the package that ended last has all elements
        std::size_t elementsBefore = 0; ///< of the package before
        std::size_t started = 0;        ///< elements of the package that came last
        std::size_t ended = 0;
        std::set<std::uint32_t> trackNumbers; ///< of the first package
        KLVKey element;                       ///< that came last
        std::uint64_t elementPosition = 0;
        std::uint64_t elementLength = 0;
    };

    void runIn(std::uint64_t length) override { runInLength = length; }
    void startPartition(const KLVKey& key, const MXFPartitionPack& started, std::uint64_t headerStart) override;
    void startContentPackage() override;
    void endContentPackage() override;
    void startElement(const KLVKey& key) override;
    void endElement(const KLVKey& key) override;
    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override;
    void indexTableSegment(const MXFIndexTableSegment& segment) override;

    /// Whether the index table of an essence container may have to be copied, by what is known so far.
    bool isCopied(std::uint32_t bodySID) { return keepsLayout_ || containers_[bodySID].packages < 2; }

    void mendTables();
    std::shared_ptr<const ContentStorage> contentStorage() const;
    void forEachTrack(std::uint32_t bodySID, const std::function<void(const Track&)>& visit) const;
    bool isWhole(std::uint32_t bodySID, const Container& container) const;
    std::set<std::uint32_t> tracksOf(std::uint32_t bodySID) const;
    void lookAtLastPackage(std::istream& file);
    void lookAtCutClip(std::istream& file, std::uint32_t bodySID, const Container& container);
    std::uint64_t octetsOfEditUnit() const;

    ErrorPrinter& errors_;
    bool keepsLayout_;
    MXFPartitionKind lastKind_ = MXFPartitionKind::Header;
    std::map<std::uint32_t, Container> containers_; ///< by body SID
    Container* now_ = nullptr;                      ///< that of the content package which came last
    std::set<std::uint32_t> bodySIDs_{0};
    std::optional<std::uint32_t> lastBody_; ///< body SID of the essence that came last
    std::optional<KLVKey> element_;         ///< that is read
    MXFIndexParser indexParser_{*this};
    AnySplitter splitter_{this, nullptr, this};
};

#include "sdk/internal/BRYXFileVerifier.h"

#include <map>
#include <string>

#include "klv/DullErrorHandler.h"
#include "klv/DullKLVHandler.h"
#include "klv/Locator.h"
#include "klv/VerifyingKLVHandler.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/structure/DullMXFStructureHandler.h"

namespace bryx {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw VerifyingKLVHandler::exception("the file does not read back as written: " + what);
}

/// Whatever a reader finds wrong ends the reading.
class Objector final : public DullErrorHandler {
public:
    void error(const util::uuid& /*id*/, const std::string& message) override { fail(message); }
    void fatalError(const util::uuid& /*id*/, const std::string& message) override { fail(message); }
};

/// Counts sets.
class SetCounter final : public MXFMetadataHandler {
public:
    void startMetadata() override { sets_ = 0; }
    void endMetadata() override {
        if (sets_ == 0) {
            fail("header metadata without sets");
        }
    }
    void primer(const Primer& /*primer*/) override {}
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& /*set*/) override { ++sets_; }

private:
    std::uint64_t sets_ = 0;
};

/// Follows index tables along the elements of bodies.
class IndexFollower final : public DullKLVHandler, public DullMXFStructureHandler {
public:
    /// @param base stream position of the first octet of the file
    explicit IndexFollower(std::uint64_t base) : base_(base) {}

    void follow(std::uint32_t bodySID, MXFIndexCalculator index) {
        Place& place = places_[bodySID];
        place.index = std::move(index);
        place.end = place.index.ranges().back().end;
    }

    /// Whether all entries have been met.
    void finish() const {
        for (const auto& [bodySID, place] : places_) {
            if (place.unit != place.end && place.end != MXFIndexCalculator::endless) {
                fail("edit unit " + std::to_string(place.unit) + " of essence container " + std::to_string(bodySID) +
                     " is in the index and not in the essence");
            }
        }
    }

    void startPartition(const KLVKey& /*key*/, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        pack_ = pack;
        bodyStart_ = base_ + headerStart + pack.headerByteCount + pack.indexByteCount;
        if (pack.bodySID != 0) {
            const std::uint64_t known = octets_[pack.bodySID];
            if (pack.bodyOffset != known) {
                fail("the body offset " + std::to_string(pack.bodyOffset) + " should be " + std::to_string(known));
            }
        }
    }
    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void endStream(bool /*stopped*/) override {
        octets_[pack_.bodySID] += static_cast<std::uint64_t>(std::streamoff{locator_->streampos()}) - bodyStart_;
    }
    bool startIndividualItem(const KLVKey& key, std::uint64_t /*length*/) override {
        return key != klvutil::fillKey && element();
    }
    bool startUniversalSet(const KLVKey& /*key*/, std::uint64_t /*length*/) override { return element(); }
    bool startLocalSet(const KLVKey& /*key*/, std::uint64_t /*length*/, KLVFieldForm /*tagForm*/,
                       KLVFieldForm /*lengthForm*/) override {
        return element();
    }
    bool startFixedLengthPack(const KLVKey& /*key*/, std::uint64_t /*length*/) override { return element(); }
    bool startVariableLengthPack(const KLVKey& /*key*/, std::uint64_t /*length*/, KLVFieldForm /*form*/) override {
        return element();
    }

private:
    struct Place {
        MXFIndexCalculator index;
        std::int64_t end = 0;
        std::int64_t unit = 0; ///< of the next entry, and its next element
        std::size_t element = 0;
    };

    bool element() {
        const auto found = places_.find(pack_.bodySID);
        if (found == places_.end()) {
            return false;
        }
        Place& place = found->second;
        const auto position = static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
        const std::uint64_t offset = pack_.bodyOffset + position - bodyStart_;
        // Elements that a content package lacks stand at the place of its last one.
        while (place.unit != place.end &&
               place.index.elementOffset(place.unit, place.element).value_or(offset) <= offset) {
            if (place.index.elementOffset(place.unit, place.element).value_or(offset) != offset) {
                fail("edit unit " + std::to_string(place.unit) + " begins elsewhere than the index says");
            }
            if (++place.element == place.index.elementCount(place.unit)) {
                place.element = 0;
                ++place.unit;
            }
        }
        return false;
    }

    std::uint64_t base_;
    std::map<std::uint32_t, Place> places_;         ///< by body SID
    std::map<std::uint32_t, std::uint64_t> octets_; ///< of essence so far, by body SID
    MXFPartitionPack pack_;
    std::uint64_t bodyStart_ = 0;
    const Locator* locator_ = nullptr;
};

} // namespace

void verifyFile(std::istream& file, std::streampos start, const std::set<std::uint32_t>& indexed) {
    Objector objector;
    SetCounter sets;
    MXFHeaderMetadataParser headerParser(sets);
    headerParser.setErrorHandler(&objector);
    MXFIndexCalculator::Collector collector;
    MXFIndexParser indexParser(collector);
    indexParser.setErrorHandler(&objector);
    IndexFollower follower(static_cast<std::uint64_t>(std::streamoff{start}));
    try {
        MXFReader reader;
        reader.setErrorHandler(&objector);
        reader.setHeaderMetadataHandler(&headerParser);
        reader.setIndexHandler(&indexParser);
        file.clear();
        file.seekg(start);
        reader.read(file);

        for (const MXFIndexCalculator::Table table : collector.tables()) {
            MXFIndexCalculator index;
            index.setSegments(collector, table);
            if (indexed.count(table.bodySID) != 0 && !index.ranges().empty()) {
                follower.follow(table.bodySID, std::move(index));
            }
        }
        MXFReader second;
        second.setStructureHandler(&follower);
        second.setBodyHandler(&follower);
        file.clear();
        file.seekg(start);
        second.read(file);
        file.clear();
    } catch (const klvutil::parse_error& error) {
        fail(error.what());
    }
    follower.finish();
}

} // namespace bryx

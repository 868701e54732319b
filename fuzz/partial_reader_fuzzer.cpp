/// Reads the input, but for its last octet, as a file: as a whole, and then piece by piece, its run-in, its random
/// index, its partitions, and what is at the offset that the last two octets of the input say. A partition up to its
/// body is the same alone as in the whole file, whatever follows; and a random index that ends the file is found.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <sstream>

#include "Expect.h"
#include "Listener.h"
#include "klv/DullErrorHandler.h"
#include "mxf/engines/MXFEngineFindings.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "support/Octets.h"
#include "support/Recorders.h"

namespace {

/// A partition that was met.
struct Part {
    std::uint64_t position;
    std::uint64_t body; ///< where that begins in the stream
    std::size_t line;   ///< of the log
};

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
    return b > std::numeric_limits<std::uint64_t>::max() - a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

/// Logs what comes of the frame, the header metadata and the index tables of a file, but for the findings.
class Recorder final : public MXFStructureHandler,
                       public DullMXFMetadataModelHandler,
                       public DullMXFIndexHandler,
                       public DullErrorHandler {
public:
    Log log;
    std::vector<Part> parts;
    std::vector<Report> reports;
    std::streamoff fault = -1; ///< where a parse_error ended the reading
    int open = 0;              ///< streams of findings

    /// Calls @p read, and returns what that does; false if it does nothing for a parse_error.
    template <class Read>
    bool run(Read read) {
        bool result = false;
        try {
            result = read();
        } catch (const klvutil::parse_error& error) {
            fault = error.position();
        }
        expect(open == 0, "the stream of findings does not end");
        return result;
    }

    bool hasReported(const klvutil::FindingKind& finding) const {
        return std::any_of(reports.begin(), reports.end(),
                           [&](const Report& report) { return report.id == finding.id; });
    }

    /// What the log has of a partition, up to its body, and how it ended if it did so before.
    std::string upToBody(const Part& part) const {
        const auto begin = log.begin() + static_cast<std::ptrdiff_t>(part.line);
        const auto end = std::find(begin, log.end(), partitionEnd);
        std::string text = joined({begin, end});
        if (end == log.end() && fault >= 0 && static_cast<std::uint64_t>(fault) < part.body) {
            text += "; ends at " + std::to_string(fault);
        }
        return text;
    }

    void runIn(std::uint64_t length) override { add("run-in", length); }
    void startStructure() override { add("structure"); }
    void endStructure() override { add("/structure"); }
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        parts.push_back({static_cast<std::uint64_t>(std::streamoff{locator_->streampos()}),
                         sum(headerStart, sum(pack.headerByteCount, pack.indexByteCount)), log.size()});
        add("partition", toString(key), octets::of(mxfutil::writePartitionPack(pack)), headerStart);
    }
    void endPartition(const KLVKey& /*key*/) override { add(partitionEnd); }
    void randomIndex(const MXFRandomIndex& index) override {
        add("random index", octets::of(mxfutil::writeRandomIndex(index, 1)));
    }

    void startMetadata() override { add("metadata"); }
    void endMetadata() override { add("/metadata"); }
    void primer(const Primer& primer) override { add("primer", primer.size()); }
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override {
        add("set", toString(set.key), set.position, set.length);
        for (const auto& [label, value] : set.properties) {
            add("property", toString(label), octets::of(value));
        }
    }
    void model(const Model& model) override {
        for (const auto& set : model) {
            add("model", set->getDescription().name());
        }
    }

    void startIndex() override { add("index"); }
    void endIndex() override { add("/index"); }
    void indexTableSegment(const MXFIndexTableSegment& segment) override {
        add("segment", segment.bodySID, segment.indexStartPosition, segment.indexDuration,
            segment.deltaEntryArray.size(), segment.indexEntryArray.size());
    }

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override { ++open; }
    void endStream() override { --open; }
    void warning(const util::uuid& id, const std::string& /*message*/) override { report(id); }
    void error(const util::uuid& id, const std::string& /*message*/) override { report(id); }
    void fatalError(const util::uuid& id, const std::string& /*message*/) override { report(id); }

private:
    static constexpr const char* partitionEnd = "/partition";

    template <class... Arguments>
    void add(const char* name, const Arguments&... arguments) {
        log.push_back(line(nullptr, name, arguments...));
    }
    void report(const util::uuid& id) { reports.push_back({id, locator_->streampos()}); }

    const Locator* locator_ = nullptr;
};

template <class Reader>
std::shared_ptr<Recorder> listenTo(Reader& reader) {
    // To make a factory for each reading takes longer than to read.
    static const auto factory = std::make_shared<BRYXMetadataFactory>();
    auto recorder = std::make_shared<Recorder>();
    factory->setErrorHandler(recorder);
    reader.setMetadataFactory(factory);
    reader.setStructureHandler(recorder);
    reader.setMetadataHandler(recorder);
    reader.setIndexHandler(recorder);
    reader.setErrorHandler(recorder);
    return recorder;
}

/// What is at @p position, if anything is.
std::shared_ptr<Recorder> readPartition(BRYXPartialReader& reader, std::uint64_t position) {
    auto recorder = listenTo(reader);
    const bool isMet = recorder->run([&] { return reader.readPartition(position); });
    expect(recorder->parts.size() <= 1, "more than one partition is delivered");
    expect(isMet == (recorder->parts.size() == 1) || recorder->fault >= 0,
           "the result does not tell what is delivered");
    expect(recorder->parts.empty() || recorder->parts.front().position == position, "the partition is another one");
    expect(recorder->log.empty() || recorder->fault >= 0 || recorder->log.back() == "/structure",
           "the structure does not end");
    return recorder;
}

/// Expects the same if the file ends where the body of the partition begins.
void cutAtBody(const std::string& file, const Recorder& alone) {
    if (alone.parts.empty() || alone.fault >= 0 || alone.parts.front().body > file.size() ||
        alone.hasReported(mxfutil::findings::incorrectHeaderByteCount) ||
        alone.hasReported(mxfutil::findings::incorrectIndexByteCount)) {
        return;
    }
    const Part& part = alone.parts.front();
    const auto reader = createBRYXPartialReader(std::make_shared<std::istringstream>(file.substr(0, part.body)));
    const auto cut = readPartition(*reader, part.position);
    expect(cut->fault < 0 && cut->log == alone.log && cut->reports == alone.reports,
           "what follows a partition matters");
}

void readPieces(const std::string& file, std::uint64_t somewhere) {
    const auto whole = [&] {
        const auto reader = createBRYXReader(std::make_shared<std::istringstream>(file), BRYXValidationMode::None);
        auto recorder = listenTo(*reader);
        recorder->run([&] { return reader->read(), true; });
        return recorder;
    }();
    const auto reader = createBRYXPartialReader(std::make_shared<std::istringstream>(file));

    const auto runIn = listenTo(*reader);
    runIn->run([&] { return reader->skipRunIn(), true; });
    const auto structure = std::find(whole->log.begin(), whole->log.end(), "structure");
    expect(runIn->log == Log(whole->log.begin(), structure) &&
               runIn->fault == (structure == whole->log.end() ? whole->fault : -1),
           "a run-in is skipped in another way");

    const auto index = listenTo(*reader);
    const bool isFound = index->run([&] { return reader->readRandomIndexPack(); });
    expect(isFound || index->fault >= 0 || index->log.empty(), "there is no random index, and something is called");
    const bool isAtEnd = whole->fault < 0 && whole->log.size() > 1 &&
                         whole->log[whole->log.size() - 2].rfind("random index", 0) == 0 &&
                         !whole->hasReported(mxfutil::findings::incorrectRandomIndexPackLength);
    expect(!isAtEnd || (isFound && index->log.size() == 3 && index->log[1] == whole->log[whole->log.size() - 2]),
           "the random index that ends the file is not found");

    for (const Part& part : whole->parts) {
        const auto alone = readPartition(*reader, part.position);
        expect(alone->parts.size() == 1 && alone->upToBody(alone->parts.front()) == whole->upToBody(part),
               "a partition is another one when it is read alone");
        expect(std::all_of(alone->reports.begin(), alone->reports.end(),
                           [&](const Report& report) {
                               return std::find(whole->reports.begin(), whole->reports.end(), report) !=
                                      whole->reports.end();
                           }),
               "a partition has other faults when it is read alone");
        cutAtBody(file, *alone);
    }
    cutAtBody(file, *readPartition(*reader, somewhere));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 1) {
        const std::string file(reinterpret_cast<const char*>(data), size - 1);
        readPieces(file, util::loadBigEndian<std::uint16_t>(data + size - 2) % (size + 1));
    }
    return 0;
}

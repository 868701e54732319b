/// Takes the input for calls of a writer, in whatever order. Those that are in order succeed, the others fail and change
/// nothing; and the file that comes of it reads to its end, with each element that was written.

#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>

#include "Expect.h"
#include "Listener.h"
#include "Writing.h"
#include "support/Octets.h"
#include "support/Streams.h"
#include "util/assertion_failure.h"

namespace {

/// The octets of the input, one after the other; 0 behind the last one.
class Choices {
public:
    Choices(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool areLeft() const { return next_ != end_; }
    std::uint8_t next() { return areLeft() ? *next_++ : std::uint8_t{0}; }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

/// A writer, and what it must think of its state.
class Caller {
public:
    /// @param isVerified whether the writer would complain about an index table that is not true
    Caller(std::shared_ptr<BRYXWriter> writer, bool isVerified, Choices& choices)
        : writer_(std::move(writer)), isVerified_(isVerified), choices_(choices) {
        BRYXWriterConfiguration configuration = configurationOf(choices.next());
        const std::uint8_t more = choices.next();
        configuration.headerSpace = more % 4U * 300;
        configuration.partitionSize = more / 4U % 4U * 50;
        configuration.fillKeyVersion = static_cast<std::uint8_t>(more / 16U % 3U);
        if (more >= 192) {
            configuration.indexPlacement = more % 2U == 0 ? BRYXWriterConfiguration::IndexPlacement::None
                                                          : BRYXWriterConfiguration::IndexPlacement::BeforeEssence;
        }
        isIndexBefore_ = configuration.indexPlacement == BRYXWriterConfiguration::IndexPlacement::BeforeEssence;
        writer_->setConfiguration(configuration);
    }

    std::uint64_t elements() const { return elements_; }

    /// Whether what was told of index tables must be true.
    bool isIndexTrue() const { return isIndexTrue_; }

    void call() {
        const std::uint8_t choice = choices_.next();
        const std::uint8_t more = choice / 16U;
        if (choice % 2U == 0) {
            essence(choice % 16U / 2U, more);
        } else {
            file(choice % 16U / 2U, more);
        }
    }

    /// Makes the calls that are missing.
    void finish() {
        if (!isStarted_) {
            writer_->start(leastMetadata());
        }
        if (chunkLeft_ != 0) {
            chunk(chunkLeft_);
        }
        if (inPackage_ && !hasElements_) {
            element(keys::picture);
        }
        if (inPackage_) {
            writer_->structureReceiver().endContentPackage();
        }
        if (inEssence_) {
            writer_->endEssence();
        }
        if (inStream_) {
            writer_->endGenericStream();
        }
        if (!isFinished_) {
            writer_->finish(leastMetadata());
        }
    }

private:
    /// Whether a call succeeds, which it must if and only if it is in order.
    template <class Call>
    static bool attempt(bool isInOrder, Call call) {
        try {
            call();
        } catch (const util::assertion_failure& failure) {
            expect(!isInOrder, failure.what());
            return false;
        }
        expect(isInOrder, "a call out of order succeeds");
        return true;
    }

    /// Whether a partition may end.
    bool isComplete() const { return !inPackage_ && chunkLeft_ == 0; }

    void file(std::uint8_t choice, std::uint8_t more) {
        const std::uint32_t sid = 1 + more % 4U;
        const bool isFree = isStarted_ && !isFinished_ && !inEssence_ && !inStream_;
        switch (choice) {
        case 0:
            attempt(!isStarted_, [&] { writer_->start(leastMetadata()); });
            isStarted_ = true;
            break;
        case 1:
            if (attempt(isFree && streams_.count(sid) == 0, [&] { writer_->startEssence(container(sid, more)); })) {
                inEssence_ = true;
                containers_.insert(sid);
            }
            break;
        case 2:
            inEssence_ = !attempt(inEssence_ && isComplete(), [&] { writer_->endEssence(); }) && inEssence_;
            break;
        case 3:
            attempt(inEssence_ && isComplete(), [&] { writer_->startBodyPartition(); });
            break;
        case 4:
            if (attempt(isFree && streams_.count(sid) == 0 && containers_.count(sid) == 0,
                        [&] { stream_ = &writer_->startGenericStream(sid); })) {
                inStream_ = true;
                streams_.insert(sid);
            }
            break;
        case 5:
            inStream_ = !attempt(inStream_, [&] { writer_->endGenericStream(); }) && inStream_;
            break;
        case 6:
            isFinished_ = attempt(isFree, [&] { writer_->finish(leastMetadata()); }) || isFinished_;
            break;
        default:
            if (isStarted_) {
                attempt(false, [&] { writer_->setConfiguration({}); });
            }
        }
    }

    BRYXEssenceContainer container(std::uint32_t sid, std::uint8_t more) {
        BRYXEssenceContainer container;
        container.bodySID = sid;
        container.indexSID = sid % 2 == 0 ? 0 : 10 + sid;
        container.isConstant = more >= 12;
        if (more >= 8) {
            const bool isReordered = more % 2U != 0; // beyond the last edit unit as well
            isIndexTrue_ = isIndexTrue_ && !isReordered;
            container.describe = [isReordered](std::int64_t editUnit, MXFIndexEntry& entry) {
                entry.temporalOffset = static_cast<std::int8_t>(isReordered ? editUnit % 3 - 1 : 0);
                entry.keyFrameOffset = static_cast<std::int8_t>(-(editUnit % 12));
            };
        }
        if (container.indexSID != 0 && (isIndexBefore_ || (more >= 4 && more < 8 && !isVerified_))) {
            container.segments.resize(1 + more % 2U);
            container.segments.back().indexStartPosition = more % 2U;
            hasGivenIndex_ = true;
            isIndexTrue_ = false;
        }
        return container;
    }

    void essence(std::uint8_t choice, std::uint8_t more) {
        if (!isStarted_) {
            return; // there are no receivers yet
        }
        MXFGCStructureHandler& structure = writer_->structureReceiver();
        KLVKey key = keys::picture;
        key.octets[12] = static_cast<std::uint8_t>(more % 2U == 0 ? 0x15 : 0x16);
        key.octets[15] = static_cast<std::uint8_t>(more / 2U + 1);
        switch (choice) {
        case 0:
            if (attempt(inEssence_ && isComplete(), [&] { structure.startContentPackage(); })) {
                inPackage_ = true;
                hasElements_ = false;
            }
            break;
        case 1:
            inPackage_ = !attempt(inPackage_ && hasElements_ && chunkLeft_ == 0, [&] {
                structure.endContentPackage();
            }) && inPackage_;
            break;
        case 2:
        case 3:
            if (chunkLeft_ == 0 && inPackage_) {
                element(key);
            } else if (!inPackage_) {
                attempt(false, [&] { structure.startElement(key); });
            }
            break;
        case 4:
            if (chunkLeft_ != 0) {
                attempt(false, [&] { structure.endElement(chunked_); });
                chunk(std::min<std::uint64_t>(chunkLeft_, 1U + more));
            } else if (attempt(inPackage_, [&] { structure.startElement(key); })) {
                chunked_ = key;
                chunkLeft_ = 1 + choices_.next() % 64U;
                hasElements_ = true;
                ++elements_;
                std::uint64_t size = 0;
                std::uint8_t* buffer = nullptr;
                chunks().startChunkedElement(key, chunkLeft_, 0, size, buffer);
            }
            break;
        case 5:
            if (chunkLeft_ == 0 && !inPackage_) {
                const std::string value = "without a content package";
                attempt(false, [&] { structure.endElement(key); });
                attempt(false,
                        [&] { writer_->essenceReceiver().pictureElement(key, octetsOf(value), value.size(), 0); });
            }
            break;
        case 6:
            if (inStream_) {
                item(*stream_, keys::item, more);
            }
            break;
        default:
            if (chunkLeft_ == 0 && !inPackage_ && (!inEssence_ || hasGivenIndex_)) {
                elements_ += attempt(inEssence_, [&] { item(writer_->bodyReceiver(), key, more); }) ? 1 : 0;
            }
        }
    }

    void element(const KLVKey& key) {
        const std::string value(choices_.next() % 128U, 'e');
        writer_->structureReceiver().startElement(key);
        writer_->essenceReceiver().soundElement(key, octetsOf(value), value.size(), 0);
        writer_->structureReceiver().endElement(key);
        hasElements_ = true;
        ++elements_;
    }

    MXFGCChunkedEssenceHandler& chunks() {
        return dynamic_cast<MXFGCChunkedEssenceHandler&>(writer_->essenceReceiver());
    }

    /// Writes a chunk of the element that is open, and ends it with its last one.
    void chunk(std::uint64_t size) {
        const std::string value(size, 'c');
        writer_->essenceReceiver().soundElement(chunked_, octetsOf(value), value.size(), 0);
        chunkLeft_ -= size;
        if (chunkLeft_ == 0) {
            writer_->structureReceiver().endElement(chunked_);
        }
    }

    static const std::uint8_t* octetsOf(const std::string& value) {
        return value.empty() ? nullptr : reinterpret_cast<const std::uint8_t*>(value.data());
    }

    static void item(KLVHandler& handler, const KLVKey& key, std::uint8_t size) {
        const std::string value(std::size_t{1} + size, 'x');
        handler.berLengthForm(0x83);
        handler.startIndividualItem(key, value.size());
        handler.value(octetsOf(value), value.size());
        handler.endIndividualItem(key);
    }

    std::shared_ptr<BRYXWriter> writer_;
    bool isVerified_;
    Choices& choices_;
    bool isIndexBefore_ = false;
    bool hasGivenIndex_ = false;
    bool isIndexTrue_ = true;
    bool isStarted_ = false;
    bool inEssence_ = false;
    bool inPackage_ = false;
    bool hasElements_ = false; ///< the content package
    bool inStream_ = false;
    bool isFinished_ = false;
    std::uint64_t chunkLeft_ = 0; ///< octets of the element that is open
    KLVKey chunked_;              ///< its key
    KLVHandler* stream_ = nullptr;
    std::set<std::uint32_t> containers_; ///< body SIDs
    std::set<std::uint32_t> streams_;
    std::uint64_t elements_ = 0;
};

/// Counts elements.
struct Counter final : DullMXFGCEssenceHandler {
    std::uint64_t elements = 0;

    bool startElement(const KLVKey& /*key*/, std::uint64_t /*length*/, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        ++elements;
        return false;
    }
};

/// Whether a finding is about an index table and the essence that it leads to.
bool isAboutIndex(const util::uuid& id) {
    static const std::set<util::uuid> ids = [] {
        std::set<util::uuid> found{BRYXCrossChecks::indexBeyondEssence.finding.id};
        for (const BRYXCheckGroup& group : getBRYXChecks()) {
            for (const BRYXCheck* const check : group.checks) {
                if (std::string(group.subject) == "Index tables") {
                    found.insert(check->finding.id);
                }
            }
        }
        return found;
    }();
    return ids.count(id) != 0;
}

void readBack(const std::string& octets, std::uint64_t elements, bool isIndexTrue) {
    static const auto factory = std::make_shared<BRYXMetadataFactory>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(octets), BRYXValidationMode::Strict);
    const auto counter = std::make_shared<Counter>();
    reader->setMetadataFactory(factory);
    reader->setMetadataHandler(std::make_shared<DullMXFMetadataModelHandler>());
    reader->setIndexHandler(std::make_shared<DullMXFIndexHandler>());
    reader->setEssenceHandler(counter);
    const auto findings = std::make_shared<Findings>();
    reader->setErrorHandler(findings);
    reader->read();
    for (const Report& report : findings->reports) {
        expect(!isIndexTrue || !isAboutIndex(report.id), "the index table is wrong");
    }
    expect(counter->elements == elements, "elements are missing, or too many");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Choices choices(data, std::min<std::size_t>(size, 2000));
    const std::uint8_t output = choices.next() % 3;
    const auto verified = std::make_shared<std::stringstream>();
    const auto pipe = std::make_shared<OutputPipe>();
    Caller caller(output == 0   ? createVerifyingBRYXWriter(verified)
                  : output == 1 ? createBRYXWriter(verified)
                                : createBRYXWriter(pipe),
                  output == 0, choices);
    while (choices.areLeft()) {
        caller.call();
    }
    caller.finish();
    readBack(output == 2 ? pipe->octets() : verified->str(), caller.elements(), caller.isIndexTrue());
    return 0;
}

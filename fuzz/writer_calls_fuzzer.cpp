/// Takes the input for calls of a writer, in whatever order. Those that are in order succeed, the others fail and change
/// nothing; and the file that comes of it reads to its end, with each element that was written.

#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>

#include "Listener.h"
#include "Writing.h"
#include "support/Octets.h"
#include "support/Streams.h"
#include "util/assertion_failure.h"

namespace {

void expect(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

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
    Caller(std::shared_ptr<BRYXWriter> writer, Choices& choices) : writer_(std::move(writer)), choices_(choices) {
        BRYXWriterConfiguration configuration = configurationOf(choices.next());
        const std::uint8_t more = choices.next();
        configuration.headerSpace = more % 4U * 300;
        configuration.partitionSize = more / 4U % 4U * 50;
        configuration.fillKeyVersion = static_cast<std::uint8_t>(more / 16U % 3U);
        if (more >= 192) {
            configuration.indexPlacement = BRYXWriterConfiguration::IndexPlacement::None;
        }
        writer_->setConfiguration(configuration);
    }

    std::uint64_t elements() const { return elements_; }

    void call() {
        const std::uint8_t choice = choices_.next();
        const std::uint32_t sid = 1 + choice / 16U % 4U;
        const bool isFree = isStarted_ && !isFinished_ && !inEssence_ && !inStream_;
        switch (choice % 12U) {
        case 0:
            attempt(!isStarted_, [&] { writer_->start(leastMetadata()); });
            isStarted_ = true;
            break;
        case 1: {
            BRYXEssenceContainer container;
            container.bodySID = sid;
            container.indexSID = sid % 2 == 0 ? 0 : 10 + sid;
            container.isConstant = choice >= 128;
            if (attempt(isFree && streams_.count(sid) == 0, [&] { writer_->startEssence(container); })) {
                inEssence_ = true;
                containers_.insert(sid);
            }
            break;
        }
        case 2:
            inEssence_ = !attempt(inEssence_, [&] { writer_->endEssence(); }) && inEssence_;
            break;
        case 3:
            attempt(inEssence_, [&] { writer_->startBodyPartition(); });
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
        case 7:
            if (isStarted_) {
                attempt(false, [&] { writer_->setConfiguration({}); });
            }
            break;
        case 8:
            if (inStream_) {
                item(*stream_, choice);
            }
            break;
        default:
            if (inEssence_) {
                contentPackage(choice);
            }
        }
    }

    /// Makes the calls that are missing.
    void finish() {
        if (!isStarted_) {
            writer_->start(leastMetadata());
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

    static void item(KLVHandler& handler, std::uint8_t size) {
        const std::string value(1 + size / 12U, 'x');
        handler.berLengthForm(0x83);
        handler.startIndividualItem(keys::item, value.size());
        handler.value(reinterpret_cast<const std::uint8_t*>(value.data()), value.size());
        handler.endIndividualItem(keys::item);
    }

    void contentPackage(std::uint8_t choice) {
        MXFGCStructureHandler& structure = writer_->structureReceiver();
        structure.startContentPackage();
        attempt(false, [&] { writer_->endEssence(); });
        attempt(false, [&] { writer_->startBodyPartition(); });
        for (unsigned i = 0; i <= choice / 64U; ++i) {
            KLVKey key = keys::picture;
            key.octets[12] = static_cast<std::uint8_t>(i == 0 ? 0x15 : 0x16);
            key.octets[15] = static_cast<std::uint8_t>(i + 1);
            const std::string value(choices_.next() % 128U, 'e');
            const auto* const data = value.empty() ? nullptr : reinterpret_cast<const std::uint8_t*>(value.data());
            structure.startElement(key);
            if (i == 0) {
                writer_->essenceReceiver().pictureElement(key, data, value.size(), 0);
            } else {
                writer_->essenceReceiver().soundElement(key, data, value.size(), 0);
            }
            structure.endElement(key);
            ++elements_;
        }
        structure.endContentPackage();
    }

    std::shared_ptr<BRYXWriter> writer_;
    Choices& choices_;
    bool isStarted_ = false;
    bool inEssence_ = false;
    bool inStream_ = false;
    bool isFinished_ = false;
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

void readBack(const std::string& octets, std::uint64_t elements) {
    static const auto factory = std::make_shared<BRYXMetadataFactory>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(octets), BRYXValidationMode::Strict);
    const auto counter = std::make_shared<Counter>();
    reader->setMetadataFactory(factory);
    reader->setMetadataHandler(std::make_shared<DullMXFMetadataModelHandler>());
    reader->setIndexHandler(std::make_shared<DullMXFIndexHandler>());
    reader->setEssenceHandler(counter);
    reader->read();
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
                  choices);
    while (choices.areLeft()) {
        caller.call();
    }
    caller.finish();
    readBack(output == 2 ? pipe->octets() : verified->str(), caller.elements());
    return 0;
}

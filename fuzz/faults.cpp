/// Reads, parses, codes and writes small files while the ground gives way: operations of the stream fail, throw, do
/// half of what they should or lie about the end, and allocations fail; at one place after the other. Each time an
/// exception tells so, nothing leaks, and what promises to be usable afterwards is.
///
/// usage: faults [some]     each place where something can fail; some: every so many, where they are many

#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string_view>

#include "Allocations.h"
#include "Expect.h"
#include "Listener.h"
#include "klv/VerifyingKLVHandler.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "support/BuiltModel.h"
#include "support/GoodClip.h"
#include "support/Models.h"
#include "support/Streams.h"
#include "util/assertion_failure.h"

namespace {

/// What is being tried.
std::string name;

/// Whether each place is tried.
bool triesAll = true;

enum class Fault : std::uint8_t {
    Fails,    ///< does nothing, or half of what it should
    Throws,   ///< what nobody knows
    Breaks,   ///< fails, and sets the stream's bad state
    EndsLate, ///< tells an end that is not there yet
    EndsEarly ///< tells an end that is not one
};
constexpr const char* faultNames[] = {"fails", "throws", "breaks", "ends late", "ends early"};

/// Those of streams whose end nobody asks for.
const std::vector<Fault> failures{Fault::Fails, Fault::Throws, Fault::Breaks};
const std::vector<Fault> allFaults{Fault::Fails, Fault::Throws, Fault::Breaks, Fault::EndsLate, Fault::EndsEarly};

/// A stream over octets in memory whose operations go wrong from some point on, or at that point alone.
class FaultyStream : private std::streambuf, public std::iostream {
public:
    explicit FaultyStream(std::string octets)
        : std::iostream(static_cast<std::streambuf*>(this)), octets_(std::move(octets)) {
        octets_.reserve(1U << 16U); // for the get area, which stays where it is, and for those who have no memory
    }

    void failAt(std::size_t operation, Fault fault, bool lasts) {
        from_ = operation;
        to_ = lasts ? never : operation + 1;
        fault_ = fault;
    }
    bool hasFailed() const { return operations_ > from_; }
    std::size_t writesAfterFailure() const { return writesAfterFailure_; }

    /// Works again, from its beginning.
    void repair() {
        from_ = never;
        clear();
        seekg(0);
    }

    const std::string& octets() const { return octets_; }

private:
    using Buffer = std::streambuf;
    static constexpr std::size_t never = ~std::size_t{0};

    bool goesWrong(bool tellsEnd) {
        const std::size_t operation = operations_++;
        if (operation < from_ || operation >= to_) {
            return false;
        }
        switch (fault_) {
        case Fault::Throws:
            throw fault_;
        case Fault::Breaks:
            setstate(std::ios::badbit);
            return true;
        case Fault::Fails:
            return true;
        default:
            return tellsEnd;
        }
    }

    Buffer::int_type underflow() override {
        get_ += static_cast<std::size_t>(egptr() - eback());
        setg(nullptr, nullptr, nullptr);
        if (goesWrong(false) || get_ >= octets_.size()) {
            return Buffer::traits_type::eof();
        }
        char* const at = &octets_[get_];
        setg(at, at, at + std::min<std::size_t>(64, octets_.size() - get_));
        return Buffer::traits_type::to_int_type(*at);
    }

    Buffer::int_type overflow(Buffer::int_type octet) override {
        const char value = Buffer::traits_type::to_char_type(octet);
        return xsputn(&value, 1) == 1 ? octet : Buffer::traits_type::eof();
    }

    std::streamsize xsputn(const char* data, std::streamsize size) override {
        writesAfterFailure_ += hasFailedToWrite_ ? 1 : 0;
        const bool isWrong = goesWrong(false);
        hasFailedToWrite_ = hasFailedToWrite_ || isWrong;
        const auto taken = static_cast<std::size_t>(isWrong ? size / 2 : size);
        octets_.resize(std::max(octets_.size(), put_ + taken));
        std::copy_n(data, taken, &octets_[put_]);
        put_ += taken;
        return static_cast<std::streamsize>(taken);
    }

    Buffer::pos_type seekoff(Buffer::off_type offset, std::ios::seekdir way, std::ios::openmode mode) override {
        const bool isWrong = goesWrong(way == std::ios::end);
        if (isWrong && (fault_ == Fault::Fails || fault_ == Fault::Breaks)) {
            return Buffer::off_type(-1);
        }
        const std::size_t get = get_ + static_cast<std::size_t>(gptr() - eback());
        std::size_t base = way == std::ios::beg   ? 0
                           : way == std::ios::end ? octets_.size()
                           : mode == std::ios::in ? get
                                                  : put_;
        if (isWrong) {
            base = fault_ == Fault::EndsLate ? base * 2 : base / 2;
        }
        const Buffer::off_type to = static_cast<Buffer::off_type>(base) + offset;
        if (to < 0) {
            return Buffer::off_type(-1);
        }
        if ((mode & std::ios::in) != 0) {
            setg(nullptr, nullptr, nullptr);
            get_ = static_cast<std::size_t>(to);
        }
        if ((mode & std::ios::out) != 0) {
            put_ = static_cast<std::size_t>(to);
        }
        return to;
    }

    Buffer::pos_type seekpos(Buffer::pos_type position, std::ios::openmode mode) override {
        return seekoff(position, std::ios::beg, mode);
    }

    int sync() override { return goesWrong(false) ? -1 : 0; }

    std::string octets_;
    std::size_t get_ = 0; ///< of the get area, or of the octet that comes next if there is none
    std::size_t put_ = 0;
    std::size_t operations_ = 0;
    std::size_t from_ = never;
    std::size_t to_ = never;
    Fault fault_ = Fault::Fails;
    bool hasFailedToWrite_ = false;
    std::size_t writesAfterFailure_ = 0;
};

/// A reader and those who listen to it.
struct Reading {
    explicit Reading(const std::string& file, std::shared_ptr<MXFMetadataFactory> setFactory = nullptr)
        : stream(std::make_shared<FaultyStream>(file)), reader(createBRYXReader(stream, BRYXValidationMode::Strict)),
          factory(std::move(setFactory)) {
        listen(*reader, listener, factory);
    }

    /// Reads again from a stream that works, and expects what a new reader gets.
    void again(const Reading& fresh) {
        expect(listener->findings.open == 0, "the stream of findings does not end");
        stream->repair();
        listener = std::make_shared<Listener>();
        listen(*reader, listener, factory);
        expect(readsToEnd(*reader) && gotTheSameAs(fresh), "the reader does not read as a new one does");
    }

    bool gotTheSameAs(const Reading& other) const {
        return listener->sum == other.listener->sum && listener->findings.messages == other.listener->findings.messages;
    }

    std::shared_ptr<FaultyStream> stream;
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
    std::shared_ptr<BRYXReader> reader;
    std::shared_ptr<MXFMetadataFactory> factory; ///< none for one of the reader's own
};

/// A partial reader that reads all of the partitions of a file, and those who listen to it.
class PartialReading {
public:
    explicit PartialReading(const GoodClip& clip)
        : stream(std::make_shared<FaultyStream>(clip.octets)), clip_(clip), reader_(createBRYXPartialReader(stream)) {
        listen();
    }

    const std::shared_ptr<FaultyStream> stream;

    void read() {
        reader_->skipRunIn();
        reader_->readRandomIndexPack();
        for (const GoodClip::Triplet& pack : clip_.packs()) {
            reader_->readPartition(pack.position);
        }
    }

    /// Reads again from a stream that works, and expects what a new reader gets.
    void again(const PartialReading& fresh) {
        expect(listener_->findings.open == 0, "the stream of findings does not end");
        stream->repair();
        listen();
        read();
        expect(gotTheSameAs(fresh), "the partial reader does not read as a new one does");
    }

    bool gotTheSameAs(const PartialReading& other) const { return listener_->sum == other.listener_->sum; }

private:
    void listen() {
        listener_ = std::make_shared<Listener>();
        reader_->setStructureHandler(listener_);
        reader_->setMetadataHandler(listener_);
        reader_->setIndexHandler(listener_);
        reader_->setErrorHandler({listener_, &listener_->findings});
    }

    const GoodClip& clip_;
    std::shared_ptr<BRYXPartialReader> reader_;
    std::shared_ptr<Listener> listener_;
};

/// Calls @p attempt with something that spoils a stream: with a fault at the first operation, and @p step operations
/// later each time, until it returns false: there was no such operation.
template <class Attempt>
void failOperations(const std::string& what, const std::vector<Fault>& faults, std::size_t step, Attempt attempt) {
    std::size_t attempts = 0;
    for (const Fault fault : faults) {
        for (const bool lasts : {false, true}) {
            std::size_t operation = 0;
            do {
                name = what + ", operation " + std::to_string(operation) + ' ' + faultNames[static_cast<int>(fault)] +
                       (lasts ? " for ever" : " once");
                ++attempts;
            } while (attempt([&](FaultyStream& stream) {
                stream.failAt(operation, fault, lasts);
                operation += step;
            }));
        }
    }
    std::printf("%s: %zu faults of streams\n", what.c_str(), attempts);
}

/// Has allocations fail while @p run works on what @p make returns, until none is left that could fail. Then @p check
/// is told of it, and whether it ran to the end.
template <class Make, class Run, class Check>
void failAllocations(const char* what, Make make, Run run, Check check) {
    std::size_t count = 0;
    {
        auto work = make();
        const std::size_t before = allocations::count();
        run(*work);
        count = allocations::count() - before;
        check(*work, true); // whatever stays for good once it was needed is there now
    }
    const std::size_t step = triesAll ? 1 : 1 + count / 500;
    std::size_t attempts = 0;
    for (const bool lasts : {false, true}) {
        for (std::size_t nth = 0; nth < count; nth += step, ++attempts) {
            name =
                std::string(what) + ", allocation " + std::to_string(nth) + " fails " + (lasts ? "for ever" : "once");
            const std::size_t held = allocations::octets();
            auto work = make();
            bool isDone = false;
            try {
                const allocations::Failing failing(nth, lasts);
                run(*work);
                isDone = true;
            } catch (const std::bad_alloc&) {
                isDone = false;
            }
            check(*work, isDone);
            work.reset();
            expect(allocations::octets() == held, "something leaks");
        }
    }
    std::printf("%s: %zu of %zu allocations, each once and for ever\n", what, attempts / 2, count);
}

void failWhileReading(const std::string& file) {
    Reading fresh(file);
    expect(readsToEnd(*fresh.reader) && fresh.listener->findings.reports.empty(), "the file is good");
    const auto factory = std::make_shared<BRYXMetadataFactory>();
    failOperations("reading", allFaults, 1, [&](auto prepare) {
        Reading reading(file, factory);
        prepare(*reading.stream);
        bool isWhole = false;
        try {
            isWhole = readsToEnd(*reading.reader);
        } catch (const util::assertion_failure&) {
            // The buffer set the state of the stream, and gave the octets nevertheless: a fault of the program.
            expect(reading.stream->bad(), "no fault of the stream fails an assertion");
        }
        // A stream that ends where it begins is no file.
        const bool isMissed = reading.listener->findings.reports.empty() && reading.listener->sum != 0;
        expect(!isWhole || reading.gotTheSameAs(fresh) || !isMissed, "octets are missing, and nobody says so");
        const bool hasFailed = reading.stream->hasFailed();
        reading.again(fresh);
        return hasFailed;
    });
}

void failWhileReadingParts(const GoodClip& clip) {
    PartialReading fresh(clip);
    fresh.read();
    failOperations("reading parts", allFaults, 1, [&](auto prepare) {
        PartialReading reading(clip);
        prepare(*reading.stream);
        try {
            reading.read();
        } catch (const klvutil::parse_error&) {
        } catch (const util::assertion_failure& failure) {
            // A stream that cannot seek, or a buffer that set the state of its stream and gave the octets nevertheless.
            const std::string_view what = failure.what();
            expect(what.find("successful seekg()") != what.npos || what.find("input stream is good") != what.npos,
                   failure.what());
        }
        const bool hasFailed = reading.stream->hasFailed();
        reading.again(fresh);
        return hasFailed;
    });
    failAllocations(
        "reading parts", [&] { return std::make_unique<PartialReading>(clip); },
        [](PartialReading& reading) { reading.read(); },
        [&](PartialReading& reading, bool isDone) {
            expect(!isDone || reading.gotTheSameAs(fresh), "something is lost");
            reading.again(fresh);
        });
}

/// Whether the clip could be written.
bool writes(const GoodClip& clip, BRYXWriter& writer) {
    try {
        clip.write(writer);
        return true;
    } catch (const util::assertion_failure&) {
        return false;
    } catch (const VerifyingKLVHandler::exception&) {
        return false;
    } catch (Fault) {
        return false; // from where the stream stands: only what is written or read is guarded
    }
}

/// Knows what comes of a file that was written whole: as into a stream that seeks, or as into a pipe, where the writer
/// takes the stream for one since it does not tell its position.
class Written {
public:
    explicit Written(const GoodClip& clip) {
        const auto file = std::make_shared<FaultyStream>("");
        clip.write(*createBRYXWriter(file));
        const auto pipe = std::make_shared<OutputPipe>();
        clip.write(*createBRYXWriter(pipe));
        sums_ = {sumOf(file->octets()), sumOf(pipe->octets())};
    }

    bool isWhole(const std::string& octets) const { return sums_.count(sumOf(octets)) != 0; }

private:
    std::uint64_t sumOf(const std::string& octets) const {
        const Reading reading(octets, factory_);
        expect(readsToEnd(*reading.reader), "what was written cannot be read");
        return reading.listener->sum;
    }

    std::shared_ptr<BRYXMetadataFactory> factory_ = std::make_shared<BRYXMetadataFactory>();
    std::set<std::uint64_t> sums_;
};

void failWhileWriting(const GoodClip& clip) {
    const Written written(clip);
    for (const bool verifies : {false, true}) {
        const std::size_t step = triesAll ? 1 : verifies ? 31 : 7;
        failOperations(verifies ? "writing and verifying" : "writing", failures, step, [&](auto prepare) {
            const auto stream = std::make_shared<FaultyStream>("");
            prepare(*stream);
            const bool isWritten =
                writes(clip, verifies ? *createVerifyingBRYXWriter(stream) : *createBRYXWriter(stream));
            expect(stream->writesAfterFailure() == 0, "something is written after a failure");
            expect(!isWritten || written.isWhole(stream->octets()), "something is lost");
            return stream->hasFailed();
        });
    }
}

void failToAllocate(const GoodClip& clip) {
    Reading fresh(clip.octets);
    readsToEnd(*fresh.reader);
    failAllocations(
        "reading", [&] { return std::make_unique<Reading>(clip.octets); },
        [](Reading& reading) { reading.reader->read(); },
        [&](Reading& reading, bool isDone) {
            expect(!isDone || reading.gotTheSameAs(fresh), "something is lost");
            reading.again(fresh);
        });

    const auto model = builtModel();
    BRYXMetadataFactory factory;
    const std::string region = coded(model, factory);
    struct Parsing {
        BRYXMetadataFactory factory;
        ModelReader reader{factory};
    };
    failAllocations(
        "parsing header metadata", [] { return std::make_unique<Parsing>(); },
        [&](Parsing& parsing) { parsing.reader.readRegion(region); },
        [&](Parsing& parsing, bool isDone) {
            const auto isEqual = [&](const ModelReader& reader) {
                return reader.models.size() == 1 &&
                       mxfutil::firstDifference(*model, *reader.models.front().front()).empty();
            };
            expect(!isDone || isEqual(parsing.reader), "something is lost");
            ModelReader again(parsing.factory); // no parser through which an exception has gone is used again
            again.readRegion(region);
            expect(isEqual(again), "the factory does not make what it made before");
        });
    failAllocations(
        "coding header metadata", [] { return std::make_unique<std::string>(); },
        [&](std::string& octets) { octets = coded(model, factory); },
        [&](std::string& octets, bool isDone) {
            expect(!isDone || octets == region, "something is lost");
            expect(coded(model, factory) == region, "the model is not what it was");
        });

    const Written written(clip);
    using Stream = std::shared_ptr<FaultyStream>;
    const auto makeStream = [] { return std::make_unique<Stream>(std::make_shared<FaultyStream>("")); };
    const auto checkStream = [&](const Stream& stream, bool isDone) {
        expect(!isDone || written.isWhole(stream->octets()), "something is lost");
    };
    failAllocations(
        "writing", makeStream, [&](const Stream& stream) { clip.write(*createBRYXWriter(stream)); }, checkStream);
    failAllocations(
        "writing and verifying", makeStream,
        [&](const Stream& stream) { clip.write(*createVerifyingBRYXWriter(stream)); }, checkStream);
}

} // namespace

int main(int argc, char** argv) {
    triesAll = argc != 2 || std::string_view(argv[1]) != "some";
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // what was tried is of interest above all if the next thing fails
    beforeFailure = [] { std::fprintf(stderr, "while %s\n", name.c_str()); };
    std::set_terminate(failUncaught);
    const GoodClip clip(smallClip());
    failWhileReading(clip.octets);
    failWhileReadingParts(clip);
    failWhileWriting(clip);
    failToAllocate(clip);
    return 0;
}

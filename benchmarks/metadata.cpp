/// What it costs to make a model of header metadata, and to code one, beyond walking the triplets of the same region.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/coding/MXFMetadataModelCoder.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "mxf/metadata/structural/MaterialPackage.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/Sequence.h"
#include "mxf/metadata/structural/SourceClip.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "sdk/BRYXMetadataFactory.h"

namespace {

std::atomic<std::uint64_t> allocations{0};

} // namespace

// Every allocation of the program and of the library goes through these.

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace {

using Model = MXFMetadataModelHandler::Model;

/// A model of two sets and nine more for each package.
std::shared_ptr<Preface> makeModel(std::size_t packages) {
    const auto preface = Preface::create();
    preface->setContentStorage(ContentStorage::create());
    for (std::size_t i = 0; i < packages; ++i) {
        const auto package = MaterialPackage::create();
        package->setName(L"Package " + std::to_wstring(i));
        for (std::uint32_t id = 1; id <= 2; ++id) {
            const auto sequence = Sequence::create();
            for (int part = 0; part < 2; ++part) {
                const auto clip = SourceClip::create();
                clip->setDuration(250);
                sequence->addComponent(clip);
            }
            const auto track = TimelineTrack::create();
            track->setTrackID(id);
            track->setEditRate({25, 1});
            track->setSegment(sequence);
            package->addTrack(track);
        }
        preface->getContentStorage()->addPackage(package);
    }
    return preface;
}

/// Collects the octets of what it is sent, as the region of a file holds them; or only takes them.
class Region : public DullKLVHandler {
public:
    explicit Region(bool keeps) : keeps_(keeps) {}
    std::string octets;
    std::uint64_t sets = 0;

    void berLengthForm(std::uint8_t form) override { form_ = form; }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        std::uint8_t field[9];
        add(key.octets.data(), 16);
        add(field, keeps_ ? klvutil::storeBERLength(field, form_, length) : 0);
        return true;
    }
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm, KLVFieldForm) override {
        ++sets;
        return startFixedLengthPack(key, length);
    }
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override {
        const std::uint8_t field[] = {static_cast<std::uint8_t>(tag >> 8U), static_cast<std::uint8_t>(tag),
                                      static_cast<std::uint8_t>(length >> 8U), static_cast<std::uint8_t>(length)};
        add(field, sizeof field);
        return true;
    }
    bool getValueBuffer(std::uint64_t, std::uint64_t&, std::uint64_t&, std::uint8_t*&) override { return true; }
    void value(const std::uint8_t* data, std::uint64_t size) override { add(data, size); }

private:
    void add(const std::uint8_t* data, std::uint64_t size) {
        if (keeps_) {
            octets.append(data, data + size);
        }
    }

    bool keeps_;
    std::uint8_t form_ = 0;
};

/// Keeps the last model.
class ModelKeeper : public MXFMetadataModelHandler {
public:
    Model last;
    void startMetadata() override {}
    void endMetadata() override {}
    void model(const Model& model) override { last = model; }
};

/// Counts primed sets.
class SetCounter : public MXFMetadataHandler {
public:
    std::uint64_t sets = 0;
    void startMetadata() override {}
    void endMetadata() override {}
    void primer(const Primer&) override {}
    bool handlesSet(const KLVKey&) override { return true; }
    void primedSet(MXFPrimedSet&) override { ++sets; }
};

void read(const std::string& region, KLVHandler& handler) {
    std::istringstream stream(region);
    GenericKLVReader reader;
    reader.setHandler(&handler);
    reader.parse(stream, 0);
}

void code(const std::shared_ptr<Preface>& model, MXFMetadataFactory& factory, KLVHandler& handler) {
    MXFFormatMetadataCoder coder(handler);
    MXFMetadataModelCoder modelCoder(coder, factory);
    modelCoder.startMetadata();
    modelCoder.model({model});
    modelCoder.endMetadata();
}

template <class Work>
void add(const char* name, std::uint64_t sets, Work work) {
    benchmark::RegisterBenchmark(name,
                                 [sets, work](benchmark::State& state) {
                                     const std::uint64_t before = allocations;
                                     for (auto _ : state) {
                                         work();
                                     }
                                     const double done =
                                         static_cast<double>(sets) * static_cast<double>(state.iterations());
                                     state.SetItemsProcessed(static_cast<std::int64_t>(done));
                                     state.counters["allocations/set"] =
                                         static_cast<double>(allocations - before) / done;
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

} // namespace

void registerMetadata() {
    static const auto model = makeModel(1111);
    static BRYXMetadataFactory factory;
    static const std::string region = [] {
        Region octets(true);
        code(model, factory, octets);
        return octets.octets;
    }();
    // What is timed below is the same work: the same sets, and a model that is equal to the first.
    Region walked(false);
    read(region, walked);
    ModelKeeper keeper;
    MXFMetadataModelParser parser(factory, keeper);
    MXFHeaderMetadataParser headerParser(parser);
    read(region, headerParser);
    if (walked.sets != 2 + 9 * 1111 || !mxfutil::firstDifference(*model, *keeper.last.front()).empty()) {
        std::fprintf(stderr, "the model is not read as it was coded\n");
        std::exit(1);
    }
    add("10000-sets/KLVReader", walked.sets, [] {
        Region handler(false);
        read(region, handler);
    });
    add("10000-sets/primed-sets", walked.sets, [] {
        SetCounter counter;
        MXFHeaderMetadataParser primed(counter);
        read(region, primed);
    });
    add("10000-sets/model", walked.sets, [] {
        ModelKeeper models;
        MXFMetadataModelParser modelParser(factory, models);
        MXFHeaderMetadataParser header(modelParser);
        read(region, header);
    });
    add("10000-sets/coding", walked.sets, [] {
        Region octets(true);
        code(model, factory, octets);
    });
}

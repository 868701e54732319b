#include "sdk/BRYXPartialReader.h"

#include <istream>
#include <optional>
#include <type_traits>
#include <utility>

#include "mxf/engines/MXFPartialReader.h"
#include "sdk/internal/BRYXMetadataChain.h"
#include "util/assertion_failure.h"

namespace bryx {

BRYXPartialReader::~BRYXPartialReader() = default;

namespace {

class BRYXPartialReaderImpl final : public BRYXPartialReader,
                                    public std::enable_shared_from_this<BRYXPartialReaderImpl> {
public:
    explicit BRYXPartialReaderImpl(std::shared_ptr<std::istream> stream) : stream_(std::move(stream)) {
        util::require(stream_ != nullptr, "stream is present");
        reader_.setInputStream(stream_.get());
    }

    void setMetadataFactory(std::shared_ptr<MXFMetadataFactory> factory) override {
        slots_.factory = std::move(factory);
    }
    void setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) override {
        slots_.structureHandler = std::move(handler);
    }
    void setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) override {
        slots_.metadataHandler = std::move(handler);
    }
    void setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) override {
        slots_.indexHandler = std::move(handler);
    }
    void setErrorHandler(std::shared_ptr<ErrorHandler> handler) override { slots_.errorHandler = std::move(handler); }

    std::uint64_t skipRunIn() override {
        return run([&](const Slots& /*slots*/) { return reader_.skipRunIn(); });
    }
    bool readPartition(std::uint64_t position) override {
        return run([&](const Slots& slots) {
            std::optional<BRYXMetadataChain> metadata;
            if (slots.metadataHandler != nullptr) {
                metadata.emplace(slots.factory, *slots.metadataHandler, slots.errorHandler);
            }
            reader_.setHeaderMetadataHandler(metadata ? &metadata->handler() : nullptr);
            return reader_.readPartition(position);
        });
    }
    bool readRandomIndexPack() override {
        return run([&](const Slots& /*slots*/) { return reader_.readRandomIndexPack(); });
    }

private:
    /// What the caller has set.
    struct Slots {
        std::shared_ptr<MXFMetadataFactory> factory;
        std::shared_ptr<MXFStructureHandler> structureHandler;
        std::shared_ptr<MXFMetadataHandler> metadataHandler;
        std::shared_ptr<MXFIndexHandler> indexHandler;
        std::shared_ptr<ErrorHandler> errorHandler;
    };

    /// Handlers may set others while @p read runs, and drop the last reference to this.
    template <class Read>
    std::invoke_result_t<Read, const Slots&> run(Read read) {
        const auto self = shared_from_this();
        const Slots slots = slots_;
        reader_.setStructureHandler(slots.structureHandler.get());
        reader_.setIndexHandler(slots.indexHandler.get());
        reader_.setErrorHandler(slots.errorHandler.get());
        return read(slots);
    }

    std::shared_ptr<std::istream> stream_;
    Slots slots_;
    MXFPartialReader reader_;
};

} // namespace

std::shared_ptr<BRYXPartialReader> createBRYXPartialReader(std::shared_ptr<std::istream> stream) {
    return std::make_shared<BRYXPartialReaderImpl>(std::move(stream));
}

} // namespace bryx

#include "sdk/BRYXPartialReader.h"

#include <istream>
#include <optional>
#include <utility>

#include "mxf/engines/MXFPartialReader.h"
#include "sdk/internal/BRYXMetadataChain.h"
#include "util/assertion_failure.h"

BRYXPartialReader::~BRYXPartialReader() = default;

namespace {

class BRYXPartialReaderImpl final : public BRYXPartialReader {
public:
    explicit BRYXPartialReaderImpl(std::shared_ptr<std::istream> stream) : stream_(std::move(stream)) {
        util::require(stream_ != nullptr, "stream is present");
        reader_.setInputStream(stream_.get());
    }

    void setMetadataFactory(std::shared_ptr<MXFMetadataFactory> factory) override { factory_ = std::move(factory); }
    void setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) override {
        structureHandler_ = std::move(handler);
        reader_.setStructureHandler(structureHandler_.get());
    }
    void setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) override {
        metadataHandler_ = std::move(handler);
    }
    void setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) override {
        indexHandler_ = std::move(handler);
        reader_.setIndexHandler(indexHandler_.get());
    }
    void setErrorHandler(std::shared_ptr<ErrorHandler> handler) override {
        errorHandler_ = std::move(handler);
        reader_.setErrorHandler(errorHandler_.get());
    }

    std::uint64_t skipRunIn() override { return reader_.skipRunIn(); }
    bool readPartition(std::uint64_t position) override {
        // The parser of a region that an exception has left is done for, so that each call has a new one.
        std::optional<BRYXMetadataChain> metadata;
        if (metadataHandler_ != nullptr) {
            metadata.emplace(factory_, *metadataHandler_, errorHandler_);
        }
        reader_.setHeaderMetadataHandler(metadata ? &metadata->handler() : nullptr);
        return reader_.readPartition(position);
    }
    bool readRandomIndexPack() override { return reader_.readRandomIndexPack(); }

private:
    std::shared_ptr<std::istream> stream_;
    std::shared_ptr<MXFMetadataFactory> factory_;
    std::shared_ptr<MXFStructureHandler> structureHandler_;
    std::shared_ptr<MXFMetadataHandler> metadataHandler_;
    std::shared_ptr<MXFIndexHandler> indexHandler_;
    std::shared_ptr<ErrorHandler> errorHandler_;
    MXFPartialReader reader_;
};

} // namespace

std::shared_ptr<BRYXPartialReader> createBRYXPartialReader(std::shared_ptr<std::istream> stream) {
    return std::make_shared<BRYXPartialReaderImpl>(std::move(stream));
}

#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <vector>

#include "klv/DullKLVHandler.h"
#include "klv/parse_error.h"
#include "sdk/BRYX.h"

/// What was reported of a file.
struct Report {
    util::uuid id;
    std::streamoff position;

    friend bool operator==(const Report& a, const Report& b) { return a.id == b.id && a.position == b.position; }
};

/// Keeps what is reported.
class Findings final : public ErrorHandler {
public:
    std::vector<Report> reports;
    std::uint64_t messages = 0; ///< a sum of the texts
    int open = 0;               ///< streams that have started and not ended

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override { ++open; }
    void endStream() override { --open; }
    void warning(const util::uuid& id, const std::string& message) override { add(id, message); }
    void error(const util::uuid& id, const std::string& message) override { add(id, message); }
    void fatalError(const util::uuid& id, const std::string& message) override { add(id, message); }

private:
    void add(const util::uuid& id, const std::string& message) {
        messages = messages * 31 + std::hash<std::string>()(message);
        reports.push_back({id, locator_->streampos()});
    }

    const Locator* locator_ = nullptr;
};

/// All handlers of the public reader in one, but for that of findings, which it has. Sums up what it gets.
class Listener final : public DullMXFStructureHandler,
                       public DullMXFMetadataModelHandler,
                       public DullMXFIndexHandler,
                       public DullMXFGCStructureHandler,
                       public DullMXFSDTICPSystemHandler,
                       public MXFPDProxySystemHandler,
                       public DullMXFGCEssenceHandler {
public:
    Findings findings;
    std::uint64_t sum = 0;

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        got(key[14] + pack.thisPartition + headerStart);
    }
    void model(const Model& model) override { got(model.size()); }
    void indexTableSegment(const MXFIndexTableSegment& segment) override { got(segment.indexEntryArray.size()); }
    void startStream(std::uint64_t kagSize) override { got(kagSize); }
    void startContentPackage() override { got(1); }
    void startElement(const KLVKey& key) override { got(key[15]); }
    bool startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        got(length);
        return true;
    }
    void pictureElement(const KLVKey&, const std::uint8_t* data, std::uint64_t size, std::uint64_t) override {
        got(data, size);
    }
    void soundElement(const KLVKey&, const std::uint8_t* data, std::uint64_t size, std::uint64_t) override {
        got(data, size);
    }
    void systemMetadata(const MXFSystemMetadataPack& pack) override { got(pack.continuityCount); }
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& /*items*/) override {
        got(metadata.frameCount);
    }

private:
    void got(std::uint64_t value) { sum = sum * 31 + value; }
    void got(const std::uint8_t* data, std::uint64_t size) {
        got(size);
        for (std::uint64_t i = 0; i < size && data != nullptr; ++i) { // null: too long for the reader's memory
            got(data[i]);
        }
    }
};

/// Has @p reader tell @p listener all that it has to tell.
/// @param factory of the sets; to make one for each reading takes longer than to read a small file
inline void listen(BRYXReader& reader, const std::shared_ptr<Listener>& listener,
                   const std::shared_ptr<MXFMetadataFactory>& factory = nullptr) {
    const std::shared_ptr<ErrorHandler> findings(listener, &listener->findings);
    if (factory != nullptr) {
        factory->setErrorHandler(findings);
    }
    reader.setMetadataFactory(factory);
    reader.setStructureHandler(listener);
    reader.setMetadataHandler(listener);
    reader.setIndexHandler(listener);
    reader.setGCStructureHandler(listener);
    reader.setSDTICPSystemHandler(listener);
    reader.setPDProxySystemHandler(listener);
    reader.setEssenceHandler(listener);
    reader.setGenericStreamHandler(std::make_shared<DullKLVHandler>());
    reader.setErrorHandler(findings);
}

/// Whether @p reader gets to the end of its file.
inline bool readsToEnd(BRYXReader& reader) {
    try {
        reader.read();
        return true;
    } catch (const klvutil::parse_error&) {
        return false;
    }
}

#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "klv/Locator.h"
#include "mxf/essence/DullMXFGCEssenceHandler.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/structure/DullMXFStructureHandler.h"

/// Notes where the elements of content packages begin, in octets from the start of their essence containers.
class PackagePlaces : public MXFGCSplitter, private DullMXFGCStructureHandler, private DullMXFGCEssenceHandler {
public:
    using Package = std::vector<std::uint64_t>;

    PackagePlaces() : MXFGCSplitter(this, nullptr, nullptr) { setEssenceHandler(this); }
    std::map<std::uint32_t, std::vector<Package>> packages; // by body SID
    std::map<std::uint32_t, std::uint64_t> lengths;         // of all elements

    class Partitions : public DullMXFStructureHandler {
    public:
        MXFPartitionPack pack;
        std::uint64_t bodyStart = 0;
        void startPartition(const KLVKey& /*key*/, const MXFPartitionPack& started,
                            std::uint64_t headerStart) override {
            pack = started;
            bodyStart = headerStart + pack.headerByteCount + pack.indexByteCount;
        }
    } partitions;

    void setLocator(const Locator& locator) override { locator_ = &locator; }

private:
    void startContentPackage() override { packages[partitions.pack.bodySID].emplace_back(); }
    void startElement(const KLVKey& /*key*/) override {
        const auto position = static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
        packages[partitions.pack.bodySID].back().push_back(partitions.pack.bodyOffset + position -
                                                           partitions.bodyStart);
    }

    bool startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        lengths[partitions.pack.bodySID] += length;
        return false;
    }

    const Locator* locator_ = nullptr;
};

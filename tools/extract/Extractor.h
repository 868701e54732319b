#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "extract/Output.h"
#include "extract/Selection.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "shared/ErrorPrinter.h"
#include "shared/ProgressBar.h"

/// Takes elements in chunks, in a buffer of its own, so that memory does not depend on how long they are.
class Extractor final : public DullMXFStructureHandler, public MXFGCEssenceHandler, public MXFGCChunkedEssenceHandler {
public:
    Extractor(const Selection& selection, Output& out, ProgressBar& progress, const ErrorPrinter& positions);

    std::uint64_t elements() const { return elements_; }
    /// Whether elements of another essence container are meant as well, and were left out.
    const std::optional<std::uint32_t>& otherContainer() const { return otherContainer_; }

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override;
    bool startChunkedElement(const KLVKey& key, std::uint64_t length, std::uint64_t offset, std::uint64_t& size,
                             std::uint8_t*& buffer) override;
    void pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                         std::uint64_t offset) override;
    void setLengthForm(std::uint8_t form) override;

private:
    const Selection& selection_;
    Output& out_;
    ProgressBar& progress_;
    const ErrorPrinter& positions_;
    std::vector<std::uint8_t> buffer_;
    std::uint64_t elements_ = 0;
    std::uint32_t bodySID_ = 0; ///< of the partition that is read
    std::optional<std::uint32_t> container_;
    std::optional<std::uint32_t> otherContainer_;
};

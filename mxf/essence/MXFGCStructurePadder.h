#pragma once

#include <cstdint>

#include "klv/KLVFiller.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "util/Api.h"

namespace bryx {

/// Keeps what is written to a Generic Container on the KLV alignment grid: fill comes after what is padded or aligned.
/// A KAG size of 0 or 1 asks for none.
class BRYX_API MXFGCStructurePadder : public DullMXFGCStructureHandler {
public:
    /// @param receiver of the fill, the same that the elements are written to
    /// @param locator tells where in the stream the next octet goes
    /// @param grid of the partition
    /// All outlive the padder, and are not owned.
    MXFGCStructurePadder(KLVHandler& receiver, const Locator& locator, const KLVGrid& grid);
    ~MXFGCStructurePadder() override;

    void startStream(std::uint64_t kagSize) override;
    /// Requires "not in filled item".
    void endStream() override;
    void startPad(std::uint64_t extraSize) override;
    void endPad() override;
    /// Requires "alignment is multiple of KAG size", unless that is 0.
    void startAlign(std::uint64_t alignment) override;
    void endAlign() override;

private:
    void start(std::uint64_t alignment, std::uint64_t extraSize);

    std::uint64_t kagSize_ = 1;
    const Locator& locator_;
    KLVFiller filler_;
};

} // namespace bryx

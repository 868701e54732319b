#pragma once

#include <cstdint>
#include <vector>

#include "mxf/structure/MXFPrimedSetParser.h"
#include "mxf/structure/MXFPrimer.h"

namespace bryx {

class MXFMetadataHandler;

/// Turns the KLV triplets of a header metadata region into a primer and primed sets (ST 377-1 §9). It is the header
/// metadata handler of an MXFReader: each region is a stream of its own to it.
///
/// Each region has its own primer, which is checked against that of the region before. A tag that the primer lacks is
/// reported as "tag missing in primer"; a static one is decoded all the same, with any other the item is skipped.
/// A parser serves one file.
///
/// Everything that is neither the primer pack nor a local set is forwarded to the next handler, if one is set.
class BRYX_API MXFHeaderMetadataParser : public MXFPrimedSetParser {
public:
    /// @param handler not owned
    explicit MXFHeaderMetadataParser(MXFMetadataHandler& handler) : handler_(handler) {}
    ~MXFHeaderMetadataParser() override;

    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

private:
    const MXFPrimer& primer() const override { return primer_; }
    bool wantsSet(const KLVKey& key) override;
    bool allowsBERLengths(const KLVKey& key) const override;
    const KLVKey* unknownTag(std::uint16_t tag) override;
    void primedSet(MXFPrimedSet& set) override;

    MXFMetadataHandler& handler_;
    bool wanted_ = false; ///< the set being read
    MXFPrimer primer_;
    MXFPrimer previous_; ///< of the region before
    bool hasPrevious_ = false;
    bool primerSeen_ = false;
    bool inPrimerPack_ = false;
    std::vector<std::uint8_t> octets_;
};

} // namespace bryx

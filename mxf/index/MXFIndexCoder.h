#pragma once

#include <cstdint>

#include "klv/KLVHandler.h"
#include "mxf/index/MXFIndexHandler.h"
#include "util/Api.h"

namespace bryx {

/// Codes index table segments as local sets (ST 377-1), the reverse of MXFIndexParser.
///
/// The properties that must be there are written always, and with them the edit unit byte count, the index SID and the
/// slice count; all others if they are present, not empty or not 0. A segment without instance UID gets a fresh one.
/// The stream that the coder sends its triplets to is started and ended by others.
class BRYX_API MXFIndexCoder : public MXFIndexHandler {
public:
    /// @param next not owned
    explicit MXFIndexCoder(KLVHandler& next);
    ~MXFIndexCoder() override;
    MXFIndexCoder(const MXFIndexCoder&) = delete;
    MXFIndexCoder& operator=(const MXFIndexCoder&) = delete;

    /// The BER form of the lengths of segments: 0x83 unless set. A longer one gets 0x87. Requires "valid BER length form".
    void setBERLengthForm(std::uint8_t form);

    /// Requires "before start".
    void startIndex() override;
    void endIndex() override;

    /// Requires "before index table segment", "valid sliceOffsets", "valid posTables", and "property fits item length":
    /// that each array has 65,535 octets at most, which is mxfutil::maxIndexEntries() of them.
    void indexTableSegment(const MXFIndexTableSegment& segment) override;

private:
    KLVHandler& next_;
    std::uint8_t form_ = 0x83;
    bool started_ = false;
};

namespace mxfutil {

/// The most index entries that fit one segment.
constexpr std::size_t maxIndexEntries(std::uint8_t sliceCount, std::uint8_t posTableCount) noexcept {
    return (65535 - 8) / indexEntrySize(sliceCount, posTableCount);
}

} // namespace mxfutil

} // namespace bryx

#pragma once

#include <cstdint>
#include <memory>

#include "klv/KLVFilter.h"
#include "mxf/structure/MXFStructureHandler.h"

namespace bryx {

class ErrorHandler;
class MXFPartitionTracker;

/// Tells the partitions and the random index of the KLV stream that passes to a structure handler, and forwards every
/// event: for handlers that want to know, beside the triplets themselves, which partition they are in.
///
/// The structure handler is called as MXFStructureHandler describes, each time before the event that the call follows
/// from is forwarded. Unlike MXFSplitter the filter neither takes a partition apart nor checks the layout of the file.
/// Packs are looked for among the outermost triplets only. A pack's value is collected first, and passed on as the next
/// handler asks for it before the end event of the pack. Header starts count from position 0 of the stream.
///
/// It takes one stream after the other, also after one that an exception has ended. If the structure handler is an
/// MXFStructureValidator, it gets the locator of getLocator at the start of each, and learns of a requested stop.
///
/// A pack that cannot be decoded is reported as "invalid partition pack" or "invalid random index pack" and passed
/// over.
class BRYX_API MXFPartitionFilter : public DullKLVFilter {
public:
    /// @param structureHandler told of partitions and random index; not owned. Requires "structure handler is present".
    explicit MXFPartitionFilter(MXFStructureHandler* structureHandler);
    ~MXFPartitionFilter() override;
    MXFPartitionFilter(const MXFPartitionFilter&) = delete;
    MXFPartitionFilter& operator=(const MXFPartitionFilter&) = delete;

    /// Where findings go; not owned. Without one, nothing is reported. At the start of a stream it gets the locator of
    /// getLocator.
    void setErrorHandler(ErrorHandler* errorHandler);

    /// Shows what the stream's own locator shows as an event passes, and the pack while its partition is told of: for a
    /// structure handler that wants positions, such as MXFStructureValidator. Between events, and when the stream has
    /// ended in whatever way, the last position stays. Valid as long as the filter is.
    const Locator& getLocator() const;

    void setLocator(const Locator& locator) override;
    /// Requires "has accurate lengths" and "has locator".
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;

    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;
    bool startLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    void endUniversalSet(const KLVKey& key) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override;
    void endVariableLengthPack(const KLVKey& key) override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;
    void endWrapper(const KLVKey& key) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

private:
    void locate();
    void enter();
    void leave();
    void openPending();

    std::unique_ptr<MXFPartitionTracker> tracker_;
    const Locator* locator_ = nullptr;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    unsigned depth_ = 0; ///< triplets that are open
    bool nextWantsPack_ = false;
};

} // namespace bryx

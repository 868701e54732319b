#pragma once

#include <cstdint>
#include <vector>

#include "klv/KLVFilter.h"
#include "mxf/structure/MXFStructureHandler.h"
#include "mxf/structure/MXFTripletPosition.h"

class ErrorHandler;

/// Tells the partitions and the random index of the KLV stream that passes to a structure handler, and forwards every
/// event: for handlers that want to know, beside the triplets themselves, which partition they are in.
///
/// Unlike MXFSplitter it neither takes a partition apart nor checks the layout of the file. Packs are looked for among
/// the outermost triplets only. The structure handler is called in the end event of a pack, so that the locator shows
/// the pack, and before that event is forwarded; the header start it gets is the stream position of the first octet
/// after the pack, where fill may follow. A pack's value is collected first and then passed on, as the next handler
/// asks for it.
///
/// A pack that cannot be decoded is reported as "invalid partition pack" or "invalid random index pack" and passed
/// over.
class BRYX_API MXFPartitionFilter : public DullKLVFilter {
public:
    /// @param structureHandler told of partitions and random index; not owned. Requires "structure handler is present".
    explicit MXFPartitionFilter(MXFStructureHandler* structureHandler);
    ~MXFPartitionFilter() override;

    /// Where findings go; not owned. Without one, nothing is reported.
    void setErrorHandler(ErrorHandler* errorHandler) { errorHandler_ = errorHandler; }

    void setLocator(const Locator& locator) override;
    /// Requires "has accurate lengths" and "has locator".
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;

    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;
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
    enum class Pack { None, Partition, RandomIndex };

    template <class Start>
    bool enter(Start forward);
    template <class End>
    void leave(End forward);
    void partitionPack(const KLVKey& key);
    void randomIndexPack();
    void closePartition();

    MXFStructureHandler& structureHandler_;
    ErrorHandler* errorHandler_ = nullptr;
    const Locator* locator_ = nullptr;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    unsigned depth_ = 0; ///< triplets that are open
    Pack collecting_ = Pack::None;
    bool nextWantsPack_ = false;
    MXFTripletPosition packPosition_;
    std::vector<std::uint8_t> octets_;
    bool partitionOpen_ = false;
    KLVKey partitionKey_;
};

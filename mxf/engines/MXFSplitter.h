#pragma once

#include <cstdint>
#include <memory>

#include "klv/DullKLVHandler.h"
#include "klv/Finding.h"
#include "klv/FindingReporter.h"
#include "klv/KLVHandler.h"
#include "klv/KLVIndividualItemHandler.h"
#include "klv/Locator.h"
#include "mxf/structure/MXFTripletPosition.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class MXFPartitionTracker;
class MXFStructureHandler;
class MXFStructureValidator;

/// Follows the partition layout of an MXF file (ST 377-1 §7) and hands each region to the handler that it is for.
///
///     pack  fill  | header metadata  | index           | body                          pack ...
///                 | headerByteCount  | indexByteCount  | up to the next pack or the end
///
/// Each header metadata region, each index region and each body is a stream of its own to its handler: setLocator,
/// startStream and the length form in force come with its first triplet, endStream at its end. A region of no octets
/// is not a stream. The body of a generic stream partition (ST 410) has a handler of its own, or is skipped.
///
/// Where a triplet cannot stand, or a region does not end with a triplet, there is an error with the key; if the error
/// handler returns, or there is none, klvutil::parse_error follows with the same text. When a pack is met inside a
/// header metadata or index region, the error is reported, the partition ends and reading goes on with the pack.
///
/// At the end of a stream, a region that has not come to its end is an error as well. Without an error handler it is
/// thrown when all handlers have been told of the end.
///
/// Individual items in a body come to its handler whole if it is a KLVIndividualItemHandler and they come so to the
/// splitter, whose events for them are final therefore.
///
/// The splitter is driven by a KLVReader and can take one stream after the other. When an exception has ended a stream,
/// make a new splitter.
class BRYX_API MXFSplitter : public KLVHandler, public KLVIndividualItemHandler {
public:
    /// The handlers are not owned. Requires each to be present: use DullMXFStructureHandler and DullKLVHandler for
    /// what is not wanted.
    /// @param validate whether an MXFStructureValidator stands in front of the structure handler
    MXFSplitter(MXFStructureHandler* structureHandler, KLVHandler* headerMetadataHandler, KLVHandler* indexHandler,
                KLVHandler* bodyHandler, bool validate);
    ~MXFSplitter() override;
    MXFSplitter(const MXFSplitter&) = delete;
    MXFSplitter& operator=(const MXFSplitter&) = delete;

    void setLocator(const Locator& locator) override;
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) final;
    void endIndividualItem(const KLVKey& key) final;
    bool startLabel(const KLVKey& key) override;
    void endLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    void endUniversalSet(const KLVKey& key) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override;
    void endLocalItem(std::uint32_t tag) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override;
    void endVariableLengthPack(const KLVKey& key) override;
    bool startVariableLengthPackItem(std::uint64_t length) override;
    void endVariableLengthPackItem() override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;
    void endWrapper(const KLVKey& key) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size, std::uint8_t*& buffer) final;
    void value(const std::uint8_t* data, std::uint64_t size) final;
    void individualItem(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) final;

    /// Where findings go, those of the validator too; not owned. At the start of a stream it gets a locator of the
    /// splitter's, which shows the pack while its partition is checked.
    virtual void setErrorHandler(ErrorHandler* errorHandler);

    /// Gets the bodies of generic stream partitions; not owned. Null, as it is unless set, to skip them. Requires "before
    /// start".
    void setGenericStreamHandler(KLVHandler* handler);

    /// Tells of a run-in that precedes the stream. Requires "before start".
    virtual void runIn(std::uint64_t length);

    /// The stream position at which the file begins: what header starts count from. Without this call it is where the
    /// stream of events starts, less the run-in. Requires "before start"; holds for the next stream.
    void setBase(std::uint64_t base);

private:
    enum class State {
        BeforeStart,
        InStream,
        InPartitionPack,
        AfterPartitionPack,
        InHeaderMetadata,
        InIndex,
        InBody,
        InRandomIndexPack,
        AfterRandomIndexPack
    };

    const Locator& locator() const;
    void enter(State state);
    KLVHandler& delegate(const char* expected) const;
    KLVHandler& startedDelegate();
    void startDelegate();
    void endDelegate(bool stopped);

    template <class Start>
    bool startElement(const KLVKey& key, std::uint64_t length, const klvutil::Finding& unexpected, Start forward);
    template <class End>
    void endElement(const KLVKey& key, const char* expected, End forward);
    void enterRegion(const KLVKey& key, const MXFTripletPosition& position, const klvutil::Finding& unexpected);
    void checkRegion(std::uint64_t end, const KLVKey* key);

    bool startPack(const KLVKey& key, std::uint64_t length);
    void openPartition();
    void endPartition(bool stopped);

    [[noreturn]] void fail(const klvutil::Finding& finding, const KLVKey* key) const;

    std::unique_ptr<MXFPartitionTracker> tracker_;
    std::unique_ptr<MXFStructureValidator> validator_;
    KLVHandler* headerMetadataHandler_;
    KLVHandler* indexHandler_;
    KLVHandler* bodyHandler_;
    KLVIndividualItemHandler* bodyItemHandler_; ///< the same, if it takes items whole
    KLVHandler* genericStreamHandler_ = nullptr;
    DullKLVHandler skippedBody_;
    ErrorHandler* errorHandler_ = nullptr;
    const Locator* locator_ = nullptr;

    State state_ = State::BeforeStart;
    KLVHandler* delegate_ = nullptr; ///< the handler of the region that the state is of; null where there is none
    KLVIndividualItemHandler* itemDelegate_ = nullptr; ///< the same in a body, if it takes items whole
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    unsigned depth_ = 0; ///< triplets that are open
    bool delegateStarted_ = false;
    bool previousWasFill_ = false;
    FindingReporter adjacentFill_; ///< by position

    std::uint64_t runIn_ = 0;
    std::uint64_t base_ = 0;
    bool baseGiven_ = false;

    MXFTripletPosition triplet_; ///< of the outermost triplet, but in a body
    bool genericStream_ = false;
    std::uint64_t headerEnd_ = 0;
    std::uint64_t indexEnd_ = 0;
};

} // namespace bryx

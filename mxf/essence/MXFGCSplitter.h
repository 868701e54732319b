#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "klv/DullKLVHandler.h"
#include "klv/Finding.h"
#include "klv/FindingReporter.h"
#include "klv/KLVIndividualItemHandler.h"
#include "mxf/essence/MXFGCKeys.h"
#include "mxf/essence/MXFGCSystemHandler.h"
#include "mxf/essence/detail/MXFGCKnownKinds.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class MXFGCChunkedEssenceHandler;
class MXFGCEssenceHandler;
class MXFGCStructureHandler;

/// Cuts the body of a partition that holds a Generic Container (ST 379-1) into content packages and elements. It is the
/// body handler of an MXFReader: the body of each partition is a stream of its own to it.
///
/// A content package begins whenever the key of the very first element comes round again. Fill is passed over. What is
/// no element of a Generic Container is reported, once for each key, skipped, and touches nothing else.
///
/// Essence goes straight into the buffers of the essence handler, if it gives any. An element without one is delivered
/// where the reader has it, if that has it whole; else it is held in memory of the splitter, up to 16,777,215 octets. A
/// longer one is reported as "unsupported GC essence element length" and skipped, unless the handler takes chunks.
///
/// Derive from it to say what keys mean. To change the events of essence, put a KLVFilter in front: they are final, since
/// they come one by one or, of elements in memory, together.
class BRYX_API MXFGCSplitter : public DullKLVHandler, public KLVIndividualItemHandler {
public:
    MXFGCSplitter();
    /// None of the handlers is owned; each may be null.
    MXFGCSplitter(MXFGCStructureHandler* structureHandler, MXFGCSystemHandler* systemHandler,
                  MXFGCEssenceHandler* essenceHandler);
    ~MXFGCSplitter() override;
    MXFGCSplitter(const MXFGCSplitter&) = delete;
    MXFGCSplitter& operator=(const MXFGCSplitter&) = delete;

    void setStructureHandler(MXFGCStructureHandler* handler) { structureHandler_ = handler; }
    /// Requires "structure handler is present".
    MXFGCStructureHandler& getStructureHandler() const;
    void setSystemHandler(MXFGCSystemHandler* handler) { systemHandler_ = handler; }
    /// Requires "system handler is present".
    MXFGCSystemHandler& getSystemHandler() const;
    /// Finds out, too, whether the handler is an MXFGCChunkedEssenceHandler.
    void setEssenceHandler(MXFGCEssenceHandler* handler);
    /// Requires "essence handler is present".
    MXFGCEssenceHandler& getEssenceHandler() const;
    void setErrorHandler(ErrorHandler* handler) { errorHandler_ = handler; }

    void setLocator(const Locator& locator) override;
    /// Requires "has accurate lengths", and "before start", unless setLocator has come since the stream before began: then
    /// that is over, ended by an exception.
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override { form_ = form; }
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) final;
    void endIndividualItem(const KLVKey& key) final;
    bool startLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override;
    void endVariableLengthPack(const KLVKey& key) override;
    bool startVariableLengthPackItem(std::uint64_t length) override;
    /// Requires of the essence handler's buffer "valid length": that the element fits it.
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size, std::uint8_t*& buffer) final;
    void value(const std::uint8_t* data, std::uint64_t size) final;
    void individualItem(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) final;

protected:
    // What keys mean: as ST 379-1 says, unless a derived class knows better. What is said of a key holds for the stream: it
    // need not be asked again.

    virtual bool isSystemElement(const KLVKey& key) const;
    virtual bool isEssenceElement(const KLVKey& key) const;
    virtual bool isPictureElement(const KLVKey& key) const;
    virtual bool isSoundElement(const KLVKey& key) const;
    virtual bool isDataElement(const KLVKey& key) const;
    virtual bool isCompoundElement(const KLVKey& key) const;

    /// Whether essence of a second kind may stand in a content package without system item. Here it may not, and is
    /// reported once.
    virtual bool allowsSecondKind() const;

private:
    enum class State : std::uint8_t { GCBeforeStart, GCStarted, GCInSystemItem, GCEssenceOnly, GCEssenceAfterSystem };
    /// How the value of the element being read is delivered.
    enum class Delivery : std::uint8_t { None, System, FirstChunk, Chunks, CallersBuffer, OwnBuffer, InPlace };

    MXFGCEssenceKind classify(const KLVKey& key) const;
    void startElement(const KLVKey& key);
    void tellOfElement();
    void passLengthForm();
    void endElement(const KLVKey& key);
    bool startSystemElement(const KLVKey& key, std::uint64_t length);
    template <class Deliver>
    void endSystemElement(const KLVKey& key, Deliver deliver);
    bool startItem(std::uint32_t tag);
    const MXFGCItems& items();
    void enterEssence();
    void deliver(const std::uint8_t* data, std::uint64_t size, std::uint64_t offset);
    bool startEssence(const KLVKey& key, std::uint64_t length);
    void finishElement(const KLVKey& key);
    Delivery wholeDelivery() const;
    bool asksForChunk(std::uint64_t length, std::uint64_t offset);
    bool isRunning() const noexcept { return state_ != State::GCBeforeStart; }

    MXFGCStructureHandler* structureHandler_ = nullptr;
    MXFGCSystemHandler* systemHandler_ = nullptr;
    MXFGCEssenceHandler* essenceHandler_ = nullptr;
    MXFGCChunkedEssenceHandler* chunkedHandler_ = nullptr; ///< the same
    ErrorHandler* errorHandler_ = nullptr;

    State state_ = State::GCBeforeStart;
    bool isLocated_ = false; ///< setLocator has come since the last stream began
    KLVKey firstKey_;
    bool packageOpen_ = false;                           ///< an element has come
    MXFGCEssenceKind onlyKind_ = MXFGCEssenceKind::None; ///< of the elements so far, where there is no system item
    std::uint8_t form_;
    std::uint8_t passedForm_;
    FindingReporter invalidKeys_;

    // The element being read.
    KLVKey key_;
    bool inElement_ = false;
    MXFGCEssenceKind kind_ = MXFGCEssenceKind::None;
    mxfutil::detail::MXFGCKnownKinds knownKinds_;
    Delivery delivery_ = Delivery::None;
    std::uint8_t* callersBuffer_ = nullptr;
    std::uint64_t callersSize_ = 0;
    std::uint8_t* chunkBuffer_ = nullptr; ///< of the chunk that the handler has asked for
    std::uint64_t chunkSize_ = 0;
    std::uint64_t length_ = 0;
    std::uint64_t filled_ = 0;      ///< octets of the value that have come
    std::vector<std::uint8_t> own_; ///< the value, where nobody else holds it; kept for its memory
    struct ItemPlace {
        std::uint32_t tag;
        std::size_t start;
    };
    std::vector<ItemPlace> itemPlaces_;
    MXFGCItems items_;
};

} // namespace bryx

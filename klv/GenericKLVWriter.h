#pragma once

#include <cstdint>
#include <iosfwd>

#include "klv/KLVHandler.h"
#include "util/Api.h"

namespace bryx {

/// Writes the events of a KLV stream (ST 336) to an output stream, from where that stands. Wants every value.
///
/// Every event requires "has started", and "successful write()": that the stream has taken all octets so far, which is
/// told so whatever the stream's exception mask. After a failure nothing more is written. The stream may hold octets back until it is flushed, which endStream does.
class BRYX_API GenericKLVWriter : public KLVHandler {
public:
    /// @param stream outlives the writer
    explicit GenericKLVWriter(std::ostream& stream) : stream_(stream) {}
    ~GenericKLVWriter() override;
    GenericKLVWriter(const GenericKLVWriter&) = delete;
    GenericKLVWriter& operator=(const GenericKLVWriter&) = delete;

    void setLocator(const Locator& locator) override;

    /// Requires "has not started", and "unbuffered output is possible": accurate lengths.
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;

    /// Requires "valid form".
    void berLengthForm(std::uint8_t form) override;

    // Start events write the key and the length in the form in force, and require "enough octets". Of groups, packs and
    // what is in them they require "unbuffered output is possible" as well: that the length is known.

    /// If @p length is klvutil::unknownLength, 0 is written, and the length that it turns out to be when the item ends.
    /// Requires then "unbuffered output is possible": that the stream can seek.
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;
    bool startLabel(const KLVKey& key) override;
    void endLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    void endUniversalSet(const KLVKey& key) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    /// Requires "correct local item type and length": a tag and a length that the forms of the set can hold; then, as
    /// klvutil::writeField() does, "enough octets", so that a field of four octets takes the value 0 alone.
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

    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    /// Requires "valid streamsize".
    void value(const std::uint8_t* data, std::uint64_t size) override;

private:
    void requireStarted() const;
    bool startTriplet(const KLVKey& key, std::uint64_t length);
    void requireItemLength(std::uint64_t length) const;
    void writeItemLength(std::uint64_t length);
    void write(const std::uint8_t* octets, std::uint64_t size);

    std::ostream& stream_;
    bool started_ = false;
    std::uint8_t form_ = 0x83;
    KLVFieldForm tagForm_ = KLVFieldForm::TwoOctets;
    KLVFieldForm itemLengthForm_ = KLVFieldForm::TwoOctets;

    // The open item of unknown length.
    bool isLengthUnknown_ = false;
    std::streamoff lengthPosition_ = 0;
    std::uint64_t valueSize_ = 0;
};

} // namespace bryx

#pragma once

#include <cstdint>

#include "klv/KLVCoding.h"
#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

class Locator;

/// Receives the events of a KLV stream (ST 336), and sends them: whoever writes a KLV stream makes the same calls in
/// the same order as a reader of that stream would.
///
/// A stream is setLocator, startStream, then for each triplet a start event, its content when the start event
/// returned true, and the end event of the same kind; at last endStream, unless an exception ends the stream. The
/// content of an individual item, fixed-length pack or wrapper is its value; that of a universal set is nested
/// triplets; that of a local set or variable-length pack is its items, each with a value. Labels have none.
///
/// Keys are passed by reference and are valid during the call only. Lengths are those of the value, in octets.
/// Handlers are used by one thread at a time.
class BRYX_API KLVHandler {
public:
    virtual ~KLVHandler();

    /// The source of positions for this stream, valid until endStream, or until an exception ends the stream.
    virtual void setLocator(const Locator& locator) = 0;

    /// @param accurateLengths that the lengths of the events to come are those of the stream; a reader passes true
    virtual void startStream(bool accurateLengths) = 0;

    /// @param stopped that reading was stopped by request before the end
    virtual void endStream(bool stopped) = 0;

    /// The BER form of the lengths that follow: 1 for the short form, 0x81 to 0x88 for a long one. Called before the
    /// first such length and whenever the form changes.
    virtual void berLengthForm(std::uint8_t form) = 0;

    /// A triplet with a single value.
    virtual bool startIndividualItem(const KLVKey& key, std::uint64_t length) = 0;
    virtual void endIndividualItem(const KLVKey& key) = 0;

    /// A label standing as a triplet, without length or value; the result is not acted on.
    virtual bool startLabel(const KLVKey& key) = 0;
    virtual void endLabel(const KLVKey& key) = 0;

    /// A set of triplets, which come with events of their own.
    virtual bool startUniversalSet(const KLVKey& key, std::uint64_t length) = 0;
    virtual void endUniversalSet(const KLVKey& key) = 0;

    /// A set of items, each with a local tag. The forms are those of the tags and of the lengths in the set.
    virtual bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                               KLVFieldForm lengthForm) = 0;
    virtual void endLocalSet(const KLVKey& key) = 0;
    /// An item of a local set.
    virtual bool startLocalItem(std::uint32_t tag, std::uint64_t length) = 0;
    virtual void endLocalItem(std::uint32_t tag) = 0;

    /// A pack whose fields have no lengths of their own: the content is one value.
    virtual bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) = 0;
    virtual void endFixedLengthPack(const KLVKey& key) = 0;

    /// A pack of items that have lengths, in the form given, but no tags.
    virtual bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) = 0;
    virtual void endVariableLengthPack(const KLVKey& key) = 0;
    /// An item of a variable-length pack.
    virtual bool startVariableLengthPackItem(std::uint64_t length) = 0;
    virtual void endVariableLengthPackItem() = 0;

    /// A triplet around others, which are not parsed: the content is one value.
    virtual bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) = 0;
    virtual void endWrapper(const KLVKey& key) = 0;

    /// Asks which octets of a value are wanted next, and where to put them. Called while octets of the value are left.
    ///
    /// @param length of the whole value, as the data claims: it may be far more than there is, so size no buffer by it
    ///     without a limit
    /// @param[in,out] offset of the chunk in the value; preset to the first octet not passed yet, and not to be less.
    ///     Octets before it are skipped.
    /// @param[in,out] size of the chunk; preset to all that is left, and to be at least 1 and at most what is left
    /// @param[out] buffer preset to null. If set, it has room for @p size octets: they are read straight into it and
    ///     passed to value() in one call, during which it is still needed. If left null, the sender passes the octets in
    ///     pieces of its own choosing.
    /// @return false to skip the rest of the value
    virtual bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                std::uint8_t*& buffer) = 0;

    /// The next octets of a wanted chunk. @p data is the handler's buffer, or valid during the call only.
    virtual void value(const std::uint8_t* data, std::uint64_t size) = 0;
};

} // namespace bryx

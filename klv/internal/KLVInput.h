#pragma once

#include <cstdint>
#include <cstring>
#include <istream>
#include <limits>
#include <memory>

#include "klv/Finding.h"
#include "klv/KLVKey.h"
#include "klv/internal/ReadAhead.h"
#include "klv/internal/StreamAccess.h"
#include "util/byte_order.h"

namespace bryx {

/// The octets of a stream, counted as they are consumed. Every fault of the stream leaves as klvutil::parse_error with
/// the position of the innermost triplet, whatever the stream buffer throws and whatever the stream's exception mask.
class KLVInput {
public:
    static constexpr std::streamoff maxPosition = std::numeric_limits<std::streamoff>::max();
    static constexpr std::size_t pieceSize = ReadAhead::largestGathered;

    /// Requires that the stream is good, else throws parse_error "input stream is not good()".
    KLVInput(std::istream& stream, std::streamoff start);

    /// Ends reading as settle() does, but has the stream's state tell if that fails.
    ~KLVInput();
    KLVInput(const KLVInput&) = delete;
    KLVInput& operator=(const KLVInput&) = delete;

    bool seekable() const noexcept { return ahead_.canSeek(); }

    /// The position of the octet that comes next.
    std::streamoff position() const noexcept { return ahead_.position(); }

    /// The position that a locator shows; the reader sets it.
    const std::streampos& located() const noexcept { return located_; }

    /// The position that faults carry.
    std::streamoff triplet() const noexcept { return triplet_; }

    /// From now on faults carry @p position, that of the first octet of a triplet.
    void beginTriplet(std::streamoff position) noexcept { triplet_ = position; }

    /// From now on the locator shows that position too: the start event of the triplet comes.
    void showTriplet() noexcept { located_ = triplet_; }

    /// Whether the stream is at its end; its end-of-file state is set then.
    bool atEnd() { return ahead_.peek(1) == nullptr && isStreamAtEnd(); }

    bool good() const { return stream_.good(); }

    KLVKey readKey() {
        KLVKey key;
        if (const std::uint8_t* const held = ahead_.take(key.octets.size())) {
            std::memcpy(key.octets.data(), held, key.octets.size());
        } else {
            read(key.octets.data(), key.octets.size());
        }
        return key;
    }

    /// Reads a big-endian number of 1 to 8 octets.
    std::uint64_t readNumber(unsigned octets) {
        if (const std::uint8_t* const held = ahead_.peek(largestNumber)) {
            ahead_.pass(octets);
            return util::loadLeadingOctets(held, octets);
        }
        return copyNumber(octets);
    }

    void read(std::uint8_t* to, std::uint64_t size);

    /// Where the octets that come next are until more is read, if @p size of them, at most pieceSize, have been read ahead:
    /// else null, as for a stream that cannot seek. What such a stream holds ready is its own, and may change when a handler
    /// has it read on.
    const std::uint8_t* peekAhead(std::uint64_t size) const { return size <= pieceSize ? ahead_.peek(size) : nullptr; }

    /// Passes over @p size of the octets that peekAhead() has shown.
    void passAhead(std::uint64_t size) { ahead_.pass(size); }

    /// Reads 1 to pieceSize octets and returns where they are until the next call.
    const std::uint8_t* readPiece(std::uint64_t size) {
        const std::uint8_t* const held = peekAhead(size);
        if (held == nullptr) {
            return gatherPiece(size);
        }
        passAhead(size);
        return held;
    }

    /// Passes over @p size octets: small numbers are read through, large ones sought.
    void skip(std::uint64_t size);

    /// Ends reading: a stream that can seek then stands at position(). It is read ahead until then.
    void settle();

    [[noreturn]] void fail(const klvutil::Finding& finding) const;

private:
    static constexpr unsigned largestNumber = sizeof(std::uint64_t);

    KLVInput(std::istream& stream, std::streamoff start, const klvutil::StreamExtent& extent);
    bool isStreamAtEnd();
    std::uint64_t copyNumber(unsigned octets);
    const std::uint8_t* gatherPiece(std::uint64_t size);
    std::uint64_t readSome(std::uint8_t* to, std::uint64_t size);
    std::uint8_t* piece();
    bool isSettled();

    std::istream& stream_;
    klvutil::StreamExceptionsOff exceptionsOff_;
    ReadAhead ahead_;
    std::streamoff end_; ///< the end of a stream that can seek, when last asked
    std::streamoff triplet_;
    std::streampos located_;
    std::unique_ptr<std::uint8_t[]> piece_;
};

} // namespace bryx

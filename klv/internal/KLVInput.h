#pragma once

#include <cstdint>
#include <istream>
#include <limits>
#include <memory>

#include "klv/Finding.h"
#include "klv/KLVKey.h"
#include "klv/internal/ReadAhead.h"
#include "klv/internal/StreamAccess.h"

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

    bool seekable() const noexcept { return end_ >= 0; }

    /// The position of the octet that comes next.
    std::streamoff position() const noexcept { return position_; }

    /// The position that a locator shows; the reader sets it.
    const std::streampos& located() const noexcept { return located_; }

    /// The position that faults carry.
    std::streamoff triplet() const noexcept { return triplet_; }

    /// From now on faults carry @p position, that of the first octet of a triplet.
    void beginTriplet(std::streamoff position) noexcept { triplet_ = position; }

    /// From now on the locator shows that position too: the start event of the triplet comes.
    void showTriplet() noexcept { located_ = triplet_; }

    /// Whether the stream is at its end; its end-of-file state is set then.
    bool atEnd();

    bool good() const { return stream_.good(); }

    KLVKey readKey();
    /// Reads a big-endian number of at most 8 octets.
    std::uint64_t readNumber(unsigned octets);
    std::uint8_t readOctet();
    void read(std::uint8_t* to, std::uint64_t size);

    /// Reads at most pieceSize octets and returns where they are until the next call. Nobody else changes them until then.
    const std::uint8_t* readPiece(std::uint64_t size);

    /// Passes over @p size octets: small numbers are read through, large ones sought.
    void skip(std::uint64_t size);

    /// Ends reading: a stream that can seek then stands at position(). It is read ahead until then.
    void settle();

    [[noreturn]] void fail(const klvutil::Finding& finding) const;

private:
    KLVInput(std::istream& stream, std::streamoff start, const klvutil::StreamExtent& extent);
    const std::uint8_t* take(std::uint64_t size);
    std::uint64_t readSome(std::uint8_t* to, std::uint64_t size);
    std::uint8_t* piece();
    bool isSettled();

    std::istream& stream_;
    klvutil::StreamExceptionsOff exceptionsOff_;
    ReadAhead ahead_;
    std::streamoff position_;
    std::streamoff end_ = -1; ///< the end of a stream that can seek, when last asked; -1 when it cannot
    std::streamoff triplet_;
    std::streampos located_;
    std::unique_ptr<std::uint8_t[]> piece_;
};

#include "klv/internal/KLVInput.h"

#include <algorithm>
#include <cstring>

#include "klv/KLVFindings.h"
#include "klv/parse_error.h"

namespace bryx {

namespace findings = klvutil::findings;

namespace {

/// Up to here reading through costs less than a seek and the refill of the stream's buffer that follows it.
constexpr std::uint64_t smallSkip = 8192;

std::istream& checkGood(std::istream& stream, std::streamoff start) {
    if (!stream.good() || stream.rdbuf() == nullptr) {
        throw klvutil::parse_error(findings::streamNotGood, start);
    }
    return stream;
}

} // namespace

KLVInput::KLVInput(std::istream& stream, std::streamoff start)
    : KLVInput{checkGood(stream, start), start, klvutil::extentOf(stream)} {} // in this order

KLVInput::KLVInput(std::istream& stream, std::streamoff start, const klvutil::StreamExtent& extent)
    : stream_(stream), exceptionsOff_(stream),
      ahead_(*stream.rdbuf(), extent.canSeek() ? extent.position : start, extent.canSeek()), end_(extent.end),
      triplet_(position()), located_(position()) {}

KLVInput::~KLVInput() {
    isSettled();
}

void KLVInput::fail(const klvutil::Finding& finding) const {
    throw klvutil::parse_error(finding, triplet_);
}

bool KLVInput::isStreamAtEnd() {
    bool end = false;
    if (!klvutil::runs([&] { end = ahead_.atEnd(); })) {
        stream_.setstate(std::ios::badbit);
        fail(findings::unsuccessfulRead);
    }
    if (end) {
        stream_.setstate(std::ios::eofbit);
    }
    return end;
}

std::uint64_t KLVInput::readSome(std::uint8_t* to, std::uint64_t size) {
    std::uint64_t got = 0;
    const bool ran = klvutil::runs([&] { got = ahead_.read(to, size); });
    if (got != size) {
        stream_.setstate(ran ? std::ios::eofbit | std::ios::failbit : std::ios::badbit);
    }
    return got;
}

void KLVInput::read(std::uint8_t* to, std::uint64_t size) {
    if (readSome(to, size) != size) {
        fail(findings::unsuccessfulRead);
    }
}

/// Reads a number that has not been read ahead with what follows it.
std::uint64_t KLVInput::copyNumber(unsigned octets) {
    std::uint8_t number[largestNumber] = {};
    std::uint8_t* const to = number + largestNumber - octets;
    if (const std::uint8_t* const held = ahead_.take(octets)) {
        std::memcpy(to, held, octets);
    } else {
        read(to, octets);
    }
    return util::loadBigEndian<std::uint64_t>(number);
}

std::uint8_t* KLVInput::piece() {
    if (!piece_) {
        piece_ = std::make_unique<std::uint8_t[]>(pieceSize);
    }
    return piece_.get();
}

/// Reads a piece that has not been read ahead.
const std::uint8_t* KLVInput::gatherPiece(std::uint64_t size) {
    if (seekable()) {
        if (!klvutil::runs([&] { ahead_.gather(size); })) {
            stream_.setstate(std::ios::badbit);
            fail(findings::unsuccessfulRead);
        }
        if (const std::uint8_t* const held = ahead_.take(size)) {
            return held;
        }
    }
    read(piece(), size);
    return piece();
}

void KLVInput::skip(std::uint64_t size) {
    if (ahead_.take(size) != nullptr) {
        return;
    }
    if (!seekable() || size <= smallSkip) {
        while (size > 0) {
            const std::uint64_t part = std::min<std::uint64_t>(size, pieceSize);
            if (readSome(piece(), part) != part) {
                fail(seekable() ? findings::unsuccessfulSeek : findings::unsuccessfulIgnore);
            }
            size -= part;
        }
        return;
    }
    // Whether a seek beyond the end fails is up to the stream buffer, so the end decides; it is asked again before
    // complaining, since a file may be growing while it is read.
    const auto fits = [&] {
        return size <= static_cast<std::uint64_t>(std::max<std::streamoff>(end_ - position(), 0));
    };
    const std::streamoff to = position() + static_cast<std::streamoff>(size);
    bool isReached = false;
    if (!fits()) {
        end_ = std::max(end_, klvutil::extentOf(stream_).end);
    }
    if (fits()) {
        klvutil::runs([&] { isReached = ahead_.seek(to); });
    }
    if (!isReached) {
        stream_.setstate(std::ios::failbit);
        fail(findings::unsuccessfulSeek);
    }
}

bool KLVInput::isSettled() {
    bool isReached = false;
    klvutil::runs([&] { isReached = ahead_.settle(); });
    if (!isReached) {
        stream_.setstate(std::ios::failbit);
    }
    return isReached;
}

void KLVInput::settle() {
    if (!isSettled()) {
        fail(findings::unsuccessfulSeek);
    }
}

} // namespace bryx

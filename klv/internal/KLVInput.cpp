#include "klv/internal/KLVInput.h"

#include <algorithm>
#include <cstring>

#include "klv/KLVFindings.h"
#include "klv/parse_error.h"

namespace findings = klvutil::findings;

namespace {

using Traits = std::streambuf::traits_type;

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
    : stream_(checkGood(stream, start)), exceptionsOff_(stream), buffer_(*stream.rdbuf()), position_(start),
      triplet_(start), located_(start) {
    const klvutil::StreamExtent extent = klvutil::extentOf(stream);
    if (extent.canSeek()) {
        position_ = extent.position;
        end_ = extent.end;
        triplet_ = position_;
        located_ = position_;
    }
}

void KLVInput::fail(const klvutil::Finding& finding) const {
    throw klvutil::parse_error(finding, triplet_);
}

bool KLVInput::atEnd() {
    Traits::int_type octet = 0;
    if (!klvutil::runs([&] { octet = buffer_.sgetc(); })) {
        stream_.setstate(std::ios::badbit);
        fail(findings::unsuccessfulRead);
    }
    const bool end = Traits::eq_int_type(octet, Traits::eof());
    if (end) {
        stream_.setstate(std::ios::eofbit);
    }
    return end;
}

const std::uint8_t* KLVInput::take(std::uint64_t size) {
    const std::uint8_t* const held = klvutil::HeldOctets::take(buffer_, size);
    if (held != nullptr) {
        position_ += static_cast<std::streamoff>(size);
    }
    return held;
}

std::uint64_t KLVInput::readSome(std::uint8_t* to, std::uint64_t size) {
    if (const std::uint8_t* const held = take(size)) {
        std::memcpy(to, held, size);
        return size;
    }
    std::streamsize got = 0;
    const bool ran =
        klvutil::runs([&] { got = buffer_.sgetn(reinterpret_cast<char*>(to), static_cast<std::streamsize>(size)); });
    position_ += got;
    if (static_cast<std::uint64_t>(got) != size) {
        stream_.setstate(ran ? std::ios::eofbit | std::ios::failbit : std::ios::badbit);
    }
    return static_cast<std::uint64_t>(got);
}

void KLVInput::read(std::uint8_t* to, std::uint64_t size) {
    if (readSome(to, size) != size) {
        fail(findings::unsuccessfulRead);
    }
}

KLVKey KLVInput::readKey() {
    KLVKey key;
    if (const std::uint8_t* const held = take(key.octets.size())) {
        std::memcpy(key.octets.data(), held, key.octets.size());
    } else {
        read(key.octets.data(), key.octets.size());
    }
    return key;
}

std::uint64_t KLVInput::readNumber(unsigned octets) {
    std::uint8_t copy[8];
    const std::uint8_t* from = take(octets);
    if (from == nullptr) {
        read(copy, octets);
        from = copy;
    }
    std::uint64_t number = 0;
    for (unsigned i = 0; i < octets; ++i) {
        number = (number << 8U) | from[i];
    }
    return number;
}

std::uint8_t* KLVInput::piece() {
    if (!piece_) {
        piece_ = std::make_unique<std::uint8_t[]>(pieceSize);
    }
    return piece_.get();
}

const std::uint8_t* KLVInput::readPiece(std::uint64_t size) {
    read(piece(), size);
    return piece();
}

void KLVInput::skip(std::uint64_t size) {
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
    // Whether a seek beyond the end fails is up to the stream buffer, so the end decides; it is asked anew before
    // complaining, since a file may be growing while it is read.
    const auto fits = [&] { return size <= static_cast<std::uint64_t>(std::max<std::streamoff>(end_ - position_, 0)); };
    const std::streamoff to = position_ + static_cast<std::streamoff>(size);
    std::streamoff reached = -1;
    if (!fits()) {
        end_ = std::max(end_, klvutil::extentOf(stream_).end);
    }
    if (fits()) {
        klvutil::runs(
            [&] { reached = buffer_.pubseekoff(static_cast<std::streamoff>(size), std::ios::cur, std::ios::in); });
    }
    if (reached != to) {
        stream_.setstate(std::ios::failbit);
        fail(findings::unsuccessfulSeek);
    }
    position_ = to;
}

#include "klv/internal/KLVInput.h"

#include <algorithm>

#include "klv/KLVFindings.h"

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

std::streamoff klvutil::tell(std::istream& stream) {
    try {
        return stream.rdbuf() == nullptr ? std::streamoff{-1}
                                         : std::streamoff{stream.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in)};
    } catch (const std::exception&) {
        return -1;
    }
}

KLVInput::KLVInput(std::istream& stream, std::streamoff start)
    : stream_(checkGood(stream, start)), buffer_(*stream.rdbuf()), position_(start), triplet_(start), located_(start) {
    const std::streamoff stand = klvutil::tell(stream);
    if (stand >= 0) {
        position_ = stand;
        end_ = askEnd();
        position_ = seekable() ? stand : start;
        triplet_ = position_;
        located_ = position_;
    }
}

/// Runs @p operation on the stream buffer. An exception becomes the bad state of the stream, as std::istream has it,
/// and the zero value of the result.
template <class Operation>
auto KLVInput::guarded(Operation operation) -> decltype(operation()) {
    try {
        return operation();
    } catch (const std::exception&) {
        stream_.setstate(std::ios::badbit);
        return {};
    }
}

/// Asks where the stream ends, and returns to the current position. -1 if that is not possible.
std::streamoff KLVInput::askEnd() {
    return guarded([&]() -> std::streamoff {
        const std::streamoff end = buffer_.pubseekoff(0, std::ios::end, std::ios::in);
        const std::streamoff back = buffer_.pubseekpos(position_, std::ios::in);
        return back == position_ ? end : std::streamoff{-1};
    });
}

bool KLVInput::atEnd() {
    const bool end = guarded([&] { return Traits::eq_int_type(buffer_.sgetc(), Traits::eof()); });
    if (end) {
        stream_.setstate(std::ios::eofbit);
    } else if (!stream_.good()) {
        fail(findings::unsuccessfulRead);
    }
    return end;
}

std::uint64_t KLVInput::readSome(std::uint8_t* to, std::uint64_t size) {
    const std::uint64_t got = guarded([&] {
        return static_cast<std::uint64_t>(
            buffer_.sgetn(reinterpret_cast<char*>(to), static_cast<std::streamsize>(size)));
    });
    position_ += static_cast<std::streamoff>(got);
    if (got != size) {
        stream_.setstate(std::ios::eofbit | std::ios::failbit);
    }
    return got;
}

void KLVInput::read(std::uint8_t* to, std::uint64_t size) {
    if (readSome(to, size) != size) {
        fail(findings::unsuccessfulRead);
    }
}

std::uint8_t KLVInput::readOctet() {
    const auto octet = guarded([&] { return buffer_.sbumpc(); });
    if (Traits::eq_int_type(octet, Traits::eof()) || !stream_.good()) {
        stream_.setstate(std::ios::eofbit | std::ios::failbit);
        fail(findings::unsuccessfulRead);
    }
    ++position_;
    return static_cast<std::uint8_t>(octet);
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
    const auto left = [&] { return static_cast<std::uint64_t>(std::max<std::streamoff>(end_ - position_, 0)); };
    if (size > left()) {
        const std::streamoff end = askEnd();
        if (end < 0 || (end_ = end, size > left())) {
            stream_.setstate(std::ios::failbit);
            fail(findings::unsuccessfulSeek);
        }
    }
    const std::streamoff to = position_ + static_cast<std::streamoff>(size);
    const auto reached = guarded([&] {
        return std::streamoff{buffer_.pubseekoff(static_cast<std::streamoff>(size), std::ios::cur, std::ios::in)};
    });
    if (reached != to) {
        stream_.setstate(std::ios::failbit);
        fail(findings::unsuccessfulSeek);
    }
    position_ = to;
}

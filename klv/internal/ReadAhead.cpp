#include "klv/internal/ReadAhead.h"

#include <algorithm>
#include <cstring>
#include <ios>

#include "klv/internal/StreamAccess.h"

namespace bryx {

namespace {

/// More than the buffer of a file stream has, so that octets do not go through both.
constexpr std::size_t firstPiece = 8192;
constexpr std::size_t largestPiece = 131072;
static_assert(largestPiece >= ReadAhead::largestGathered);
/// From here on a system call costs less than copying twice.
constexpr std::uint64_t longValue = 32768;

} // namespace

ReadAhead::ReadAhead(std::streambuf& source, std::streamoff position, bool canSeek)
    : source_(source), canSeek_(canSeek), position_(position),
      octets_(canSeek_ ? new std::uint8_t[largestPiece] : nullptr), // not filled with zeros
      ahead_(firstPiece), next_(octets_.get()), end_(next_) {}

bool ReadAhead::settle() {
    return held() == 0 || seek(position());
}

/// Takes octets that a source which cannot seek has ready.
const std::uint8_t* ReadAhead::takeFromSource(std::uint64_t size) {
    const std::uint8_t* const taken = canSeek_ ? nullptr : klvutil::HeldOctets::take(source_, size);
    if (taken != nullptr) {
        position_ += static_cast<std::streamoff>(size);
    }
    return taken;
}

/// Forgets what is held. What comes next may be one of a few octets here and there, so little is read ahead.
void ReadAhead::drop() {
    next_ = end_ = octets_.get();
    ahead_ = firstPiece;
}

/// Puts the source at a position, and tells whether it is there.
bool ReadAhead::seekSource(std::streamoff position) {
    return std::streamoff{source_.pubseekoff(position, std::ios::beg, std::ios::in)} == position;
}

/// Reads from the source.
std::size_t ReadAhead::fetch(std::uint8_t* to, std::uint64_t size) {
    const std::streamsize got = source_.sgetn(reinterpret_cast<char*>(to), static_cast<std::streamsize>(size));
    if (got < 0 || static_cast<std::uint64_t>(got) > size) {
        throw std::ios_base::failure("no such number of octets");
    }
    position_ += got;
    return static_cast<std::size_t>(got);
}

/// Reads @p needed octets, and ahead of them, behind what is held.
bool ReadAhead::refill(std::size_t needed) {
    std::uint8_t* const end = octets_.get() + held();
    std::memmove(octets_.get(), next_, held());
    next_ = octets_.get();
    end_ = end;
    std::size_t got = 0;
    const std::size_t wanted = std::min(std::max(ahead_, needed), largestPiece - held());
    if (!isCareful_ && !klvutil::runs([&] { got = fetch(end, wanted); })) {
        isCareful_ = true;
        if (!seekSource(position_)) {
            throw std::ios_base::failure("the position is lost");
        }
    }
    if (isCareful_) {
        got = fetch(end, needed);
    }
    ahead_ = std::min(2 * ahead_, largestPiece);
    end_ += got;
    return got > 0;
}

std::uint64_t ReadAhead::read(std::uint8_t* to, std::uint64_t size) {
    if (!canSeek_) {
        return fetch(to, size);
    }
    std::uint64_t done = 0;
    while (done < size) {
        if (held() == 0) {
            const std::uint64_t needed = size - done;
            if (needed >= longValue) {
                drop();
                const std::size_t got = fetch(to + done, needed);
                if (got == 0) {
                    break;
                }
                done += got;
                continue;
            }
            if (!refill(needed)) {
                break;
            }
        }
        const std::size_t part = std::min<std::uint64_t>(held(), size - done);
        std::memcpy(to + done, next_, part);
        next_ += part;
        done += part;
    }
    return done;
}

void ReadAhead::gather(std::size_t size) {
    while (canSeek_ && held() < size && refill(size - held())) {
    }
}

bool ReadAhead::isSourceAtEnd() {
    using Traits = std::streambuf::traits_type;
    return !(canSeek_ && refill(1)) && Traits::eq_int_type(source_.sgetc(), Traits::eof());
}

bool ReadAhead::seek(std::streamoff position) {
    if (!seekSource(position)) {
        return false;
    }
    drop();
    position_ = position;
    return true;
}

} // namespace bryx

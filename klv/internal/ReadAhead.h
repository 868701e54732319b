#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <streambuf>

namespace bryx {

/// The octets of a stream buffer, taken in larger pieces than they are asked for, since a few at a time are most of what
/// is asked for between values: what it holds is taken without a call. Long values go past it, straight to where they
/// are wanted.
///
/// A stream that can seek is read ahead, in pieces that grow while it is read on and on, and is put back in the end. Of
/// any other no more is read than is asked for, but for what its buffer reads of its own accord: a pipe may have nothing
/// more to give for a while, or belong to somebody else afterwards.
///
/// What the stream buffer throws passes through. Where reading ahead fails, no more is read from then on than is asked for,
/// so that it is as if nothing had been read ahead.
class ReadAhead {
public:
    static constexpr std::size_t largestGathered = 65536;

    /// @param position of the octet that comes next
    ReadAhead(std::streambuf& source, std::streamoff position, bool canSeek);
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    bool canSeek() const noexcept { return canSeek_; }

    /// The position of the octet that comes next.
    std::streamoff position() const noexcept { return position_ - (end_ - next_); }

    /// Where the octets that come next are until the next call, if @p size of them have been read ahead: else null.
    const std::uint8_t* peek(std::uint64_t size) const { return size <= held() ? next_ : nullptr; }

    /// Passes over @p size of the octets that peek() has shown.
    void pass(std::size_t size) { next_ += size; }

    /// Passes over @p size octets, if that many are held, and returns where they are until the next call: else null.
    const std::uint8_t* take(std::uint64_t size) {
        if (size == 0 || size > held()) {
            return takeFromSource(size);
        }
        pass(size);
        return next_ - size;
    }

    /// Reads @p size octets, or as many as there are, and returns how many.
    std::uint64_t read(std::uint8_t* to, std::uint64_t size);

    /// Tries to hold @p size octets of a stream that can seek, at most largestGathered.
    void gather(std::size_t size);

    /// Whether there is nothing more to read.
    bool atEnd() { return held() == 0 && isSourceAtEnd(); }

    /// Goes on at another position of a stream that can seek. @return whether it can be reached; else nothing has changed
    bool seek(std::streamoff position);

    /// Puts a stream that can seek where the octets taken end. @return whether that can be reached
    bool settle();

private:
    std::size_t held() const noexcept { return static_cast<std::size_t>(end_ - next_); }
    const std::uint8_t* takeFromSource(std::uint64_t size);
    void drop();
    bool isSourceAtEnd();
    bool seekSource(std::streamoff position);
    std::size_t fetch(std::uint8_t* to, std::uint64_t size);
    bool refill(std::size_t needed);

    std::streambuf& source_;
    bool canSeek_;
    bool isCareful_ = false;  ///< reading ahead has failed
    std::streamoff position_; ///< where the source stands: after what is held
    std::unique_ptr<std::uint8_t[]> octets_;
    std::size_t ahead_;        ///< how many octets are read ahead the next time
    const std::uint8_t* next_; ///< of what is held
    const std::uint8_t* end_;
};

} // namespace bryx

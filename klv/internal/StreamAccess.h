#pragma once

#include <cstdint>
#include <istream>
#include <limits>
#include <ostream>

#if defined(__GLIBCXX__)
#    include <cxxabi.h>
#endif

/// @file
/// The one home of what the library asks of a caller's stream beside its octets. Nothing here throws what a stream buffer
/// or the stream's exception mask would.

namespace bryx::klvutil {

/// Runs @p operation on a stream buffer. Returns false if it throws, whatever it throws; only the unwinding of a
/// cancelled thread passes through.
template <class Operation>
bool runs(Operation operation) {
    try {
        operation();
        return true;
#if defined(__GLIBCXX__)
    } catch (const abi::__forced_unwind&) {
        throw;
#endif
    } catch (...) {
        return false;
    }
}

/// Writes octets to @p stream, and returns whether that has taken all octets so far. Costs less than to take its
/// exception mask off each time.
inline bool put(std::ostream& stream, const std::uint8_t* octets, std::uint64_t size) {
    return runs([&] { stream.write(reinterpret_cast<const char*>(octets), static_cast<std::streamsize>(size)); }) &&
           static_cast<bool>(stream);
}

/// What a stream buffer holds ready. The members that tell are protected: this derives from it only to name them.
class HeldOctets : public std::streambuf {
public:
    /// Passes over @p size octets, if that many are held, and returns where they are: else null. Saves most of what
    /// asking the buffer for a few octets costs.
    static const std::uint8_t* take(std::streambuf& buffer, std::uint64_t size) {
        const char* const next = (buffer.*&HeldOctets::gptr)();
        if (size == 0 || size > std::numeric_limits<int>::max() ||
            size > static_cast<std::uint64_t>((buffer.*&HeldOctets::egptr)() - next)) {
            return nullptr;
        }
        (buffer.*&HeldOctets::gbump)(static_cast<int>(size));
        return reinterpret_cast<const std::uint8_t*>(next);
    }
};

/// Takes the exception mask off a stream while it exists, so that faults show in the stream's state alone: the library
/// has its own way of telling them. The mask is put back without acting on the state.
class StreamExceptionsOff {
public:
    explicit StreamExceptionsOff(std::ios& stream) : stream_(stream), mask_(stream.exceptions()) {
        stream.exceptions(std::ios::goodbit);
    }
    ~StreamExceptionsOff() {
        try {
            stream_.exceptions(mask_);
        } catch (const std::ios_base::failure&) {
            // The mask is set all the same. What made it throw has been told as an exception of the library, or is the
            // end of the stream.
            static_cast<void>(mask_);
        }
    }
    StreamExceptionsOff(const StreamExceptionsOff&) = delete;
    StreamExceptionsOff& operator=(const StreamExceptionsOff&) = delete;

private:
    std::ios& stream_;
    std::ios::iostate mask_;
};

/// Where a stream stands, or -1 if it cannot tell, and where it ends, or -1 if it cannot seek.
struct StreamExtent {
    std::streamoff position = -1;
    std::streamoff end = -1;

    bool canTell() const noexcept { return position >= 0; }
    bool canSeek() const noexcept { return end >= 0; }
};

/// The extent of @p stream. The stream stays where it is, and its state as well.
StreamExtent extentOf(std::istream& stream);

/// Whether there is nothing more to read, and nothing wrong with the stream. Its end-of-file state is set then.
bool atEnd(std::istream& stream);

} // namespace bryx::klvutil

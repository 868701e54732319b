#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

/// A stream that cannot seek, as a pipe, handing out a number of octets at a time.
class PipeStream : private std::streambuf, public std::istream {
public:
    PipeStream(std::string data, std::size_t atATime)
        : std::istream(static_cast<std::streambuf*>(this)), data_(std::move(data)), atATime_(atATime) {}

private:
    std::streambuf::int_type underflow() override {
        if (next_ == data_.size()) {
            return std::streambuf::traits_type::eof();
        }
        const std::size_t size = std::min(atATime_, data_.size() - next_);
        setg(data_.data() + next_, data_.data() + next_, data_.data() + next_ + size);
        next_ += size;
        return std::streambuf::traits_type::to_int_type(*gptr());
    }

    std::string data_;
    std::size_t atATime_;
    std::size_t next_ = 0;
};

/// A stream that cannot seek, of any length: zeros between two texts.
class LongStream : private std::streambuf, public std::istream {
public:
    LongStream(std::string head, std::uint64_t zeros, std::string tail)
        : std::istream(static_cast<std::streambuf*>(this)), head_(std::move(head)), zeros_(zeros),
          tail_(std::move(tail)), zero_(65536, '\0') {
        setg(head_.data(), head_.data(), head_.data() + head_.size());
    }

private:
    std::streambuf::int_type underflow() override {
        std::string& from = zeros_ > 0 ? zero_ : tail_;
        const std::size_t size = zeros_ > 0 ? static_cast<std::size_t>(std::min<std::uint64_t>(zeros_, zero_.size()))
                                            : (std::exchange(atTail_, true) ? 0 : tail_.size());
        zeros_ -= zeros_ > 0 ? size : 0;
        setg(from.data(), from.data(), from.data() + size);
        return size == 0 ? std::streambuf::traits_type::eof() : std::streambuf::traits_type::to_int_type(*gptr());
    }

    std::string head_;
    std::uint64_t zeros_;
    std::string tail_;
    std::string zero_;
    bool atTail_ = false;
};

/// A stream whose buffer throws something odd when it has handed out its octets, as one over a failing disk.
class FailingStream : private std::streambuf, public std::istream {
public:
    explicit FailingStream(std::string data)
        : std::istream(static_cast<std::streambuf*>(this)), data_(std::move(data)) {
        setg(data_.data(), data_.data(), data_.data() + data_.size());
    }

private:
    std::streambuf::int_type underflow() override { throw 42; }

    std::string data_;
};

/// A stream in memory that can seek, and whose reads and seeks go as a test has it.
class OddStream : private std::stringbuf, public std::istream {
public:
    explicit OddStream(const std::string& data)
        : std::stringbuf(data), std::istream(static_cast<std::stringbuf*>(this)) {}

    /// Gets where the octets of a read begin and how many they are; returns what the read returns.
    std::function<std::streamsize(std::streamoff from, std::streamsize got)> onRead;
    bool canGoBack = true;

private:
    std::streamsize xsgetn(char* to, std::streamsize size) override {
        const std::streamoff from = std::stringbuf::seekoff(0, std::ios::cur, std::ios::in);
        const std::streamsize got = std::stringbuf::xsgetn(to, size);
        return onRead ? onRead(from, got) : got;
    }
    std::stringbuf::pos_type seekoff(std::stringbuf::off_type offset, std::ios::seekdir way,
                                     std::ios::openmode mode) override {
        return way != std::ios::beg || canGoBack ? std::stringbuf::seekoff(offset, way, mode)
                                                 : std::stringbuf::pos_type(std::stringbuf::off_type(-1));
    }
};

/// An output stream that takes a number of octets and no more, as a full disk.
class FullStream : private std::stringbuf, public std::ostream {
public:
    explicit FullStream(std::size_t room) : std::ostream(static_cast<std::stringbuf*>(this)), room_(room) {}

    std::string octets() const { return std::stringbuf::str(); }

private:
    std::streamsize xsputn(const char* data, std::streamsize size) override {
        const auto taken = std::min(size, static_cast<std::streamsize>(room_));
        room_ -= static_cast<std::size_t>(taken);
        return std::stringbuf::xsputn(data, taken);
    }

    std::size_t room_;
};

/// A stream in memory that tells its position but cannot seek: a seek fails, or throws.
class TellingStream : private std::stringbuf, public std::istream {
public:
    TellingStream(const std::string& data, bool throws)
        : std::stringbuf(data), std::istream(static_cast<std::stringbuf*>(this)), throws_(throws) {}

private:
    std::stringbuf::pos_type seekoff(std::stringbuf::off_type offset, std::ios::seekdir way,
                                     std::ios::openmode mode) override {
        return offset == 0 && way == std::ios::cur ? std::stringbuf::seekoff(offset, way, mode) : seekpos(0, mode);
    }
    std::stringbuf::pos_type seekpos(std::stringbuf::pos_type, std::ios::openmode) override {
        return throws_ ? throw std::ios_base::failure("no seeking")
                       : std::stringbuf::pos_type(std::stringbuf::off_type(-1));
    }

    bool throws_;
};

/// An output stream that can neither seek nor tell its position.
class OutputPipe : private std::stringbuf, public std::ostream {
public:
    OutputPipe() : std::ostream(static_cast<std::stringbuf*>(this)) {}

    std::string octets() const { return std::stringbuf::str(); }

private:
    std::stringbuf::pos_type seekoff(std::stringbuf::off_type, std::ios::seekdir, std::ios::openmode) override {
        return std::stringbuf::off_type(-1);
    }
    std::stringbuf::pos_type seekpos(std::stringbuf::pos_type, std::ios::openmode) override {
        return std::stringbuf::off_type(-1);
    }
};

/// An output stream that tells its position and cannot seek.
class TellingOutput : private std::stringbuf, public std::ostream {
public:
    TellingOutput() : std::ostream(static_cast<std::stringbuf*>(this)) {}

    std::string octets() const { return std::stringbuf::str(); }

private:
    std::stringbuf::pos_type seekoff(std::stringbuf::off_type offset, std::ios::seekdir way,
                                     std::ios::openmode mode) override {
        return offset == 0 && way == std::ios::cur ? std::stringbuf::seekoff(offset, way, mode) : seekpos(0, mode);
    }
    std::stringbuf::pos_type seekpos(std::stringbuf::pos_type, std::ios::openmode) override {
        return std::stringbuf::off_type(-1);
    }
};

/// An output stream that gathers octets, and appends them to its file when it is flushed or sought.
class AppendingOutput : private std::streambuf, public std::ostream {
public:
    AppendingOutput() : std::ostream(static_cast<std::streambuf*>(this)) {}

    const std::string& octets() const { return octets_; }

private:
    std::streamsize xsputn(const char* data, std::streamsize size) override {
        gathered_.append(data, static_cast<std::size_t>(size));
        return size;
    }
    std::streambuf::int_type overflow(std::streambuf::int_type octet) override {
        gathered_ += std::streambuf::traits_type::to_char_type(octet);
        return octet;
    }
    int sync() override {
        octets_ += gathered_;
        place_ = gathered_.empty() ? place_ : octets_.size();
        gathered_.clear();
        return 0;
    }
    std::streambuf::pos_type seekoff(std::streambuf::off_type offset, std::ios::seekdir way,
                                     std::ios::openmode mode) override {
        if (offset == 0 && way == std::ios::cur) {
            return static_cast<std::streamoff>(place_ + gathered_.size());
        }
        const auto from = way == std::ios::end ? octets_.size() : way == std::ios::cur ? place_ : 0;
        return seekpos(static_cast<std::streamoff>(from) + offset, mode);
    }
    std::streambuf::pos_type seekpos(std::streambuf::pos_type place, std::ios::openmode) override {
        sync();
        place_ = static_cast<std::size_t>(std::streamoff{place});
        return place;
    }

    std::string octets_;
    std::string gathered_;
    std::size_t place_ = 0;
};

/// An output stream whose device takes a number of writes, and fails at the next one and all that follow.
class FailingOutput : private std::stringbuf, public std::ostream {
public:
    explicit FailingOutput(std::size_t writes) : std::ostream(static_cast<std::stringbuf*>(this)), left_(writes) {}

    std::size_t writesAfterFailure() const { return after_; }

private:
    std::streamsize xsputn(const char* data, std::streamsize size) override {
        if (left_ > 0) {
            --left_;
            return std::stringbuf::xsputn(data, size);
        }
        after_ += hasFailed_ ? 1 : 0;
        hasFailed_ = true;
        return 0;
    }

    std::size_t left_;
    std::size_t after_ = 0;
    bool hasFailed_ = false;
};

/// A file in which long values of zeros become holes.
class SparseFile : private std::filebuf, public std::ostream {
public:
    explicit SparseFile(const std::filesystem::path& path) : std::ostream(static_cast<std::filebuf*>(this)) {
        std::filebuf::open(path, std::ios::out | std::ios::binary | std::ios::trunc);
    }

private:
    std::streamsize xsputn(const char* data, std::streamsize size) override {
        if (size < 1000000) {
            return std::filebuf::xsputn(data, size);
        }
        // The last octet is written, so that the file ends where it should.
        std::filebuf::seekoff(size - 1, std::ios::cur);
        return std::filebuf::xsputn("", 1) == 1 ? size : 0;
    }
};

#pragma once

#include <algorithm>
#include <istream>
#include <streambuf>
#include <string>

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

/// A stream whose buffer throws when it has handed out its octets, as one over a failing disk.
class FailingStream : private std::streambuf, public std::istream {
public:
    explicit FailingStream(std::string data)
        : std::istream(static_cast<std::streambuf*>(this)), data_(std::move(data)) {
        setg(data_.data(), data_.data(), data_.data() + data_.size());
    }

private:
    std::streambuf::int_type underflow() override { throw std::ios_base::failure("input/output error"); }

    std::string data_;
};

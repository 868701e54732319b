#pragma once

#include <algorithm>
#include <cstdint>
#include <streambuf>

/// The octets of a file up to a position, as if it ended there.
class FrontOfFile final : public std::streambuf {
public:
    /// @param file can seek, and stands at its beginning
    FrontOfFile(std::streambuf& file, std::uint64_t size) : file_(file), size_(static_cast<std::streamoff>(size)) {}

private:
    int_type underflow() override { return position_ < size_ ? file_.sgetc() : traits_type::eof(); }
    int_type uflow() override {
        if (position_ >= size_) {
            return traits_type::eof();
        }
        ++position_;
        return file_.sbumpc();
    }
    std::streamsize xsgetn(char* to, std::streamsize size) override {
        const std::streamsize taken = file_.sgetn(to, std::min<std::streamsize>(size, size_ - position_));
        position_ += taken;
        return taken;
    }
    pos_type seekoff(off_type offset, std::ios::seekdir way, std::ios::openmode mode) override {
        return seekpos(offset + (way == std::ios::beg ? 0 : way == std::ios::cur ? position_ : size_), mode);
    }
    pos_type seekpos(pos_type position, std::ios::openmode mode) override {
        if (position < 0 || position > size_ || file_.pubseekpos(position, mode) != position) {
            return off_type(-1);
        }
        return position_ = position;
    }

    std::streambuf& file_;
    std::streamoff size_;
    std::streamoff position_ = 0;
};

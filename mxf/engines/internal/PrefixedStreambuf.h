#pragma once

#include <streambuf>
#include <string>

namespace bryx {

/// Octets that were taken from a stream buffer, followed by what is left in it: for a stream that cannot seek. Holds
/// nothing back: large reads go straight to the buffer behind.
class PrefixedStreambuf : public std::streambuf {
public:
    /// @p rest is not owned.
    PrefixedStreambuf(std::string prefix, std::streambuf& rest);

protected:
    int_type underflow() override;
    int_type uflow() override;
    std::streamsize xsgetn(char* to, std::streamsize size) override;

private:
    std::string prefix_;
    std::streambuf& rest_;
};

} // namespace bryx

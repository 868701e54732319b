#pragma once

#include <ios>
#include <stdexcept>
#include <string>

#include "klv/Finding.h"
#include "util/Api.h"

namespace bryx::klvutil {

/// Thrown where malformed data or a failing stream ends a parse.
class BRYX_API parse_error : public std::runtime_error {
public:
    /// @param position of the first octet of the innermost KLV triplet that could not be read
    parse_error(const Finding& finding, std::streampos position, const std::string& detail = {});
    parse_error(const parse_error&) = default;
    parse_error& operator=(const parse_error&) = default;
    ~parse_error() override;

    /// Names the kind of finding; compare it with the constants of the tables of findings.
    const util::uuid& id() const noexcept { return id_; }

    /// The position in the stream of the first octet of the innermost KLV triplet that could not be read.
    std::streampos position() const noexcept { return position_; }

private:
    util::uuid id_;
    std::streampos position_;
};

/// Ends a parse: reports @p finding to @p errorHandler, which may be null, and throws parse_error with the same text
/// and identifier if the report returns.
[[noreturn]] BRYX_API void fail(ErrorHandler* errorHandler, const Finding& finding, std::streampos position,
                                const std::string& detail = {});

} // namespace bryx::klvutil

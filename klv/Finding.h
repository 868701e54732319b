#pragma once

#include <cstdint>
#include <string>

#include "util/Api.h"
#include "util/uuid.h"

class ErrorHandler;

namespace klvutil {

/// What a finding means for the reading of the data.
enum class FindingLevel : std::uint8_t {
    warning, ///< ErrorHandler::warning: noted, and reading goes on
    error,   ///< ErrorHandler::error: the handler decides whether reading goes on
    fatal    ///< ErrorHandler::fatalError or parse_error: reading has ended
};

/// One kind of finding about the data: what it is called, how grave it is and the text that is reported.
///
/// Each subsystem lists its findings once, in a table of its own (klv/KLVFindings.h and its like); the identifiers
/// are fixed, so that an application may compare against them.
struct Finding {
    util::uuid id;
    FindingLevel level;
    const char* message;
};

/// The identifier of the @p index-th kind of finding of the group that @p base names: the base with its last octet
/// replaced.
constexpr util::uuid findingId(util::uuid base, std::uint8_t index) noexcept {
    base.octets[15] = index;
    return base;
}

/// The text reported for @p finding: its message, followed by " - " and @p detail when there is a detail.
BRYX_API std::string describe(const Finding& finding, const std::string& detail = {});

/// The text reported for a finding whose message names what it is about with a "%", in whose place @p subject stands.
BRYX_API std::string describe(const Finding& finding, const std::string& subject, const std::string& detail);

/// Reports @p finding to @p errorHandler at the finding's level; does nothing when there is no handler.
BRYX_API void report(ErrorHandler* errorHandler, const Finding& finding, const std::string& detail = {});
BRYX_API void report(ErrorHandler* errorHandler, const Finding& finding, const std::string& subject,
                     const std::string& detail);

} // namespace klvutil

/// Turns one row of a table of findings into the constant of its name.
#define BRYX_DEFINE_FINDING(name, base, index, level, message)                                                         \
    inline constexpr ::klvutil::Finding name{::klvutil::findingId(base, index), ::klvutil::FindingLevel::level,        \
                                             message};

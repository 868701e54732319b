#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "util/Api.h"
#include "util/assertion_failure.h"
#include "util/uuid.h"

namespace bryx {

class ErrorHandler;

namespace klvutil {

/// What a finding means for the reading of the data.
enum class FindingLevel : std::uint8_t {
    warning, ///< ErrorHandler::warning: noted, and reading goes on
    error,   ///< ErrorHandler::error: the handler decides whether reading goes on
    fatal    ///< ErrorHandler::fatalError or parse_error: reading has ended
};

/// What the tables of findings say of each kind: what it is called, how grave it is and the text that is reported.
///
/// Each subsystem lists its findings once, in a table of its own (klv/KLVFindings.h and its like); the identifiers
/// are fixed, so that an application may compare against them.
struct FindingKind {
    util::uuid id;
    FindingLevel level;
    const char* message;
};

/// How often @p message names what a finding is about.
constexpr int countSubjects(const char* message) noexcept {
    int count = 0;
    for (; *message != '\0'; ++message) {
        count += *message == '%' ? 1 : 0;
    }
    return count;
}

/// One kind of finding about the data, whose message stands as it is.
struct Finding : FindingKind {
    /// Requires "message names no subject": that there is no "%" in it.
    constexpr explicit Finding(const FindingKind& kind) : FindingKind(kind) {
        util::require(countSubjects(message) == 0, "message names no subject");
    }
};

/// One kind of finding whose message names what it is about with a "%". It cannot be reported without its subject.
struct SubjectFinding : FindingKind {
    /// Requires "message names one subject": that there is one "%" in it.
    constexpr explicit SubjectFinding(const FindingKind& kind) : FindingKind(kind) {
        util::require(countSubjects(message) == 1, "message names one subject");
    }
};

/// The type of the kind of finding whose message names so many subjects.
template <int subjects>
using FindingOf = std::conditional_t<subjects == 0, Finding, SubjectFinding>;

/// The identifier of the @p index-th kind of finding of the group that @p base names: the base with its last octet
/// replaced.
constexpr util::uuid findingId(util::uuid base, std::uint8_t index) noexcept {
    base.octets[15] = index;
    return base;
}

/// The text reported for @p finding: its message, followed by " - " and @p detail when there is a detail.
BRYX_API std::string describe(const Finding& finding, const std::string& detail = {});
/// The same with @p subject in the place of the message's "%".
BRYX_API std::string describe(const SubjectFinding& finding, const std::string& subject,
                              const std::string& detail = {});

/// Reports @p finding to @p errorHandler at the finding's level; does nothing when there is no handler.
BRYX_API void report(ErrorHandler* errorHandler, const Finding& finding, const std::string& detail = {});
/// The same with @p subject in the place of the message's "%".
BRYX_API void report(ErrorHandler* errorHandler, const SubjectFinding& finding, const std::string& subject,
                     const std::string& detail = {});

} // namespace klvutil

// NOLINTBEGIN(bugprone-macro-parentheses): a name cannot have parentheses

/// Turns one row of a table of findings into the constant of its name: a Finding, or a SubjectFinding if the message has
/// a "%".
#define BRYX_DEFINE_FINDING(name, base, index, level, message)                                                         \
    inline constexpr ::bryx::klvutil::FindingOf<::bryx::klvutil::countSubjects(message)> name{                         \
        {::bryx::klvutil::findingId(base, index), ::bryx::klvutil::FindingLevel::level, message}};

// NOLINTEND(bugprone-macro-parentheses)

} // namespace bryx

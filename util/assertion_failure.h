#pragma once

#include <stdexcept>
#include <string>

#include "util/Api.h"

namespace bryx::util {

/// Thrown when a precondition or an invariant of the library does not hold: a caller's misuse or a contradiction
/// inside the library, never the fault of the data that is read.
///
/// what() is "assertion failure: " followed by the condition that should have held, such as "handler is present".
class BRYX_API assertion_failure : public std::runtime_error {
public:
    explicit assertion_failure(const std::string& condition);
    assertion_failure(const assertion_failure&) = default;
    assertion_failure& operator=(const assertion_failure&) = default;
    ~assertion_failure() override;
};

/// Throws assertion_failure with the given condition text.
[[noreturn]] BRYX_API void failAssertion(const char* condition);

/// Throws assertion_failure with the text of @p condition unless @p holds.
constexpr void require(bool holds, const char* condition) {
    if (!holds) {
        failAssertion(condition);
    }
}

} // namespace bryx::util

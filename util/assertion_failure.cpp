#include "util/assertion_failure.h"

#include <string>

namespace util {

assertion_failure::assertion_failure(const char* condition)
    : std::runtime_error(std::string("assertion failure: ") + condition) {}

assertion_failure::~assertion_failure() = default;

void failAssertion(const char* condition) {
    throw assertion_failure(condition);
}

} // namespace util

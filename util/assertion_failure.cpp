#include "util/assertion_failure.h"

namespace bryx::util {

assertion_failure::assertion_failure(const std::string& condition)
    : std::runtime_error("assertion failure: " + condition) {}

assertion_failure::~assertion_failure() = default;

void failAssertion(const char* condition) {
    throw assertion_failure(condition);
}

} // namespace bryx::util

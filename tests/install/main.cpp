#include <cstring>

#include "util/assertion_failure.h"

// Throwing across the library's boundary needs both its symbols and the exported type information.
int main() {
    try {
        util::require(false, "handler is present");
    } catch (const util::assertion_failure& failure) {
        return std::strcmp(failure.what(), "assertion failure: handler is present") == 0 ? 0 : 1;
    }
    return 1;
}

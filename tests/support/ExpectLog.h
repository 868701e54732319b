#pragma once

#include <gtest/gtest.h>

#include "support/Recorders.h"

/// Expects a log, as its lines or joined, to be what is expected, and shows the first lines that are not with those
/// around them.
#define EXPECT_LOG(log, expected) EXPECT_PRED_FORMAT2(sameLog, log, expected)
#define ASSERT_LOG(log, expected) ASSERT_PRED_FORMAT2(sameLog, log, expected)

inline testing::AssertionResult sameLog(const char* name, const char* /*expected*/, const Log& log,
                                        const Log& expected) {
    const std::string found = difference(log, expected);
    return found.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << name << ": " << found;
}

inline testing::AssertionResult sameLog(const char* name, const char* text, const std::string& log,
                                        const std::string& expected) {
    return sameLog(name, text, separated(log), separated(expected));
}

inline testing::AssertionResult sameLog(const char* name, const char* text, const Log& log,
                                        const std::string& expected) {
    return sameLog(name, text, joined(log), expected);
}

#include "support/Recorders.h"

#include <gtest/gtest.h>

TEST(Log, ShowsWhereItDiffersAndNoMore) {
    const Log log = separated("a; b; c; d; e; f; g");
    EXPECT_EQ(difference(log, separated(joined(log))), "");
    EXPECT_EQ(difference({}, {}), "");
    EXPECT_EQ(difference(log, separated("a; b; c; X; Y; e; f; g")),
              "line 4 of 7 differs, where 8 lines are expected (-):\n    b\n    c\n  - X\n  - Y\n  + d\n    e\n    f");
    EXPECT_EQ(difference(log, separated("b; c; d; e; f; g")),
              "line 1 of 7 differs, where 6 lines are expected (-):\n  + a\n    b\n    c");
    EXPECT_EQ(difference({"a"}, separated("a; a; a; a; a; a; a")),
              "line 2 of 1 differs, where 7 lines are expected (-):\n    a\n  - a\n  - a\n  - a\n  - a\n  - ... and 2 "
              "lines more");
}

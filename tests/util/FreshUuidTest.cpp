#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "util/fresh_uuid.h"

TEST(FreshUUID, IsFreshInForkedProcessesToo) {
    std::set<util::uuid> seen{util::freshUUID()}; // so that there is something left to share
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        for (int i = 0; i < 100; ++i) {
            const util::uuid made = util::freshUUID();
            if (write(ends[1], made.octets.data(), made.octets.size()) < 0) {
                _exit(1);
            }
        }
        _exit(0);
    }
    for (int i = 0; i < 100; ++i) {
        const util::uuid made = util::freshUUID();
        EXPECT_EQ(made.octets[6] >> 4U, 4);
        EXPECT_EQ(made.octets[8] >> 6U, 2);
        EXPECT_TRUE(seen.insert(made).second);
        util::uuid childs;
        ASSERT_EQ(read(ends[0], childs.octets.data(), childs.octets.size()), 16);
        EXPECT_TRUE(seen.insert(childs).second);
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(ends[0]);
    close(ends[1]);
}

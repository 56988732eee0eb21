/// Runs the tests that only read and write text. They touch no file, so they need no sandbox.

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    setenv("TZ", "UTC0", 1);
    tzset();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

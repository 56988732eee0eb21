/// Runs the fault sweep in a private /tmp and /dev, where its lives bind the daemon's socket.

#include "sim/harness/sandbox.h"
#include "tests/faults/calls.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    // No thread but a life's own ones is the daemon's.
    const faults::outside not_the_daemon;
    if (argc < 2 || std::string(argv[1]) != "--gtest_list_tests")
        sim_enter_sandbox(argv, {UTM_BUILD_DIR, UTM_SOURCE_DIR});
    setenv("TZ", "UTC0", 1);
    tzset();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

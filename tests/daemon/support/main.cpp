/// Runs the daemon tests in a private /tmp and /dev, so that they meet neither the machine's daemon
/// nor each other.

#include "sim/harness/sandbox.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

/// What a test runner left open would be inherited by the daemon and counted among its descriptors.
void keep_descriptors_to_ourselves() {
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int fd = std::stoi(entry.path().filename());
        if (fd > 2)
            fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
}

} // namespace

int main(int argc, char **argv) {
    // Listing the tests needs no sandbox; the build does so, wherever it is.
    if (argc < 2 || std::string(argv[1]) != "--gtest_list_tests") {
        keep_descriptors_to_ourselves();
        // The sources are kept for the sanitizers' suppressions, which the daemon reads at start.
        sim_enter_sandbox(argv, {UTM_SOURCE_DIR, UTM_BUILD_DIR});
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

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

class private_machine : public testing::Environment {
public:
    void SetUp() override {
        std::string why;
        keep_descriptors_to_ourselves();
        // The sources are kept for the sanitizers' suppressions, which the daemon reads at start.
        ASSERT_TRUE(sim_enter_private_namespaces({UTM_SOURCE_DIR, UTM_BUILD_DIR}, &why)) << why;
    }
};

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new private_machine);
    return RUN_ALL_TESTS();
}

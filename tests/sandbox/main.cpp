/// Runs the tests of redirected paths in a sandbox of redirected paths, whatever the machine
/// allows. The root's name has as many bytes as TMPDIR gives it.

#include "sim/harness/sandbox.h"
#include "tests/sandbox/support.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

/// @return a folder below the machine's /tmp that stays in sight; the first start makes it
std::string kept_folder() {
    if (const char *made = getenv(KEPT_VARIABLE))
        return made;
    std::string path = "/tmp/utm_kept.XXXXXX";
    if (mkdtemp(path.data()) == nullptr || setenv(KEPT_VARIABLE, path.c_str(), 1) != 0)
        perror("mkdtemp");
    return path;
}

class kept_folder_goes : public testing::Environment {
public:
    void TearDown() override { EXPECT_EQ(rmdir(kept_folder().c_str()), 0); }
};

} // namespace

int main(int argc, char **argv) {
    // Listing the tests needs no sandbox; the build does so, wherever it is.
    if (argc < 2 || std::string(argv[1]) != "--gtest_list_tests") {
        setenv(SIM_SANDBOX_VARIABLE, "redirection", 1);
        sim_enter_sandbox(argv, {UTM_SOURCE_DIR, UTM_BUILD_DIR, kept_folder()});
    }
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new kept_folder_goes);
    return RUN_ALL_TESTS();
}

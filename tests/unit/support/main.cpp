/// Runs the unit tests in a private /tmp, where the debug log of a test meets nobody else's.

#include "sim/harness/sandbox.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

class world_of_tests : public testing::Environment {
public:
    void SetUp() override { world::reset(); }
    /// Whatever the last test left would count as leaked.
    void TearDown() override { world::reset(); }
};

} // namespace

int main(int argc, char **argv) {
    // Listing the tests needs no sandbox; the build does so, wherever it is.
    if (argc < 2 || std::string(argv[1]) != "--gtest_list_tests")
        sim_enter_sandbox(argv, {UTM_BUILD_DIR, UTM_SOURCE_DIR});
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new world_of_tests);
    return RUN_ALL_TESTS();
}

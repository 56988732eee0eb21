/// Runs the unit tests in a private /tmp, where the debug log of a test meets nobody else's.

#include "sim/harness/sandbox.h"
#include "tests/unit/support/world.h"

#include <gtest/gtest.h>

namespace {

class private_tmp : public testing::Environment {
public:
    void SetUp() override {
        std::string why;
        ASSERT_TRUE(sim_enter_private_namespaces({UTM_BUILD_DIR, UTM_SOURCE_DIR}, &why)) << why;
        world::reset();
    }
    /// Whatever the last test left would count as leaked.
    void TearDown() override { world::reset(); }
};

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new private_tmp);
    return RUN_ALL_TESTS();
}

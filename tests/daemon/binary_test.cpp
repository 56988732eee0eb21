/// What the daemon's program does not contain. tests/binary checks how it is linked.

#include "tests/daemon/support/fixture.h"

TEST(DaemonBinary, ItHasNoHooksForTests) {
    const std::string binary = sim_read_file(UTM_DAEMON);

    ASSERT_NE(binary.find("/dev/utm_app_config_socket"), std::string::npos);
    EXPECT_EQ(binary.find("UTM_SIM"), std::string::npos);
    EXPECT_EQ(binary.find("/tmp/router"), std::string::npos);
}

/// How the daemon is linked. tests/binary has the rest; a sanitizer's runtime may read what it
/// likes.

#include "tests/daemon/support/fixture.h"

TEST(DaemonBinary, ItKeepsNoDoorForTests) {
    const std::string binary = sim_read_file(UTM_DAEMON);

    ASSERT_NE(binary.find("/dev/utm_app_config_socket"), std::string::npos);
    EXPECT_EQ(binary.find("UTM_SIM"), std::string::npos);
    EXPECT_EQ(binary.find("/tmp/router"), std::string::npos);
}

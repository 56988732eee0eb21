/// Whose path it is at the end: the one that this daemon bound, by device and by number.

#include "control/fd_event.h"
#include "control/socket_server.h"
#include "format/protocol.h"
#include "tests/lib/world.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

class SocketPath : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        fd_event_reset();
    }
    void TearDown() override {
        std::filesystem::remove(UTM_APP_CONFIG_SOCKET_PATH);
        fd_event_reset();
    }

    static bool is_there() { return std::filesystem::exists(UTM_APP_CONFIG_SOCKET_PATH); }
};

TEST_F(SocketPath, StaysWhereAnotherDeviceGivesOutTheSameNumber) {
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    world::on_lstat([](struct stat *found) {
        found->st_dev += 1;
        return 0;
    });
    utm_app_config_socket_remove();
    EXPECT_TRUE(is_there());
}

TEST_F(SocketPath, StaysWhereAnotherFileHasItsName) {
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    world::on_lstat([](struct stat *found) {
        found->st_ino += 1;
        return 0;
    });
    utm_app_config_socket_remove();
    EXPECT_TRUE(is_there());
}

/// A binding that could not look at its own path takes no other for it, not even the one before.
TEST_F(SocketPath, StaysWhereTheDaemonDoesNotKnowItsOwn) {
    const std::string aside = std::string(UTM_APP_CONFIG_SOCKET_PATH) + ".aside";
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    const int first = listen_fd;
    std::filesystem::rename(UTM_APP_CONFIG_SOCKET_PATH, aside);
    world::on_lstat([](struct stat *) { return -1; });
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    world::on_lstat(nullptr);
    std::filesystem::rename(aside, UTM_APP_CONFIG_SOCKET_PATH);
    utm_app_config_socket_remove();
    EXPECT_TRUE(is_there());
    close(first);
}

} // namespace

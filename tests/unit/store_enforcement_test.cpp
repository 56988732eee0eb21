#include "store/enforcement.h"

#include "store/blocking.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

class Enforcement : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

config_device_t device_of(std::initializer_list<uint8_t> mac) {
    config_device_t device = {};
    std::copy(mac.begin(), mac.end(), device.mac);
    return device;
}

TEST_F(Enforcement, WritesEachLineForADeviceExactly) {
    const mutex_guard lock(utm_app_config_mutex);
    const config_device_t device = device_of({0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E});
    utm_app_guard_on();
    utm_app_block_app_on_device(&device, 305);
    utm_app_unblock_app_on_device(&device, 305);
    utm_app_reset_device(&device);
    utm_app_guard_off();
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "run lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18\n"
                              "run lcsh apg acl del 00:1A:2B:3C:4D:5E 305 0\n"
                              "run lcsh apg acl reset 00:1A:2B:3C:4D:5E\n"
                              "run lcsh apg off\n");
}

TEST_F(Enforcement, WritesExtremeAddressesAndIds) {
    const mutex_guard lock(utm_app_config_mutex);
    const config_device_t device = device_of({0xFF, 0xFE, 0xAB, 0x00, 0x01, 0x0A});
    utm_app_block_app_on_device(&device, INT32_MIN);
    utm_app_unblock_app_on_device(&device, INT32_MAX);
    utm_app_block_app_on_device(&device, 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set FF:FE:AB:00:01:0A -2147483648 0 18\n"
                              "run lcsh apg acl del FF:FE:AB:00:01:0A 2147483647 0\n"
                              "run lcsh apg acl set FF:FE:AB:00:01:0A 0 0 18\n");
}

TEST_F(Enforcement, ReportsLinesThatFail) {
    struct {
        int status;
        const char *block, *unblock, *reset;
    } const table[] = {
        {256, "256\n", "256 != 0\n", "256 != 0\n"},
        {32512, "32512\n", "32512 != 0\n", "32512 != 0\n"},
        {9, "9\n", "9 != 0\n", "9 != 0\n"},
        {-1, "-1\n", "-1 != 0\n", "-1 != 0\n"},
    };
    const mutex_guard lock(utm_app_config_mutex);
    const config_device_t device = device_of({0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E});
    for (const auto &row : table) {
        world::on_system([&](const std::string &) { return row.status; });
        utm_app_guard_on();
        utm_app_block_app_on_device(&device, 305);
        utm_app_unblock_app_on_device(&device, 305);
        utm_app_reset_device(&device);
        utm_app_guard_off();
        EXPECT_EQ(world::trace(),
                  "run lcsh apg on\n"
                  "run lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18\n"
                  "log Command lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18 return " +
                      std::string(row.block) +
                      "run lcsh apg acl del 00:1A:2B:3C:4D:5E 305 0\n"
                      "log Command lcsh apg acl del 00:1A:2B:3C:4D:5E 305 0 return " +
                      row.unblock +
                      "run lcsh apg acl reset 00:1A:2B:3C:4D:5E\n"
                      "log Command lcsh apg acl reset 00:1A:2B:3C:4D:5E return " +
                      row.reset + "run lcsh apg off\n");
    }
}

TEST_F(Enforcement, GoesOnToTheNextDeviceAfterALineFailed) {
    config_user_profile_t *profile = world::make_profile(1, {world::tablet, world::phone});
    world::on_system([](const std::string &line) {
        return line.find("00:11:22:33:44:55") != std::string::npos ? 256 : 0;
    });
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_block_app_on_devices(&profile->device_list, 12);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                              "log Command lcsh apg acl set 00:11:22:33:44:55 12 0 18 return 256\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n");
}

TEST_F(Enforcement, RunsALineForEveryDeviceInListOrder) {
    config_user_profile_t *profile = world::make_profile(1, {world::phone, world::tablet});
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_block_app_on_devices(&profile->device_list, 12);
    utm_app_unblock_app_on_devices(&profile->device_list, 12);
    utm_app_reset_devices(&profile->device_list);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                              "run lcsh apg acl del AA:BB:CC:DD:EE:0F 12 0\n"
                              "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
                              "run lcsh apg acl reset AA:BB:CC:DD:EE:0F\n"
                              "run lcsh apg acl reset 00:11:22:33:44:55\n");
}

TEST_F(Enforcement, DoesNothingWithoutADeviceOrAProfile) {
    config_user_profile_t *profile = world::make_profile(1);
    const mutex_guard lock(utm_app_config_mutex);
    for (config_list_node_t *list :
         {&profile->device_list, static_cast<config_list_node_t *>(nullptr)}) {
        utm_app_block_app_on_devices(list, 12);
        utm_app_unblock_app_on_devices(list, 12);
        utm_app_reset_devices(list);
    }
    utm_app_block_app_on_device(nullptr, 12);
    utm_app_unblock_app_on_device(nullptr, 12);
    utm_app_reset_device(nullptr);
    utm_app_send_block_event(nullptr);
    utm_app_send_unblock_event(nullptr);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Enforcement, AnnouncesAProfileAndThenSaysSo) {
    for (const int32_t id : {7, 0, -3, INT32_MAX}) {
        config_user_profile_t *profile = world::make_profile(id);
        const std::string text = std::to_string(id);
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_send_block_event(profile);
        utm_app_send_unblock_event(profile);
        EXPECT_EQ(world::trace(),
                  "event block profile " + text + "\nlog send event: block profile " + text +
                      " to use network\nevent unblock profile " + text +
                      "\nlog send event: unblock profile " + text + " to use network\n");
        EXPECT_EQ(profile->blocked, 0);
    }
}

TEST_F(Enforcement, OnlyWarnsThatOneDeviceCannotBeCutOff) {
    const mutex_guard lock(utm_app_config_mutex);
    const config_device_t device = device_of({0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E});
    __block_one_device_to_use_network(&device);
    __unblock_one_device_to_use_network(&device);
    EXPECT_EQ(world::trace(),
              "log [WARNING] __block_one_device_to_use_network is not implemented\n"
              "log [WARNING] __unblock_one_device_to_use_network is not implemented\n");
}

// ---- All blocks at once --------------------------------------------------------------------

using world::both;

/// A profile that is cut off, with two applications of three blocked.
config_user_profile_t *make_blocked_profile(int32_t id, const std::vector<world::mac_t> &devices) {
    config_user_profile_t *profile = world::make_profile(id, devices);
    profile->daily_limit_enable = 1;
    profile->blocked = 1;
    world::make_usage(profile, {{12, 5}, {13, 6}, {14, 7}});
    world::usage_of(profile, 12)->blocked = 1;
    world::usage_of(profile, 14)->blocked = 1;
    return profile;
}

TEST_F(Enforcement, AppliesTheBlocksOfEveryProfileInOrder) {
    make_blocked_profile(5, both);
    make_blocked_profile(3, {world::phone});
    const std::string before = world::render_lists();
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_apply_all_blocks();
    }
    EXPECT_EQ(world::trace(), "event block profile 5\n"
                              "log send event: block profile 5 to use network\n" +
                                  world::block_lines(both, 12) + world::block_lines(both, 14) +
                                  "event block profile 3\n"
                                  "log send event: block profile 3 to use network\n" +
                                  world::block_lines({world::phone}, 12) +
                                  world::block_lines({world::phone}, 14));
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Enforcement, LiftsTheBlocksOfEveryProfileInOrderAndKeepsTheFlags) {
    world::make_policy(4, {{12, 2, 0}}, make_blocked_profile(5, both));
    make_blocked_profile(3, {world::phone});
    const std::string before = world::render_lists();
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_lift_all_blocks();
    }
    EXPECT_EQ(world::trace(), "event unblock profile 5\n"
                              "log send event: unblock profile 5 to use network\n" +
                                  world::unblock_lines(both, 12) + world::unblock_lines(both, 14) +
                                  world::reset_lines(both) +
                                  "event unblock profile 3\n"
                                  "log send event: unblock profile 3 to use network\n" +
                                  world::unblock_lines({world::phone}, 12) +
                                  world::unblock_lines({world::phone}, 14));
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Enforcement, AnnouncesOnlyProfilesThatAreCutOff) {
    struct {
        int32_t enable, blocked;
        bool announced;
    } const table[] = {{0, 0, false}, {0, 1, false}, {1, 0, false}, {1, 1, true}};
    for (const auto &row : table) {
        world::reset();
        config_user_profile_t *profile = world::make_profile(1, both);
        profile->daily_limit_enable = row.enable;
        profile->blocked = row.blocked;
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_apply_all_blocks();
        utm_app_lift_all_blocks();
        EXPECT_EQ(world::trace(), row.announced
                                      ? "event block profile 1\n"
                                        "log send event: block profile 1 to use network\n"
                                        "event unblock profile 1\n"
                                        "log send event: unblock profile 1 to use network\n"
                                      : "")
            << row.enable << row.blocked;
    }
}

TEST_F(Enforcement, AppliesFlagsAndNotRules) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 5}, {13, 90}});
    world::make_policy(4, {{12, 2, 0}, {13, 1, 60}}, profile);
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_apply_all_blocks();
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Enforcement, ResetsTheDevicesOfAnyBoundPolicyWhenLifting) {
    world::make_policy(4, {}, world::make_profile(1, both));
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_lift_all_blocks();
    EXPECT_EQ(world::trace(), world::reset_lines(both));
}

TEST_F(Enforcement, RunsNoLineForABlockedProfileWithoutDevices) {
    world::make_policy(4, {{12, 2, 0}}, make_blocked_profile(1, {}));
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_apply_all_blocks();
    utm_app_lift_all_blocks();
    EXPECT_EQ(world::trace(), "event block profile 1\n"
                              "log send event: block profile 1 to use network\n"
                              "event unblock profile 1\n"
                              "log send event: unblock profile 1 to use network\n");
}

} // namespace

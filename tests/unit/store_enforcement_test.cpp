#include "store/enforcement.h"

#include "store/profiles.h"
#include "tests/unit/support/world_test.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

class Enforcement : public world_test {};

constexpr config_device_t tv = {{0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E}, {}};

/// Every line that can be run for a device, and those beside it.
void run_each_line(const config_device_t *device, int32_t app_id) {
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_guard_on();
    utm_app_block_app_on_device(device, app_id);
    utm_app_unblock_app_on_device(device, app_id);
    utm_app_reset_device(device);
    utm_app_run_leaving_script(-3);
    utm_app_guard_off();
}

TEST_F(Enforcement, WritesEachLineExactly) {
    run_each_line(&tv, 305);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "run lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18\n"
                              "run lcsh apg acl del 00:1A:2B:3C:4D:5E 305 0\n"
                              "run lcsh apg acl reset 00:1A:2B:3C:4D:5E\n"
                              "run profile_daily_limit.sh -C -3\n"
                              "run lcsh apg off\n");
}

TEST_F(Enforcement, WritesExtremeAddressesAndIds) {
    const mutex_guard lock(utm_app_config_mutex);
    const config_device_t device = {{0xFF, 0xFE, 0xAB, 0x00, 0x01, 0x0A}, {}};
    utm_app_block_app_on_device(&device, INT32_MIN);
    utm_app_unblock_app_on_device(&device, INT32_MAX);
    utm_app_block_app_on_device(&device, 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set FF:FE:AB:00:01:0A -2147483648 0 18\n"
                              "run lcsh apg acl del FF:FE:AB:00:01:0A 2147483647 0\n"
                              "run lcsh apg acl set FF:FE:AB:00:01:0A 0 0 18\n");
}

TEST_F(Enforcement, ReportsADevicesLineThatFails) {
    for (const int status : {256, 32512, 9, -1}) {
        world::on_system([&](const std::string &) { return status; });
        run_each_line(&tv, 305);
        const std::string text = std::to_string(status);
        EXPECT_EQ(world::trace(),
                  "run lcsh apg on\n"
                  "run lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18\n"
                  "log Command lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18 return " +
                      text +
                      "\n"
                      "run lcsh apg acl del 00:1A:2B:3C:4D:5E 305 0\n"
                      "log Command lcsh apg acl del 00:1A:2B:3C:4D:5E 305 0 return " +
                      text +
                      " != 0\n"
                      "run lcsh apg acl reset 00:1A:2B:3C:4D:5E\n"
                      "log Command lcsh apg acl reset 00:1A:2B:3C:4D:5E return " +
                      text + " != 0\nrun profile_daily_limit.sh -C -3\nrun lcsh apg off\n");
    }
}

/// Every line for the devices of a list.
void run_each_line(config_list_node_t *devices) {
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_block_app_on_devices(devices, 12);
    utm_app_unblock_app_on_devices(devices, 12);
    utm_app_reset_devices(devices);
}

TEST_F(Enforcement, RunsALineForEveryDeviceInListOrderWhateverFails) {
    config_user_profile_t *profile = world::make_profile(1, {world::phone, world::tablet});
    world::on_system([](const std::string &line) { return line.find("AA:BB") < line.size(); });
    run_each_line(&profile->device_list);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "log Command lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18 return 1\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                              "run lcsh apg acl del AA:BB:CC:DD:EE:0F 12 0\n"
                              "log Command lcsh apg acl del AA:BB:CC:DD:EE:0F 12 0 return 1 != 0\n"
                              "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
                              "run lcsh apg acl reset AA:BB:CC:DD:EE:0F\n"
                              "log Command lcsh apg acl reset AA:BB:CC:DD:EE:0F return 1 != 0\n"
                              "run lcsh apg acl reset 00:11:22:33:44:55\n");
}

TEST_F(Enforcement, DoesNothingWithoutADeviceOrAProfile) {
    run_each_line(&world::make_profile(1)->device_list);
    run_each_line(nullptr);
    const mutex_guard lock(utm_app_config_mutex);
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
    __block_one_device_to_use_network(&tv);
    __unblock_one_device_to_use_network(&tv);
    EXPECT_EQ(world::trace(),
              "log [WARNING] __block_one_device_to_use_network is not implemented\n"
              "log [WARNING] __unblock_one_device_to_use_network is not implemented\n");
}

} // namespace

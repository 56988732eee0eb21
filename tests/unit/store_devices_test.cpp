#include "store/profiles.h"

#include "core/owners.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

class Devices : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

using world::both;

/// The profile's line about its devices.
std::string devices_text(int32_t profile_id) {
    const std::string text = world::render_profile(profile_id);
    const size_t start = text.find("devices");
    return text.substr(start, text.find(',') - start);
}

/// Reads a profile's devices: the count, then each address in hexadecimal.
std::string read_devices(int32_t profile_id) {
    int32_t count = 99;
    const heap_ptr<uint8_t> macs(utm_app_get_devices(profile_id, &count));
    std::string text = std::to_string(count) + (macs == nullptr ? " none" : "");
    char byte[4];
    for (int32_t i = 0; macs != nullptr && i < count * mac_bytes; ++i) {
        snprintf(byte, sizeof(byte), "%s%02X", i % mac_bytes == 0 ? " " : "", macs.get()[i]);
        text += byte;
    }
    return text;
}

// ---- Adding --------------------------------------------------------------------------------

TEST_F(Devices, AreListedInTheOrderInWhichTheyCame) {
    world::make_profile(1);
    EXPECT_EQ(utm_app_add_device(1, world::tablet.data()), 0);
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(world::trace(), "log Add dev mac = 00:11:22:33:44:55 to profile 1 success\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n");
    EXPECT_EQ(devices_text(1), "devices 2 [001122334455 AABBCCDDEE0F ]");
    EXPECT_EQ(read_devices(1), "2 001122334455 AABBCCDDEE0F");
}

TEST_F(Devices, AreRefusedWithoutTheProfile) {
    EXPECT_EQ(utm_app_add_device(9, world::tablet.data()), -1);
    EXPECT_EQ(world::trace(), "log Add dev to profile 9 failed because profile not exist\n");
}

TEST_F(Devices, AreAddedOnceAndLoggedOnce) {
    world::make_profile(1, {world::tablet});
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_add_device(1, world::tablet.data()), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Devices, MayBelongToTwoProfiles) {
    world::make_profile(1, {world::tablet});
    world::make_profile(2);
    EXPECT_EQ(utm_app_add_device(2, world::tablet.data()), 0);
    EXPECT_EQ(world::trace(), "log Add dev mac = 00:11:22:33:44:55 to profile 2 success\n");
    EXPECT_EQ(devices_text(1), devices_text(2));
    EXPECT_EQ(utm_app_delete_device(1, world::tablet.data()), 0);
    EXPECT_EQ(devices_text(2), "devices 1 [001122334455 ]");
}

/// A profile that is cut off, with application 12 blocked by usage and rule, 13 by usage only,
/// 14 by rule only, 15 limited and not reached.
config_user_profile_t *make_profile_with_rules() {
    config_user_profile_t *profile = world::make_profile(1);
    profile->daily_limit_enable = 1;
    profile->blocked = 1;
    world::make_usage(profile, {{12, 5}, {13, 6}, {15, 7}});
    world::usage_of(profile, 12)->blocked = 1;
    world::usage_of(profile, 13)->blocked = 1;
    world::make_policy(4, {{15, 1, 60}, {14, 2, 0}, {12, 2, 0}}, profile);
    return profile;
}

TEST_F(Devices, JoinTheBlocksOfTheirProfileInOrder) {
    make_profile_with_rules();
    world::set_active(true);
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(world::trace(), "log [WARNING] __block_one_device_to_use_network is not implemented\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 13 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 14 0 18\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n");
}

TEST_F(Devices, JoinNoBlocksWhileTheFeatureIsOff) {
    make_profile_with_rules();
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(world::trace(), "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n");
}

TEST_F(Devices, AreBlockedAlone) {
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1, {world::tablet}));
    world::set_active(true);
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n");
}

TEST_F(Devices, AreWarnedAboutOnlyInAProfileThatIsCutOff) {
    struct {
        int32_t enable, blocked;
        bool warned;
    } const table[] = {{0, 0, false}, {0, 1, false}, {1, 0, false}, {1, 1, true}};
    for (const auto &row : table) {
        SetUp();
        config_user_profile_t *profile = world::make_profile(1);
        profile->daily_limit_enable = row.enable;
        profile->blocked = row.blocked;
        world::set_active(true);
        EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
        EXPECT_EQ(world::trace(),
                  std::string(row.warned ? "log [WARNING] __block_one_device_to_use_network is "
                                           "not implemented\n"
                                         : "") +
                      "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n");
    }
}

TEST_F(Devices, AreAddedAlthoughTheirLinesFail) {
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1));
    world::set_active(true);
    world::on_system([](const std::string &) { return 256; });
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "log Command lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18 return 256\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n");
    EXPECT_EQ(devices_text(1), "devices 1 [AABBCCDDEE0F ]");
}

// ---- Deleting ------------------------------------------------------------------------------

TEST_F(Devices, AreNotDeletedWithoutTheProfile) {
    EXPECT_EQ(utm_app_delete_device(9, world::tablet.data()), -1);
    EXPECT_EQ(world::trace(), "log Del dev from profile 9 failed because profile not exist\n");
}

TEST_F(Devices, AreDeletedWithSuccessWhenTheProfileDoesNotHoldThem) {
    world::make_profile(1, {world::tablet});
    world::set_active(true);
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_delete_device(1, world::phone.data()), 0);
    EXPECT_EQ(world::trace(), "log Del dev AA:BB:CC:DD:EE:0F from profile 1 failed because "
                              "cannot find dev\n");
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Devices, LeaveTheOthersInOrder) {
    const world::mac_t third = {1, 2, 3, 4, 5, 6};
    struct {
        world::mac_t leaving;
        const char *left;
    } const table[] = {
        {world::tablet, "devices 2 [AABBCCDDEE0F 010203040506 ]"},
        {world::phone, "devices 2 [001122334455 010203040506 ]"},
        {third, "devices 2 [001122334455 AABBCCDDEE0F ]"},
    };
    for (const auto &row : table) {
        SetUp();
        world::make_profile(1, {world::tablet, world::phone, third});
        EXPECT_EQ(utm_app_delete_device(1, row.leaving.data()), 0);
        EXPECT_EQ(devices_text(1), row.left);
    }
}

TEST_F(Devices, StayInTheTextAfterTheLastOneIsDeleted) {
    world::make_profile(1, {world::tablet});
    EXPECT_EQ(utm_app_delete_device(1, world::tablet.data()), 0);
    EXPECT_EQ(world::trace(), "log Del dev 00:11:22:33:44:55 from profile 1 success\n");
    EXPECT_EQ(devices_text(1), "devices 0 [001122334455 ] (really [])");
    EXPECT_EQ(read_devices(1), "0 none");
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(devices_text(1), "devices 1 [AABBCCDDEE0F ]");
}

TEST_F(Devices, AreReleasedWhenTheyLeave) {
    const std::string reset = "run lcsh apg acl reset 00:11:22:33:44:55\n";
    const std::string script = "run profile_daily_limit.sh -C -3\n";
    struct {
        bool active;
        int32_t enable, blocked;
        std::string released;
    } const table[] = {
        {false, 1, 1, ""},   {false, 0, 0, ""},   {true, 0, 0, reset},
        {true, 1, 0, reset}, {true, 0, 1, reset}, {true, 1, 1, reset + script},
    };
    for (const auto &row : table) {
        SetUp();
        config_user_profile_t *profile = world::make_profile(-3, {world::tablet});
        profile->daily_limit_enable = row.enable;
        profile->blocked = row.blocked;
        world::set_active(row.active);
        EXPECT_EQ(utm_app_delete_device(-3, world::tablet.data()), 0);
        EXPECT_EQ(world::trace(),
                  row.released + "log Del dev 00:11:22:33:44:55 from profile -3 success\n");
    }
}

TEST_F(Devices, AreDeletedAlthoughTheirLinesFail) {
    config_user_profile_t *profile = world::make_profile(1, {world::tablet});
    profile->daily_limit_enable = 1;
    profile->blocked = 1;
    world::set_active(true);
    world::on_system([](const std::string &) { return 32512; });
    EXPECT_EQ(utm_app_delete_device(1, world::tablet.data()), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl reset 00:11:22:33:44:55\n"
                              "log Command lcsh apg acl reset 00:11:22:33:44:55 return 32512 != 0\n"
                              "run profile_daily_limit.sh -C 1\n"
                              "log Del dev 00:11:22:33:44:55 from profile 1 success\n");
}

// ---- Reading -------------------------------------------------------------------------------

TEST_F(Devices, AreReadFromOneProfileOnly) {
    world::make_profile(1, both);
    world::make_profile(2, {world::phone});
    world::make_profile(3);
    EXPECT_EQ(read_devices(1), "2 001122334455 AABBCCDDEE0F");
    EXPECT_EQ(read_devices(2), "1 AABBCCDDEE0F");
    EXPECT_EQ(read_devices(3), "0 none");
    EXPECT_EQ(read_devices(4), "-1 none");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Devices, AreSpelledInATextOfThirteenCharactersEach) {
    config_user_profile_t *profile = world::make_profile(1, both);
    EXPECT_EQ(strlen(profile->device_list_string), 26U);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_rebuild_device_list_string(profile);
    }
    EXPECT_STREQ(profile->device_list_string, "001122334455 AABBCCDDEE0F ");
}

} // namespace

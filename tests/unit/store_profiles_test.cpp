#include "store/profiles.h"

#include "core/owners.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

class Profiles : public world_test {};
class Devices : public world_test {};

using world::both;
using world::phone;
using world::tablet;

/// How far a profile is cut off: by its flag, where the limit is in force, and while the feature is
/// active.
struct cut_off_t {
    bool active;
    int32_t enable, blocked;
};

config_user_profile_t *make_cut_off(const cut_off_t &from, const std::vector<world::mac_t> &macs) {
    world::reset();
    config_user_profile_t *profile = world::make_profile(1, macs);
    profile->daily_limit_enable = from.enable;
    profile->blocked = from.blocked;
    world::set_active(from.active);
    return profile;
}

// ---- Creating ------------------------------------------------------------------------------

TEST_F(Profiles, StartWithoutALimitInForceAtTheirCreation) {
    world::set_now(4'102'444'800);
    EXPECT_EQ(utm_app_create_profile(7), 0);
    EXPECT_EQ(world::trace(), "log Create profile 7 success\n");
    EXPECT_EQ(world::render_lists(),
              "profile 7: devices 0 [], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, "
              "collected +2329819200, apps 0, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n");
}

TEST_F(Profiles, TakeAnyIdAndStandInTheOrderOfTheirCreation) {
    std::string lines;
    for (const int32_t id : {5, 3, 0, -3, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(utm_app_create_profile(id), 0);
        EXPECT_EQ(world::trace(), "log Create profile " + std::to_string(id) + " success\n");
        lines += "profile " + std::to_string(id) + ": devices 0 []\n";
    }
    EXPECT_EQ(world::brief(world::render_lists()), lines);
}

TEST_F(Profiles, KeepEverythingWhenTheyAreCreatedAgain) {
    config_user_profile_t *profile = world::make_profile(7, both);
    profile->daily_used = 30;
    world::make_usage(profile, {{12, 5}});
    world::make_policy(4, {{12, 2, 0}}, profile);
    const std::string before = world::render_lists();
    world::set_now(world::default_now + 60);
    EXPECT_EQ(utm_app_create_profile(7), 0);
    EXPECT_EQ(world::trace(), "log Create profile 7 success\n");
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Profiles, CanBeMadeOutsideOfAnyList) {
    const heap_ptr<config_user_profile_t> profile(utm_app_new_profile(7, world::default_now + 42));
    EXPECT_EQ(world::brief(world::render(*profile)),
              "profile 7: devices 0 [], collected +42\n  weekdays\n");
    EXPECT_EQ(world::render_lists() + world::trace(), "");
}

TEST_F(Profiles, GetTheirSevenWeekdaysAppended) {
    config_user_profile_t *profile = world::make_profile(7);
    list_record<config_weekday_limit_t>(profile->weekday_list.next)->limit = 60;
    {
        const mutex_guard lock(utm_app_config_mutex);
        EXPECT_EQ(utm_app_add_weekday_limits(7), 0);
        EXPECT_EQ(utm_app_add_weekday_limits(8), -1);
    }
    EXPECT_EQ(world::trace(), "log Add weekday to profile 8 failed because profile not exist\n");
    EXPECT_EQ(world::brief(world::render_profile(7)),
              "profile 7: devices 0 []\n"
              "  weekdays 0:60 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440 "
              "0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n");
}

// ---- Deleting ------------------------------------------------------------------------------

TEST_F(Profiles, AreDeletedWithSuccessWhenMissing) {
    world::make_profile(1);
    EXPECT_EQ(utm_app_delete_profile(9), 0);
    EXPECT_EQ(world::trace(), "log Delete profile 9 success\n");
    EXPECT_EQ(world::brief(world::render_lists()), "profile 1: devices 0 []\n");
}

TEST_F(Profiles, LeaveNothingBehind) {
    world::make_profile(1);
    config_user_profile_t *profile = world::make_profile(2, both);
    world::make_usage(profile, {{12, 5}, {13, 6}});
    world::make_policy(4, {{12, 2, 0}, {14, 1, 60}}, profile);
    world::make_policy(5, {});
    world::make_profile(3);
    EXPECT_EQ(utm_app_delete_profile(2), 0);
    EXPECT_EQ(world::trace(), world::reset_lines(both) +
                                  "log Delete user profile 2 and unblock all success\n"
                                  "log Delete profile 2 success\n");
    EXPECT_EQ(world::brief(world::render_lists()), "profile 1: devices 0 []\n"
                                                   "profile 3: devices 0 []\n"
                                                   "policy 5: profile none, count 0, rules\n");
}

TEST_F(Profiles, ReleaseTheirDevicesWhetherOrNotTheFeatureIsActive) {
    const std::string resets = world::reset_lines(both);
    struct {
        const char *name;
        std::vector<world::mac_t> devices;
        int32_t enable, blocked;
        std::string released;
    } const table[] = {
        {"without devices", {}, 0, 0, ""},
        {"without devices, blocked", {}, 1, 1, ""},
        {"free", both, 1, 0, resets},
        {"blocked", both, 1, 1, resets + world::unblock_event(1)},
        {"blocked, limit disabled", both, 0, 1, resets + world::unblock_event(1)},
    };
    for (const auto &row : table)
        for (const bool active : {false, true}) {
            make_cut_off({active, row.enable, row.blocked}, row.devices);
            EXPECT_EQ(utm_app_delete_profile(1), 0);
            EXPECT_EQ(world::trace(), row.released +
                                          "log Delete user profile 1 and unblock all success\n"
                                          "log Delete profile 1 success\n")
                << row.name << active;
        }
}

TEST_F(Profiles, AreFlushedInListOrder) {
    world::make_profile(5, {phone})->blocked = 1;
    world::make_profile(3);
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(9, {tablet}));
    world::make_policy(6, {});
    EXPECT_EQ(utm_app_flush_profiles(), 0);
    EXPECT_EQ(world::trace(), world::reset_lines({phone}) + world::unblock_event(5) +
                                  "log Delete user profile 5 and unblock all success\n"
                                  "log Delete user profile 3 and unblock all success\n" +
                                  world::reset_lines({tablet}) +
                                  "log Delete user profile 9 and unblock all success\n"
                                  "log Flush all profiles success\n");
    EXPECT_EQ(world::render_lists(), "policy 6: profile none, count 0, rules\n");
    EXPECT_EQ(utm_app_flush_profiles(), 0);
    EXPECT_EQ(world::trace(), "log Flush all profiles success\n");
}

// ---- Devices -------------------------------------------------------------------------------

/// Reads a profile's devices: the count, then each address in hexadecimal.
std::string read_devices(int32_t profile_id) {
    int32_t count = 99;
    const heap_ptr<uint8_t> macs(utm_app_get_devices(profile_id, &count));
    std::string text = std::to_string(count) + (macs == nullptr ? " none" : "");
    for (int32_t i = 0; macs != nullptr && i < count; ++i)
        text += std::string(" ") + mac_digits(macs.get() + i * mac_bytes).text;
    return text;
}

constexpr char phone_added[] = "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n";

TEST_F(Devices, AreAddedOnceToEachProfileThatIsThere) {
    world::make_profile(1);
    world::make_profile(2);
    EXPECT_EQ(utm_app_add_device(1, tablet.data()), 0);
    EXPECT_EQ(utm_app_add_device(1, phone.data()), 0);
    EXPECT_EQ(utm_app_add_device(1, tablet.data()), 0); // a second time, and no line
    EXPECT_EQ(utm_app_add_device(2, tablet.data()), 0);
    EXPECT_EQ(utm_app_add_device(9, tablet.data()), -1);
    EXPECT_EQ(world::trace(), "log Add dev mac = 00:11:22:33:44:55 to profile 1 success\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n"
                              "log Add dev mac = 00:11:22:33:44:55 to profile 2 success\n"
                              "log Add dev to profile 9 failed because profile not exist\n");
    EXPECT_EQ(world::brief(world::render_lists()),
              "profile 1: devices 2 [001122334455 AABBCCDDEE0F ]\n"
              "profile 2: devices 1 [001122334455 ]\n");
}

TEST_F(Devices, JoinTheBlocksOfTheirProfileInOrder) {
    // 12 is blocked by usage and by rule, 13 by usage, 14 by rule; 15 is limited and not reached.
    for (const bool active : {false, true}) {
        config_user_profile_t *profile = make_cut_off({active, 1, 1}, {tablet});
        world::make_usage(profile, {{12, 5}, {13, 6}, {15, 7}});
        world::usage_of(profile, 12)->blocked = 1;
        world::usage_of(profile, 13)->blocked = 1;
        world::make_policy(4, {{15, 1, 60}, {14, 2, 0}, {12, 2, 0}}, profile);
        EXPECT_EQ(utm_app_add_device(1, phone.data()), 0);
        const std::string joined =
            "log [WARNING] __block_one_device_to_use_network is not implemented\n"
            "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
            "run lcsh apg acl set AA:BB:CC:DD:EE:0F 13 0 18\n"
            "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
            "run lcsh apg acl set AA:BB:CC:DD:EE:0F 14 0 18\n";
        EXPECT_EQ(world::trace(), (active ? joined : "") + phone_added);
    }
}

TEST_F(Devices, AreNotWarnedAboutInAProfileThatIsNotCutOff) {
    for (const cut_off_t &from : {cut_off_t{true, 0, 0}, {true, 0, 1}, {true, 1, 0}}) {
        make_cut_off(from, {});
        EXPECT_EQ(utm_app_add_device(1, phone.data()), 0);
        EXPECT_EQ(world::trace(), phone_added) << from.enable << from.blocked;
    }
}

TEST_F(Devices, AreDeletedWithSuccessWhereTheyAreNotHeld) {
    make_cut_off({true, 1, 1}, {tablet});
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_delete_device(1, phone.data()), 0);
    EXPECT_EQ(utm_app_delete_device(9, tablet.data()), -1);
    EXPECT_EQ(world::trace(),
              "log Del dev AA:BB:CC:DD:EE:0F from profile 1 failed because cannot find dev\n"
              "log Del dev from profile 9 failed because profile not exist\n");
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Devices, LeaveTheOthersInOrder) {
    const world::mac_t third = {1, 2, 3, 4, 5, 6};
    const std::pair<world::mac_t, const char *> table[] = {
        {tablet, "2 AABBCCDDEE0F 010203040506"},
        {phone, "2 001122334455 010203040506"},
        {third, "2 001122334455 AABBCCDDEE0F"},
    };
    for (const auto &[leaving, left] : table) {
        world::reset();
        world::make_profile(1, {tablet, phone, third});
        EXPECT_EQ(utm_app_delete_device(1, leaving.data()), 0);
        EXPECT_EQ(read_devices(1), left);
        EXPECT_EQ(world::render_profile(1).find("really"), std::string::npos) << left;
    }
}

TEST_F(Devices, StayInTheTextAfterTheLastOneIsDeleted) {
    world::make_profile(1, {tablet});
    EXPECT_EQ(utm_app_delete_device(1, tablet.data()), 0);
    EXPECT_EQ(world::brief(world::render_profile(1)),
              "profile 1: devices 0 [001122334455 ] (really [])\n");
    EXPECT_EQ(read_devices(1), "0 none");
    EXPECT_EQ(utm_app_add_device(1, phone.data()), 0);
    EXPECT_EQ(world::brief(world::render_profile(1)), "profile 1: devices 1 [AABBCCDDEE0F ]\n");
}

TEST_F(Devices, AreReleasedWhenTheyLeave) {
    const std::string reset = world::reset_lines({tablet});
    const std::string script = "run profile_daily_limit.sh -C 1\n";
    const std::pair<cut_off_t, std::string> table[] = {
        {{false, 1, 1}, ""},   {{false, 0, 0}, ""},   {{true, 0, 0}, reset},
        {{true, 1, 0}, reset}, {{true, 0, 1}, reset}, {{true, 1, 1}, reset + script},
    };
    for (const auto &[from, released] : table) {
        make_cut_off(from, {tablet});
        EXPECT_EQ(utm_app_delete_device(1, tablet.data()), 0);
        EXPECT_EQ(world::trace(),
                  released + "log Del dev 00:11:22:33:44:55 from profile 1 success\n");
    }
}

TEST_F(Devices, AreReadFromOneProfileOnly) {
    world::make_profile(1, both);
    world::make_profile(2, {phone});
    world::make_profile(3);
    EXPECT_EQ(read_devices(1), "2 001122334455 AABBCCDDEE0F");
    EXPECT_EQ(read_devices(2), "1 AABBCCDDEE0F");
    EXPECT_EQ(read_devices(3), "0 none");
    EXPECT_EQ(read_devices(4), "-1 none");
    EXPECT_EQ(world::trace(), "");
}

} // namespace

/// Both threads at work at once, for as long as it takes ThreadSanitizer to see what they share.

#include "tests/daemon/support/clients.h"
#include "tests/daemon/support/fixture.h"

#include <csignal>
#include <cstdio>
#include <filesystem>

namespace {

constexpr unsigned CLIENTS = 4;
const size_t COMMANDS = as_many_as("UTM_COMMANDS", 10'000);

class DaemonThreads : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        std::filesystem::create_directory("/tmp/ApplicationData");
        prescribe("reply", usage_reply({{301, 7}, {305, 1}, {310, 20}, {0, 9}}));
        start();
    }
};

utm_app_config_cmd random_with_log(std::mt19937 &random) {
    if (random() % 8 == 0)
        return utm_app_config_cmd{.type = UTM_APP_CONFIG_SET_DEBUG,
                                  .arg0 = static_cast<int32_t>(random() % 2)};
    return random_command(random);
}

/// One command for profile and policy 1, with arguments in range.
request_maker always(uint8_t type) {
    return [type](std::mt19937 &random) {
        const auto minutes = static_cast<int32_t>(random() % 60 + 1);
        if (type == UTM_APP_CONFIG_ADD_DEVICE || type == UTM_APP_CONFIG_DEL_DEVICE)
            return sim_device_command(type, 1, {2, 0, 0, 0, 0, 7});
        if (type == UTM_APP_CONFIG_ADD_APPS_TO_POLICY)
            return sim_rules_command(1, {{305, 1, static_cast<uint16_t>(minutes)}});
        if (type == UTM_APP_CONFIG_EXPORT_STATISTICS || type == UTM_APP_CONFIG_IMPORT_STATISTICS)
            return sim_path_command(type, "/tmp/saved.json");
        const bool is_switch =
            type == UTM_APP_CONFIG_SET_ACTIVATE || type == UTM_APP_CONFIG_SET_DEBUG;
        return utm_app_config_cmd{.type = type,
                                  .arg0 = is_switch ? minutes % 2 : 1,
                                  .arg1 = 1,
                                  .arg2 = minutes % 2,
                                  .arg3 = minutes,
                                  .arg4 = minutes};
    };
}

/// Profile 1 with a device and policy 1, whether or not they were there.
void set_up_everything() {
    ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1});
    ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1});
    ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2}));
    ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 1, .arg2 = 1});
    ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 1, .arg3 = 5});
    ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 1, .arg4 = 2});
    ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 1});
    ask(sim_rules_command(1, {{305, 1, 1}, {310, 2, 0}}));
    ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 1, .arg1 = 1});
    ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, "/tmp/saved.json"));
}

constexpr uint8_t COMMAND_TYPES[] = {0,  1,  2,  3,  4,  26, 27, 28, 29, 30, 31, 32, 33, 34, 35,
                                     36, 37, 39, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51};

} // namespace

/// Alone, a command that forgets a lock is not held up by one that takes it: it meets the tick
/// while the tick's query runs.
TEST_F(DaemonThreads, NoCommandSharesAnythingUnguardedWithATick) {
    for (const uint8_t type : COMMAND_TYPES) {
        SCOPED_TRACE("command " + std::to_string(type));
        set_up_everything();
        busy_clients clients(1, always(type));
        for (int day = 0; day < 3; ++day) {
            sim_clock_jump(&clock, 24 * 60 * 60);
            ASSERT_NO_FATAL_FAILURE(tick());
        }
        ASSERT_TRUE(sim_wait_for([&] { return clients.answered() > 0; }));
        clients.stop();
        EXPECT_EQ(clients.left_waiting(), 0u);
    }
}

TEST_F(DaemonThreads, TicksAndCommandsShareEverythingWithoutARace) {
    int ticks = 0;
    size_t answered = 0;
    {
        busy_clients clients(CLIENTS, random_with_log);
        while (clients.answered() < COMMANDS && !HasFatalFailure()) {
            tick();
            ++ticks;
            sim_clock_jump(&clock, 11 * 60 * 60); // every other tick is on a new day
        }
        clients.stop();
        answered = clients.answered();
        EXPECT_EQ(clients.left_waiting(), 0u);
    }
    printf("%zu commands beside %d ticks\n", answered, ticks);

    EXPECT_GT(ticks, 16) << "the days did not pass";
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(DaemonThreads, SignalsOnEitherThreadRaceWithNothing) {
    busy_clients clients(2, random_with_log);
    const size_t goal = COMMANDS / 10;
    for (int i = 0; clients.answered() < goal && !HasFatalFailure(); ++i) {
        ASSERT_TRUE(sim_daemon_signal(daemon, SIGPIPE));
        tick();
    }
    clients.stop();

    EXPECT_GT(log_count("Receive SIGPIPE"), 0u);
    EXPECT_EQ(clients.left_waiting(), 0u);
}

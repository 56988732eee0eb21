/// Both threads at work at once, for as long as it takes ThreadSanitizer to see what they share.

#include "tests/daemon/support/clients.h"
#include "tests/daemon/support/fixture.h"

#include <csignal>
#include <filesystem>

namespace {

constexpr unsigned CLIENTS = 4;
constexpr size_t COMMANDS = 3000;

constexpr char USAGE[] = R"({"data":[{"type":"APP","app_id":301,"total_time_usage":7},
                                     {"type":"APP","app_id":305,"total_time_usage":1},
                                     {"type":"APP","app_id":310,"total_time_usage":20},
                                     {"type":"INTERNET","app_id":0,"total_time_usage":9}]})";

class daemon_threads : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        std::filesystem::create_directory("/tmp/ApplicationData");
        prescribe("reply", USAGE);
        start();
    }
};

utm_app_config_cmd random_with_log(std::mt19937 &random) {
    if (random() % 8 == 0)
        return sim_command(
            {.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = static_cast<int32_t>(random() % 2)});
    return random_command(random);
}

} // namespace

TEST_F(daemon_threads, ticks_and_commands_share_everything_without_a_race) {
    int ticks = 0;
    {
        busy_clients clients(CLIENTS, random_with_log);
        while (clients.answered() < COMMANDS && !HasFatalFailure()) {
            tick();
            ++ticks;
            sim_clock_jump(&clock, 3 * 60 * 60); // eight ticks a day
        }
        clients.stop();
        EXPECT_EQ(clients.left_waiting(), 0u);
    }

    EXPECT_GT(ticks, 16) << "the days did not pass";
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(daemon_threads, signals_on_either_thread_race_with_nothing) {
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

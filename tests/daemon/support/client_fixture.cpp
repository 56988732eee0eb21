#include "tests/daemon/support/client_fixture.h"

#include <filesystem>

namespace {

constexpr time_t DAY = 24 * 60 * 60;

std::string statistics(int online, const std::vector<std::pair<int, int>> &apps) {
    std::string list = R"({"type":"INTERNET","app_id":0,"total_time_usage":)";
    list += std::to_string(online) + "}";
    for (const auto &[app_id, minutes] : apps)
        list += R"(,{"type":"APP","app_id":)" + std::to_string(app_id) + R"(,"total_time_usage":)" +
                std::to_string(minutes) + "}";
    return "{\"data\":[" + list + "]}\n";
}

} // namespace

void client_test::SetUp() {
    daemon_test::SetUp();
    // Where a usage file is, switching the feature on writes none.
    std::filesystem::create_directory("/tmp/ApplicationData");
    ASSERT_TRUE(sim_write_file(USAGE_PATH, "of an earlier life"));
    start_with_log();
}

program_end client_test::ctl(const std::vector<std::string> &words, appctl_setting setting) {
    setting.clock_path = clock.path;
    return appctl(words, setting);
}

void client_test::must(const std::vector<std::string> &words) {
    ASSERT_EQ(ctl(words), done());
}

void client_test::add_mia() {
    must({"profile", "add", "3"});
    must({"device", "add", "3", "02:00:00:00:00:0A"});
}

void client_test::use(int online, const std::vector<std::pair<int, int>> &apps) {
    prescribe("reply.profile", statistics(online, apps));
    tick();
    prescribe("reply.profile", statistics(0, {}));
}

void client_test::sleep_over() {
    sim_clock_jump(&clock, DAY);
    tick();
}

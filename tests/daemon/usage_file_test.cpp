/// What the daemon needs for the worst files that somebody may ask it to import.

#include "tests/daemon/support/clients.h"
#include "tests/daemon/support/fixture.h"

#include <chrono>
#include <filesystem>

namespace {

class DaemonUsageFile : public daemon_test {};

/// @return the most that the process has had in memory, in KiB
long peak_kib(pid_t pid) {
    long peak = -1;
    for (const std::string &line :
         sim_split_lines(sim_read_file("/proc/" + std::to_string(pid) + "/status")))
        sscanf(line.c_str(), "VmHWM: %ld kB", &peak);
    return peak;
}

std::string repeated(const std::string &piece, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

/// @return the largest file that an import takes: profiles, and figures that need the most memory
std::string largest_file() {
    constexpr int profiles = 67'990;
    std::string text = "{\"user_profile_list\":[";
    for (int i = 0; i < profiles; ++i)
        text += std::string(i == 0 ? "" : ",") + "{\"user_profile_id\":" + std::to_string(i) + "}";
    return text + "],\"global_stat\":[],\"z\":[" + repeated("1.,", 1'230'000 - 2 * 68'000) + "1.]}";
}

} // namespace

TEST_F(DaemonUsageFile, AnyFileIsAnsweredSoonAndInBoundedMemory) {
    std::filesystem::create_directory("/tmp/ApplicationData");
    start();
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), OK);
    const struct {
        const char *name;
        std::string text;
        int status;
    } files[] = {
        {"empty objects", repeated("{},", 8 * 1024 * 1024 / 3), FAIL},
        {"numbers", "[" + repeated("0,", 4 * 1024 * 1024 - 2) + "0]", FAIL},
        {"nothing but blanks", std::string(8 * 1024 * 1024, ' '), FAIL},
        {"the largest", largest_file(), OK},
    };
    for (const auto &file : files) {
        ASSERT_TRUE(sim_write_file("/tmp/file.json", file.text));
        const auto begun = std::chrono::steady_clock::now();
        EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, "/tmp/file.json")),
                  file.status)
            << file.name;
        EXPECT_LT(std::chrono::steady_clock::now() - begun,
                  std::chrono::seconds(IS_SANITIZED || IS_EMULATED ? 30 : 3))
            << file.name;
    }
    std::filesystem::remove("/tmp/file.json");
    RecordProperty("peak_kib", static_cast<int>(peak_kib(daemon.pid)));
    if (!IS_SANITIZED) {
        EXPECT_LE(peak_kib(daemon.pid), 250'000'000 / 1024);
    }
}

/// The daemon's command line: two words are answered, all others are ignored.

#include "tests/daemon/support/fixture.h"
#include "tests/lib/program.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using testing::IsEmpty;

namespace {

class DaemonArguments : public daemon_test {};

const program_end help_end = {
    .status = 0,
    .out = "Usage: utm_appd [--help | --version]\n"
           "Tracks and limits a family's internet time. Binds its control socket,\n"
           "detaches and runs until SIGINT; utm_appctl configures and asks it.\n"};
const program_end version_end = {.status = 0, .out = "utm_appd " UTM_VERSION "\n"};

} // namespace

TEST_F(DaemonArguments, HelpAndVersionStartNothing) {
    EXPECT_EQ(run_program({UTM_DAEMON, "--help"}), help_end);
    EXPECT_EQ(run_program({UTM_DAEMON, "--version"}), version_end);

    EXPECT_FALSE(std::filesystem::exists(UTM_APP_CONFIG_SOCKET_PATH));
    EXPECT_FALSE(std::filesystem::exists("/tmp/utm_log"));
    EXPECT_THAT(sim_children(), IsEmpty()) << "somebody stayed in the background";
    EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(DaemonArguments, ARunningDaemonKeepsItsSocketFromThem) {
    start_with_log();
    struct stat before = {};
    ASSERT_EQ(stat(UTM_APP_CONFIG_SOCKET_PATH, &before), 0);

    EXPECT_EQ(run_program({UTM_DAEMON, "--help"}), help_end);
    EXPECT_EQ(run_program({UTM_DAEMON, "--version"}), version_end);

    struct stat after = {};
    ASSERT_EQ(stat(UTM_APP_CONFIG_SOCKET_PATH, &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
    EXPECT_THAT(log_lines(), IsEmpty());
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK) << "asked is the first daemon";
    EXPECT_EQ(log_count("[socket] Receive cmd type=0"), 1u);
}

TEST_F(DaemonArguments, WhatCannotBePrintedIsNoSuccess) {
    for (const char *word : {"--help", "--version"}) {
        const auto full = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
        const auto closed = [] { close(STDOUT_FILENO); };
        EXPECT_EQ(run_program({UTM_DAEMON, word}, full), program_end{.status = 1}) << word;
        EXPECT_EQ(run_program({UTM_DAEMON, word}, closed), program_end{.status = 1}) << word;
    }
    EXPECT_FALSE(std::filesystem::exists(UTM_APP_CONFIG_SOCKET_PATH));
}

TEST_F(DaemonArguments, AllOthersAreIgnored) {
    const std::vector<text_lines> others = {
        {"-h"},           {"-V"},   {"help"}, {"--help=no"},           {"--hel"},
        {"--Version"},    {"--"},   {""},     {"--help", "--version"}, {"--version", ""},
        {"-d", "--help"}, {"stop"},
    };
    for (const text_lines &arguments : others) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        options.arguments = arguments;

        start();

        EXPECT_EQ(daemon.starter_status, 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK);
        stop();
    }
}

/// What others lay in /tmp, and signals that others send.

#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

text_lines system_log() {
    return sim_split_lines(sim_read_file(std::string(ROUTER_DIR) + "/syslog"));
}

std::string unused(const std::string &folder) {
    return folder + " is not used: it has to be a folder of user " + std::to_string(geteuid()) +
           " that nobody else may write";
}

constexpr int WITHOUT_EFFECT[] = {SIGHUP, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF};

/// @return the set of signals in a line of a process's status, such as "SigIgn"
unsigned long signals_in(pid_t pid, const std::string &which) {
    for (const std::string &line :
         sim_split_lines(sim_read_file("/proc/" + std::to_string(pid) + "/status")))
        if (line.rfind(which + ":", 0) == 0)
            return std::stoul(line.substr(which.size() + 1), nullptr, 16);
    return ~0UL;
}

class DaemonTrust : public daemon_test {};

} // namespace

TEST_F(DaemonTrust, ALogThatIsAFullPipeHoldsNobodyUp) {
    start_with_log();
    fs::create_directory("/tmp/utm_log");
    fs::permissions("/tmp/utm_log", fs::perms(0755));
    ASSERT_EQ(mkfifo(LOG_PATH, 0666), 0);
    const int held = open(LOG_PATH, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(held, 0);
    const std::string filling(4096, 'x');
    while (write(held, filling.data(), filling.size()) > 0) {
    }
    ASSERT_EQ(errno, EAGAIN);

    ASSERT_TRUE(sim_daemon_signal(daemon, SIGPIPE));
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK);
    tick();
    close(held);
}

TEST_F(DaemonTrust, FoldersOfOthersAreLeftAloneAndReportedOnce) {
    for (const char *folder : {"/tmp/utm_log", "/tmp/ApplicationData"}) {
        ASSERT_EQ(mkdir(folder, 0777), 0);
        ASSERT_EQ(chmod(folder, 0777), 0);
    }
    ASSERT_TRUE(sim_write_file("/tmp/victim", "theirs"));
    fs::create_symlink("/tmp/victim", USAGE_PATH);
    fs::create_symlink("/tmp/made_by_touch", LOG_PATH);
    start();

    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), OK);
    ASSERT_TRUE(sim_daemon_signal(daemon, SIGPIPE));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, USAGE_PATH)), FAIL);
        EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, USAGE_PATH)), FAIL);
    }

    EXPECT_THAT(system_log(), testing::UnorderedElementsAre(unused("/tmp/utm_log"),
                                                            unused("/tmp/ApplicationData")));
    EXPECT_EQ(sim_read_file("/tmp/victim"), "theirs");
    EXPECT_FALSE(fs::exists("/tmp/made_by_touch"));
    EXPECT_EQ(std::distance(fs::directory_iterator("/tmp/utm_log"), {}), 1);
    fs::remove("/tmp/victim");
}

TEST_F(DaemonTrust, AFolderThatItMadeItselfPassesWhateverTheUmask) {
    options.in_child = [] { umask(0); };
    start();

    ASSERT_TRUE(sim_daemon_signal(daemon, SIGPIPE));

    ASSERT_TRUE(wait_for_log("Receive SIGPIPE"));
    fs::remove_all("/tmp/utm_log");
    EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, "")), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), OK);
    EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, "")), FAIL);
    EXPECT_EQ(log_count("import from  failed"), 1u);
    EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(DaemonTrust, ASignaturesControlCharactersAreShown) {
    start_with_log();

    EXPECT_EQ(load_signature("/tmp/a\x1b[2J"), UTM_APP_CONFIG_STATUS_NOT_LOADED);

    EXPECT_THAT(log_lines(),
                ElementsAre("[socket] Receive cmd type=46", "UTM_APP_CONFIG_LOAD_SIGNATURE",
                            "cmd = lcsh load /tmp/a\\x1B[2J"));
}

TEST_F(DaemonTrust, SomeSignalsHaveNoEffect) {
    start_with_log();
    for (const int signal : WITHOUT_EFFECT) {
        ASSERT_TRUE(sim_daemon_signal(daemon, signal));
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK) << strsignal(signal);
    }
    // A sleep that they cut short would bring the next tick forward.
    for (int i = 0; i < 1000; ++i)
        sim_daemon_signal(daemon, WITHOUT_EFFECT[i % 6]);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK);
    EXPECT_THAT(journal(), IsEmpty());
    tick();
    EXPECT_THAT(journal(), ElementsAre(router_query(NOON, NOON + 60)));
}

TEST_F(DaemonTrust, ProgramsThatItStartsDieOfTheseSignals) {
    start();
    const int busy = occupy_the_socket_thread();
    unsigned long wanted = 0;
    for (const int signal : WITHOUT_EFFECT)
        wanted |= 1UL << (signal - 1);
    const std::set<pid_t> children = children_of(daemon.pid);
    EXPECT_FALSE(children.empty());
    for (const pid_t child : children) {
        EXPECT_EQ(signals_in(child, "SigIgn") & wanted, 0u);
        EXPECT_EQ(signals_in(child, "SigBlk") & wanted, 0u);
    }
    open_gates();
    EXPECT_EQ(sim_status(sim_read_answer(busy)), OK);
    close(busy);
}

TEST_F(DaemonTrust, ASecondDaemonSaysWhoseSocketItTakes) {
    start();
    sim_daemon second;
    EXPECT_THAT(system_log(), IsEmpty());

    ASSERT_TRUE(sim_daemon_start(&second, options));

    EXPECT_THAT(system_log(), ElementsAre("replacing /dev/utm_app_config_socket, on which another "
                                          "process still listens"));
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK);
    sim_daemon_kill(&daemon);
    std::swap(daemon.pid, second.pid);
}

/// The daemon's start, its loop and its end. The daemon tests show how it settles its descriptors.

#include "daemon.h"

#include "control/fd_event.h"
#include "control/socket_server.h"
#include "core/debug_log.h"
#include "format/protocol.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "sim/harness/client.h"
#include "tests/lib/exchange.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "usage/top_apps.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Daemon : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        running = 1;
    }
    void TearDown() override {
        running = 1;
        signal(SIGINT, SIG_DFL);
        signal(SIGPIPE, SIG_DFL);
    }
};

/// Whether every signal that can be held back is held back while the handler runs.
bool blocks_everything(const sigset_t &mask) {
    for (int signo = 1; signo < SIGRTMAX; ++signo)
        if (signo != SIGKILL && signo != SIGSTOP && (signo < 32 || signo >= SIGRTMIN) &&
            sigismember(&mask, signo) != 1)
            return false;
    return true;
}

TEST_F(Daemon, InstallsOneHandlerForBothSignals) {
    constexpr int kept_by_libc = 0x04000000;
    utm_app_install_signal_handlers();
    for (const int signo : {SIGINT, SIGPIPE}) {
        struct sigaction action = {};
        ASSERT_EQ(sigaction(signo, nullptr, &action), 0);
        EXPECT_EQ(action.sa_handler, signal_handler) << signo;
        EXPECT_EQ(action.sa_flags & ~kept_by_libc, SA_RESTART) << signo;
        EXPECT_TRUE(blocks_everything(action.sa_mask)) << signo;
    }
}

TEST_F(Daemon, HandlesEachSignal) {
    struct {
        int signo, running_after;
        const char *trace;
    } const table[] = {
        {SIGINT, 0, ""},
        {SIGPIPE, 1, "log Receive SIGPIPE\n"},
        {SIGTERM, 1, ""},
        {0, 1, ""},
    };
    for (const auto &row : table) {
        SetUp();
        signal_handler(row.signo);
        EXPECT_EQ(running, row.running_after) << row.signo;
        EXPECT_EQ(world::trace(), row.trace) << row.signo;
    }
}

TEST_F(Daemon, LogsSigpipeWhileLoggingIsOff) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    utm_app_install_signal_handlers();
    raise(SIGPIPE);
    EXPECT_EQ(world::log(), "Receive SIGPIPE\n");
}

// ---- The main loop -------------------------------------------------------------------------

/// Runs the main loop until it has slept so many times.
/// @return the sleeps before each router-wide query, that is, before each tick
std::vector<int> ticks_within(int sleeps_wanted) {
    int sleeps = 0;
    std::vector<int> ticks;
    world::on_popen([&](const std::string &) {
        ticks.push_back(sleeps);
        return std::string();
    });
    world::on_sleep([&](unsigned seconds) {
        EXPECT_EQ(seconds, 1U);
        if (++sleeps == sleeps_wanted)
            running = 0;
    });
    utm_app_main_loop();
    EXPECT_EQ(sleeps, sleeps_wanted);
    return ticks;
}

TEST_F(Daemon, TicksAtOnceAndThenEverySixtySleeps) {
    const std::pair<int, std::vector<int>> table[] = {
        {1, {0}}, {60, {0}}, {61, {0, 60}}, {120, {0, 60}}, {121, {0, 60, 120}},
    };
    for (const auto &[sleeps, ticks] : table) {
        SetUp();
        EXPECT_EQ(ticks_within(sleeps), ticks) << sleeps;
    }
}

TEST_F(Daemon, CollectsProfilesThenTheRouterAndExportsInATick) {
    world::make_profile(1, {world::tablet});
    world::set_active(true);
    last_export_statistics_ts = 0;
    ticks_within(1);
    EXPECT_EQ(world::trace(), "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                              "'{\"s\":1772625540,\"e\":1772625540,\"mac\":\"001122334455 \"}'\n"
                              "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                              "'{\"s\":1772625540,\"e\":1772625540}'\n"
                              "log export to /tmp/ApplicationData/app_usage.json failed\n");
}

TEST_F(Daemon, FinishesTheTickAndSleepsOnceMoreAfterSigint) {
    world::make_profile(1, {world::tablet});
    int queries = 0;
    int sleeps = 0;
    world::on_popen([&](const std::string &) {
        ++queries;
        signal_handler(SIGINT);
        return std::string();
    });
    world::on_sleep([&](unsigned) { ++sleeps; });
    utm_app_main_loop();
    EXPECT_EQ(queries, 2);
    EXPECT_EQ(sleeps, 1);
}

TEST_F(Daemon, PutsItsSignalHandlersBackEverySecond) {
    int sleeps = 0;
    world::on_sleep([&](unsigned) {
        struct sigaction action = {};
        sigaction(SIGINT, nullptr, &action);
        EXPECT_EQ(action.sa_handler, signal_handler) << sleeps;
        signal(SIGINT, SIG_IGN);
        if (++sleeps == 3)
            running = 0;
    });
    utm_app_main_loop();
    EXPECT_EQ(sleeps, 3);
}

// ---- Start-up ------------------------------------------------------------------------------

class DaemonStart : public Daemon {
protected:
    void TearDown() override {
        close(listen_fd);
        listen_fd = -1;
        fd_event_reset();
        fs::remove_all(UTM_APP_CONFIG_SOCKET_PATH);
        Daemon::TearDown();
    }

    /// Ends the control-socket thread while it waits for a program that a client's command started.
    /// @param act  done in that thread, once its end has begun
    static void end_the_thread_during_a_program(const std::function<void()> &act) {
        ASSERT_EQ(utm_app_config_handler_init(), 0);
        world::make_profile(1, {world::tablet});
        std::atomic<bool> runs = false;
        world::on_system([&](const std::string &) {
            runs = true;
            pollfd end = {listen_fd, 0, 0};
            EXPECT_EQ(poll(&end, 1, -1), 1);
            act();
            return 0;
        });
        ASSERT_EQ(utm_app_config_handler_start(), 0);
        const int client = sim_connect();
        const utm_app_config_cmd asked = world::request(UTM_APP_CONFIG_DELETE_PROFILE, {1});
        ASSERT_EQ(write(client, &asked, sizeof(asked)), static_cast<ssize_t>(sizeof(asked)));
        while (!runs)
            std::this_thread::yield();
        utm_app_config_handler_stop();
        close(client);
    }
};

TEST_F(DaemonStart, StartsWithAnEmptyStoreAndAllTimesAtNow) {
    world::set_now(1'772'700'000);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_user_profile_list = {};
        utm_app_config_app_policy_list = {};
        utm_app_config_global_app_stat_list = {};
        utm_app_config_global_app_stat_list_count = 9;
    }
    fd_event_reset();
    fd_event_add(127, fd_event_read, nullptr);
    ASSERT_EQ(utm_app_config_handler_init(), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +74400\n");
    EXPECT_EQ(last_export_statistics_ts, 1'772'700'000);
    EXPECT_EQ(fd_event_max_fd(), listen_fd);
    EXPECT_TRUE(fd_event_is_registered(listen_fd));
}

TEST_F(DaemonStart, ReportsASocketThatCannotBeBound) {
    const std::string failed = "log utm_app_config_socket_init_binding failed\n";
    fs::create_directory(UTM_APP_CONFIG_SOCKET_PATH);
    EXPECT_LT(utm_app_config_handler_init(), 0);
    EXPECT_EQ(world::trace(),
              "log Can't bind unix address: /dev/utm_app_config_socket(98)\n" + failed);
    ASSERT_EQ(utm_app_debug_set(0), 0);
    EXPECT_LT(utm_app_config_handler_init(), 0);
    EXPECT_EQ(world::trace(), failed);
}

TEST_F(Daemon, StartsTheControlSocketThreadAndReportsHow) {
    struct {
        int error, result;
        unsigned debug;
        const char *trace;
    } const table[] = {
        {0, 0, 1, "log Config handler init success\n"},
        {0, 0, 0, ""},
        {EAGAIN, -1, 1, "log Config handler init failed\n"},
        {EAGAIN, -1, 0, "log Config handler init failed\n"},
    };
    for (const auto &row : table) {
        SetUp();
        ASSERT_EQ(utm_app_debug_set(row.debug), 0);
        world::on_thread(
            [&](const pthread_attr_t *attributes, world::thread_body_t *body, void *argument) {
                EXPECT_EQ(attributes, nullptr);
                EXPECT_EQ(body, utm_app_config_handler);
                EXPECT_EQ(argument, nullptr);
                return row.error;
            });
        EXPECT_EQ(utm_app_config_handler_start(), row.result);
        EXPECT_EQ(world::trace(), row.trace);
    }
}

TEST_F(Daemon, EndsTheControlSocketThreadWhenSelectFails) {
    int passes = 0;
    world::on_select([&](int, const timeval &) {
        errno = ++passes < 3 ? EINTR : EBADF;
        return -1;
    });
    fd_event_reset();
    EXPECT_EQ(utm_app_config_handler(nullptr), nullptr);
    EXPECT_EQ(passes, 3);
    EXPECT_EQ(world::trace(), "log utm_app_config_loop failed\n");
}

// ---- Shut-down -----------------------------------------------------------------------------

void (*handler_of_sigpipe())(int) {
    struct sigaction action = {};
    sigaction(SIGPIPE, nullptr, &action);
    return action.sa_handler;
}

TEST_F(DaemonStart, KeepsItsHandlerOfSigpipeWhileItEndsTheThread) {
    // A signal that is ignored stays so in the programs that are started, and with it their pipes
    // no longer end them.
    void (*during)(int) = nullptr;
    end_the_thread_during_a_program([&] { during = handler_of_sigpipe(); });
    EXPECT_EQ(during, signal_handler);
    EXPECT_EQ(handler_of_sigpipe(), signal_handler);
}

TEST_F(DaemonStart, IsSilentAboutSigpipeWhileItEndsTheThread) {
    end_the_thread_during_a_program([] { raise(SIGPIPE); });
    EXPECT_EQ(world::trace().find("SIGPIPE"), std::string::npos) << world::trace();
}

TEST_F(DaemonStart, WakesAThreadThatDoesNotWatchItsSocketToEndIt) {
    ASSERT_EQ(utm_app_config_handler_init(), 0);
    std::atomic<bool> waits = false;
    int result = 0;
    world::on_select([&](int, const timeval &) {
        // Blocked up to the wait itself, so that the signal cannot come too early.
        sigset_t interrupt;
        sigset_t before;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        pthread_sigmask(SIG_BLOCK, &interrupt, &before);
        waits = true;
        const timespec most = {10, 0};
        result = ppoll(nullptr, 0, &most, &before);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = EINTR;
        return -1;
    });
    ASSERT_EQ(utm_app_config_handler_start(), 0);
    while (!waits)
        std::this_thread::yield();
    utm_app_config_handler_stop();
    EXPECT_EQ(result, -1) << "it waited to the end of its time";
}

TEST_F(DaemonStart, LogsSigpipeAgainOnceTheThreadHasEnded) {
    ASSERT_EQ(utm_app_config_handler_init(), 0);
    ASSERT_EQ(utm_app_config_handler_start(), 0);
    utm_app_config_handler_stop();
    raise(SIGPIPE);
    EXPECT_EQ(world::trace(), "log Config handler init success\nlog Receive SIGPIPE\n");
}

class DaemonExit : public Daemon {
protected:
    /// The locks are gone after the exit routine; whoever comes next wants them.
    void TearDown() override {
        utm_app_config_mutex.create();
        utm_app_debug_mutex.create();
        utm_app_export_import_mutex.create();
        utm_export_interval_rwlock.create();
        Daemon::TearDown();
    }
};

TEST_F(DaemonExit, ReleasesEverythingAndSaysSo) {
    config_user_profile_t *profile = world::make_profile(5, {world::tablet});
    profile->blocked = 1;
    world::make_policy(4, {{12, 2, 0}}, profile);
    world::make_profile(3, {world::phone});
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_global_app_stat_add(305, 7);
    }
    EXPECT_EQ(utm_app_config_handler_exit(), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl reset 00:11:22:33:44:55\n"
                              "event unblock profile 5\n"
                              "log send event: unblock profile 5 to use network\n"
                              "log Delete user profile 5 and unblock all success\n"
                              "run lcsh apg acl reset AA:BB:CC:DD:EE:0F\n"
                              "log Delete user profile 3 and unblock all success\n"
                              "log Flush all profiles success\n"
                              "log Reset top apps success\n"
                              "log Config handler exit\n");
    utm_app_config_mutex.create();
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +0\n");
}

TEST_F(DaemonExit, LogsTheEndWhileLoggingIsOff) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    EXPECT_EQ(utm_app_config_handler_exit(), 0);
    EXPECT_EQ(world::trace(), "log Config handler exit\n");
}

} // namespace

#include "tests/daemon/support/fixture.h"

#include "sim/harness/program.h"
#include "tests/daemon/support/processes.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char GATE_PATH[] = "/tmp/router/open";
/// A query asks for what happened up to a minute ago.
constexpr time_t QUERY_LAG = 60;
constexpr char QUERY_START[] = "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":";

std::string router_path(const std::string &name) {
    return std::string(ROUTER_DIR) + "/" + name;
}

std::string query_span(time_t from, time_t to) {
    return QUERY_START + std::to_string(from - QUERY_LAG) +
           ",\"e\":" + std::to_string(to - QUERY_LAG);
}

size_t count_containing(const text_lines &lines, const std::string &part) {
    return static_cast<size_t>(
        std::count_if(lines.begin(), lines.end(), [&part](const std::string &line) {
            return line.find(part) != std::string::npos;
        }));
}

/// Reaps what has been left to us.
bool have_no_children() {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
}

/// What a process that should have ended does, and what the daemon logged last.
std::string activity_and_log(pid_t pid) {
    constexpr size_t most = 20;
    const text_lines lines = log_lines();
    std::string text = activity_of(pid) + "the log's last lines:\n";
    for (size_t i = lines.size() > most ? lines.size() - most : 0; i < lines.size(); ++i)
        text += "  " + lines[i] + "\n";
    return text;
}

/// Kills every child that this test has left, so that the next one starts without them.
void kill_children() {
    for (const pid_t pid : sim_children()) {
        kill(pid, SIGKILL);
        EXPECT_TRUE(sim_reap(pid).ended) << pid << " cannot be killed";
    }
}

int closed_status(const sim_answer &answer) {
    EXPECT_TRUE(answer.closed) << "the daemon did not close the connection";
    return sim_status(answer);
}

/// Makes fakes whose command line contains `part` wait until `open_gates`.
void shut_gate(const std::string &part) {
    unlink(GATE_PATH);
    const std::string gates = sim_read_file(router_path("gate"));
    ASSERT_TRUE(sim_write_file(router_path("gate"), gates + GATE_PATH + " " + part + "\n"));
}

/// @return whether one more such fake has been started than before
bool wait_for_fake(const std::string &part, size_t before) {
    return sim_wait_for([&] { return count_containing(journal(), part) > before; });
}

} // namespace

size_t as_many_as(const char *variable, size_t otherwise) {
    const char *text = getenv(variable);
    return text == nullptr ? otherwise : strtoul(text, nullptr, 10);
}

text_lines log_lines() {
    return sim_split_lines(sim_read_file(LOG_PATH));
}

text_lines journal() {
    return sim_journal(ROUTER_DIR);
}

size_t log_count(const std::string &line) {
    const text_lines lines = log_lines();
    return static_cast<size_t>(std::count(lines.begin(), lines.end(), line));
}

std::string device_query(time_t from, time_t to, const std::string &macs) {
    return query_span(from, to) + ",\"mac\":\"" + macs + "\"}'";
}

std::string router_query(time_t from, time_t to) {
    return query_span(from, to) + "}'";
}

int ask(const utm_app_config_cmd &command) {
    return closed_status(sim_ask(command));
}

int load_signature(const std::string &path) {
    return ask(sim_path_command(UTM_APP_CONFIG_LOAD_SIGNATURE, path));
}

int send_request(const utm_app_config_cmd &request) {
    const int fd = sim_connect();
    EXPECT_TRUE(sim_send(fd, sim_bytes(request)));
    return fd;
}

void prescribe(const char *which, const std::string &reply) {
    ASSERT_TRUE(sim_write_file(router_path(which), reply));
}

std::string usage_reply(const std::vector<std::pair<int, int>> &apps) {
    std::string text;
    for (const auto &[app_id, minutes] : apps)
        text += std::string(text.empty() ? "" : ",") + R"({"type":")" +
                (app_id == 0 ? "INTERNET" : "APP") + R"(","app_id":)" + std::to_string(app_id) +
                R"(,"total_time_usage":)" + std::to_string(minutes) + "}";
    return "{\"data\":[" + text + "]}\n";
}

void open_gates() {
    ASSERT_TRUE(sim_write_file(GATE_PATH, ""));
}

bool is_readable(int fd) {
    pollfd readable = {.fd = fd, .events = POLLIN, .revents = 0};
    return poll(&readable, 1, 0) > 0;
}

bool wait_for_log(const std::string &line, size_t count) {
    return sim_wait_for([&] { return log_count(line) >= count; });
}

void daemon_test::SetUp() {
    for (const char *left : {"/tmp/utm_log", "/tmp/ApplicationData", "/tmp/bin", ROUTER_DIR,
                             UTM_APP_CONFIG_SOCKET_PATH})
        fs::remove_all(left);
    ASSERT_EQ(mkdir(ROUTER_DIR, 0777), 0) << strerror(errno);
    options.binary = UTM_DAEMON;
    options.fakes = UTM_FAKES;
    options.router_dir = ROUTER_DIR;
    options.preload = UTM_PRELOAD;
}

void daemon_test::TearDown() {
    open_gates();
    if (daemon.pid > 0) {
        EXPECT_TRUE(sim_wait_for([this] { return children_of(daemon.pid).empty(); }))
            << "the daemon does not wait for a program that it has started\n"
            << activity_and_log(daemon.pid);
        // Whatever was asked before has been served then, and the socket's thread is idle.
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
        stop();
        // One that does not end is not the next test's. Its children become ours.
        sim_daemon_kill(&daemon);
    }
    EXPECT_TRUE(sim_wait_for(have_no_children)) << "a process was left behind\n"
                                                << activity_and_log(getpid());
    kill_children();
    EXPECT_EQ(count_containing(journal(), "refused"), 0u) << testing::PrintToString(journal());
    EXPECT_EQ(sim_sanitizer_reports(ROUTER_DIR), "");
}

void daemon_test::launch() {
    ASSERT_LE(daemon.pid, 0) << "it is running already";
    ASSERT_TRUE(sim_clock_create(&clock, router_path("clock"), start_time));
    options.clock = &clock;
    ASSERT_TRUE(sim_daemon_start(&daemon, options)) << "starter status " << daemon.starter_status;
}

void daemon_test::start() {
    ASSERT_NO_FATAL_FAILURE(launch());
    ASSERT_TRUE(sim_clock_wait_asleep(clock));
}

void daemon_test::start_with_log() {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), UTM_APP_CONFIG_STATUS_OK);
    unlink(router_path("journal").c_str());
}

void daemon_test::tick(int minutes) {
    for (int i = 0; i < minutes; ++i)
        ASSERT_TRUE(sim_clock_advance(&clock, 60));
}

void daemon_test::hold_up_a_tick() {
    const size_t before = count_containing(journal(), "ubus");
    shut_gate("ubus");
    sim_clock_grant(&clock, 60);
    ASSERT_TRUE(wait_for_fake("ubus", before));
}

void daemon_test::stop() {
    const sim_exit how = sim_daemon_stop(&daemon);
    EXPECT_TRUE(how.ended) << activity_and_log(daemon.pid);
    EXPECT_EQ(how.status, 0) << "signal " << how.signal;
}

int daemon_test::occupy_the_socket_thread() {
    EXPECT_TRUE(sim_write_file("/tmp/signature", "rules"));
    shut_gate("load /tmp/signature");
    const int fd = sim_connect();
    EXPECT_TRUE(
        sim_send(fd, sim_bytes(sim_path_command(UTM_APP_CONFIG_LOAD_SIGNATURE, "/tmp/signature"))));
    EXPECT_TRUE(wait_for_fake("load /tmp/signature", 0));
    return fd;
}

bool daemon_test::wait_for_descriptors(size_t count) const {
    return sim_wait_for([&] { return open_descriptors(daemon.pid).size() == count; });
}

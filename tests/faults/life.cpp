#include "tests/faults/life.h"

#include "control/dispatcher.h"
#include "core/debug_log.h"
#include "daemon.h"
#include "format/usage_file.h"
#include "sim/harness/client.h"
#include "sim/harness/files.h"
#include "store/store.h"
#include "tests/lib/exchange.h"
#include "tests/lib/invariants.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <functional>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace faults {
namespace {

namespace fs = std::filesystem;

/// What a life leaves behind, in memory that its process shares with us.
struct remains_t {
    std::array<int, calls> counted;
    char wrong[2000];
    bool is_json_on_the_stack;
    bool is_done;
};

remains_t *remains = nullptr;

void complain(const std::string &what) {
    const size_t used = strlen(remains->wrong);
    snprintf(remains->wrong + used, sizeof(remains->wrong) - used, "%s\n", what.c_str());
}

void check(bool holds, const std::string &otherwise) {
    if (!holds)
        complain(otherwise);
}

// ---- The outside ---------------------------------------------------------------------------

constexpr char folder[] = "/tmp/life";
constexpr char usage_folder[] = "/tmp/ApplicationData";
constexpr char saved[] = "/tmp/life/saved.json";

/// Wednesday, 4 March 2026, 12:00 UTC.
constexpr time_t first_day = 1'772'625'600;
constexpr time_t midnight = first_day + 12 * 3600;
constexpr time_t next_month = first_day + 40 * 24 * 3600;

std::string figures(int apps, int minutes) {
    std::string text =
        R"({"type":"INTERNET","app_id":0,"total_time_usage":)" + std::to_string(minutes) + "}";
    for (int i = 0; i < apps; ++i)
        text += R"(,{"type":"APP","app_id":)" + std::to_string(300 + i) +
                R"(,"total_time_usage":)" + std::to_string(minutes) + "}";
    return "{\"data\":[" + text + "]}\n";
}

/// The statistics of a profile fit into one step of the buffer, those of the router do not.
std::string answer_to(const std::string &line) {
    if (line.starts_with("lcsh load"))
        return "signature loaded\n";
    return line.find("mac") != std::string::npos ? figures(3, 4) : figures(24, 4);
}

void clear_the_disk() {
    for (const char *left : {folder, usage_folder, debug_log_directory}) {
        fs::remove_all(left);
        if (left != debug_log_directory)
            mkdir(left, 0755);
    }
}

size_t open_descriptors() {
    const outside not_the_daemon;
    size_t count = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

// ---- Asking --------------------------------------------------------------------------------

/// Asks the dispatcher, on this thread: the nth call is the same in every life.
std::string ask(const utm_app_config_cmd &command) {
    int ends[2];
    std::string bytes;
    {
        const outside not_the_daemon;
        bytes = sim_bytes(command);
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0 ||
            !sim_send(ends[0], bytes))
            abort();
    }
    utm_app_config_cmd_dispatch(ends[1]);
    const outside not_the_daemon;
    close(ends[1]);
    const std::string answer = sim_read_answer(ends[0]).bytes;
    close(ends[0]);
    check(!answer.empty(), "command " + std::to_string(command.type) + " is not answered");
    check(answer.size() % UTM_APP_CONFIG_REPLY_SIZE == 0 ||
              (command.type == UTM_APP_CONFIG_LOAD_SIGNATURE &&
               answer.size() == UTM_APP_CONFIG_SHORT_REPLY_SIZE),
          "command " + std::to_string(command.type) + " is answered with " +
              std::to_string(answer.size()) + " bytes");
    return world::describe(command.type, answer);
}

std::string ask(uint8_t type, std::initializer_list<int32_t> arguments = {}) {
    utm_app_config_cmd command;
    {
        const outside not_the_daemon;
        command = world::request(type, arguments);
    }
    return ask(command);
}

/// Connections for which there was no memory: they stay open, unserved.
size_t unserved = 0;

size_t logged_as_unserved() {
    size_t count = 0;
    for (const std::string &line : sim_split_lines(sim_read_file(debug_log_path)))
        count += line.starts_with("Socket accept failed because");
    return count;
}

/// Asks through the socket.
void ping(const std::string &when) {
    const outside not_the_daemon;
    const int fd = sim_connect();
    check(fd >= 0 && sim_send(fd, sim_bytes({.type = UTM_APP_CONFIG_PING})), "no socket " + when);
    const auto is_served_or_not = [fd] {
        pollfd readable = {.fd = fd, .events = POLLIN, .revents = 0};
        return poll(&readable, 1, 0) > 0 || logged_as_unserved() > unserved;
    };
    check(sim_wait_for(is_served_or_not), "a client waits for ever " + when);
    if (logged_as_unserved() > unserved)
        ++unserved;
    else
        check(sim_status(sim_read_answer(fd)) == UTM_APP_CONFIG_STATUS_OK, "no answer " + when);
    close(fd);
}

// ---- The script ----------------------------------------------------------------------------

constexpr int32_t child = 1;
constexpr int32_t guest = 2;
constexpr int32_t stranger = 3;

void settle_in() {
    ask(UTM_APP_CONFIG_PING);
    ask(UTM_APP_CONFIG_CREATE_PROFILE, {child});
    ask(UTM_APP_CONFIG_CREATE_PROFILE, {guest});
    ask(world::device_request(UTM_APP_CONFIG_ADD_DEVICE, child, {2, 0, 0, 0, 0, 1}));
    ask(world::device_request(UTM_APP_CONFIG_ADD_DEVICE, child, {2, 0, 0, 0, 0, 2}));
    ask(world::device_request(UTM_APP_CONFIG_ADD_DEVICE, guest, {2, 0, 0, 0, 0, 3}));
    ask(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, {child, 0, 1});
    ask(UTM_APP_CONFIG_SET_DAILY_LIMIT, {child, 0, 0, 6});
    ask(UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, {child, 4, 0, 5});
    ask(UTM_APP_CONFIG_CREATE_POLICY, {7});
    ask(world::rules_request(7, 3, {{300, 1, 2}, {301, 2, 0}, {302, 1, 600}}));
    ask(UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, {child, 7});
    ask(UTM_APP_CONFIG_CREATE_POLICY, {8});
    ask(world::rules_request(8, 1, {{300, 2, 0}}));
    ask(UTM_APP_CONFIG_SET_EXPORT_INTERVAL, {1});
    ask(UTM_APP_CONFIG_SET_ACTIVATE, {1});
    ping("at the socket");
}

void read_all() {
    ask(UTM_APP_CONFIG_GET_STATUS);
    ask(UTM_APP_CONFIG_GET_EXPORT_INTERVAL);
    ask(UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, {child});
    ask(UTM_APP_CONFIG_GET_DAILY_LIMIT, {child});
    ask(UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, {child});
    ask(UTM_APP_CONFIG_ADD_EXTEND, {child, 0, 0, 0, 30});
    ask(UTM_APP_CONFIG_GET_EXTEND, {child});
    ask(UTM_APP_CONFIG_GET_PROFILE_USAGE, {child});
    for (const int32_t period : {0, 1, 1000, 2000})
        ask(UTM_APP_CONFIG_GET_APP_USAGE, {child, period});
    for (const int32_t selector : {0, 1})
        ask(UTM_APP_CONFIG_GET_PREV_DAY_USAGE, {child, selector});
    ask(sim_path_command(UTM_APP_CONFIG_LOAD_SIGNATURE, "/tmp/life/signature"));
    ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, saved));
    // Over a file that is there.
    ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, saved));
    raise(SIGPIPE);
}

void import_what_was_exported() {
    ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, saved));
    ask(UTM_APP_CONFIG_DELETE_PROFILE, {guest});
    // Profiles that are not there are made.
    ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, saved));
    ask(UTM_APP_CONFIG_RESET_EXTEND, {child});
}

void make_the_log_too_long() {
    const outside not_the_daemon;
    // It may not be there.
    [[maybe_unused]] const int result = truncate(debug_log_path, debug_log_size_limit + 1);
}

void tear_down() {
    ask(world::device_request(UTM_APP_CONFIG_DEL_DEVICE, child, {2, 0, 0, 0, 0, 1}));
    ask(world::rules_request(7, 2, {{301, 0, 0}, {302, 2, 0}}));
    ask(UTM_APP_CONFIG_DELETE_POLICY, {7});
    ask(UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, {guest, 8});
    ask(UTM_APP_CONFIG_SET_ACTIVATE, {0});
    ask(UTM_APP_CONFIG_SET_DEBUG, {0});
    ask(UTM_APP_CONFIG_SET_DEBUG, {1});
    ask(UTM_APP_CONFIG_SET_ACTIVATE, {1});
    // Two lines find the log too long, one of them from a signal handler.
    for (const bool from_signal : {true, false}) {
        make_the_log_too_long();
        if (from_signal)
            raise(SIGPIPE);
        ask(UTM_APP_CONFIG_DELETE_PROFILE, {guest});
    }
}

/// With the fault: whatever a list needs may be missing, and then it is refused.
void answer_with_the_fault() {
    check(ask(UTM_APP_CONFIG_PING) == "ok\n", "a ping fails");
    const std::string list = ask(UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, {child});
    check(list.ends_with("ok\n") || list == "fail\n", "a list ends in: " + list);
}

void answer_without_it() {
    suspend();
    const size_t before = unserved;
    ping("afterwards");
    check(unserved == before, "a client is not served afterwards");
    check(ask(UTM_APP_CONFIG_CREATE_PROFILE, {stranger}) == "ok\n", "nobody can be added");
    std::string week;
    for (int day = 0; day < days_per_week; ++day)
        week += "data day " + std::to_string(day) + " limit 1440\n";
    check(ask(UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, {stranger}) == week + "ok\n",
          "a list is not whole");
    check(ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, saved)) == "ok\n",
          "no export afterwards");
    check(ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, saved)) == "ok\n",
          "no import afterwards");
    resume();
}

struct step_t {
    const char *name;
    time_t now; ///< of the tick before it; 0: as it goes
    void (*act)();
};

/// A tick comes before each.
constexpr step_t steps[] = {
    {"settling in", 0, settle_in},
    {"reading", 0, read_all},
    {"midnight", midnight, read_all},
    {"the import", 0, import_what_was_exported},
    {"the next month", next_month, read_all},
    {"the end", 0, tear_down},
    {"answering", 0, answer_with_the_fault},
    {"answering afterwards", 0, answer_without_it},
};

void look_at_the_store(const std::string &after) {
    const std::string wrong = check_store_invariants(memory_t::short_at_times);
    check(wrong.empty(), "after " + after + ": " + wrong);
}

/// A minute of sleeps has a step in its middle.
void sleep_a_second() {
    static int second = 0;
    static size_t step = 0;
    set_now(now() + 1);
    if (++second % 60 == 1)
        look_at_the_store("a tick");
    if (second % 60 != 30)
        return;
    if (step == std::size(steps)) {
        raise(SIGINT);
        return;
    }
    if (steps[step].now != 0)
        set_now(steps[step].now);
    steps[step].act();
    look_at_the_store(steps[step].name);
    ++step;
}

/// As `main` has it, but for leaving the terminal.
void run() {
    utm_app_settle_descriptors();
    utm_app_install_signal_handlers();
    if (utm_app_config_handler_init() < 0)
        return complain("no socket");
    // An end on purpose tells in the log.
    check(utm_app_debug_set(1) == 0, "no log");
    if (utm_app_config_handler_start() != 0)
        return complain("no thread");
    utm_app_main_loop();
    utm_app_config_handler_stop();
    utm_app_config_handler_exit();
}

#if UTM_FAULTS_IN_JSON
/// What is left of a crash: where it was.
void on_crash(int signal_number) {
    remains->is_json_on_the_stack = is_called_by_json();
    remains->counted = counted();
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

void watch_for_crashes() {
    for (const int signal_number : {SIGSEGV, SIGBUS, SIGABRT})
        signal(signal_number, on_crash);
}
#else
void watch_for_crashes() {}
#endif

#ifdef __SANITIZE_ADDRESS__
extern "C" int __lsan_do_recoverable_leak_check();

void check_leaks() {
    check(__lsan_do_recoverable_leak_check() == 0, "memory is lost");
}
#else
void check_leaks() {}
#endif

void live_here(const fault &what) {
    {
        const outside not_the_daemon;
        watch_for_crashes();
        clear_the_disk();
        on_popen(answer_to);
        on_sleep(sleep_a_second);
        set_now(first_day);
    }
    const size_t descriptors = open_descriptors();
    begin(what);
    run();
    remains->counted = counted();
    suspend();
    const mutex_guard lock(utm_app_config_mutex);
    check(list_is_empty(&utm_app_config_user_profile_list), "profiles are left");
    check(list_is_empty(&utm_app_config_global_app_stat_list), "applications are left");
    const size_t left = open_descriptors() - descriptors;
    check(left == static_cast<size_t>(open_pipes()) + unserved,
          std::to_string(left) + " descriptors are left, " + std::to_string(open_pipes()) +
              " of them pipes, " + std::to_string(unserved) + " clients");
    check_leaks();
    remains->is_done = true;
}

std::string last_line(const std::string &text) {
    const std::vector<std::string> lines = sim_split_lines(text);
    return lines.empty() ? "" : lines.back();
}

/// @return whether the log's last line says that a reply did not fit into memory
bool is_meant() {
    const std::string line = last_line(sim_read_file(debug_log_path));
    return line.starts_with("Update ") &&
           line.find("app status failed because realloc ") != std::string::npos;
}

} // namespace

life_t live(const fault &what) {
    const outside not_the_daemon;
    if (remains == nullptr)
        remains = static_cast<remains_t *>(mmap(nullptr, sizeof(remains_t), PROT_READ | PROT_WRITE,
                                                MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    *remains = {};
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        live_here(what);
        leave(0);
    }
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid)
        abort();
    life_t life = {.counted = remains->counted, .wrong = remains->wrong};
    if (remains->is_done && WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return life;
    const bool is_aborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    life.is_ended_by_json = remains->is_json_on_the_stack;
    life.is_ended_on_purpose = is_aborted && !life.is_ended_by_json && is_meant();
    if (!life.is_ended_by_json && !life.is_ended_on_purpose)
        life.wrong += "it ended with status " + std::to_string(status) +
                      "; the log's last line: " + last_line(sim_read_file(debug_log_path)) + "\n";
    return life;
}

} // namespace faults

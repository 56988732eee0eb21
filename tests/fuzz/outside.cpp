#include "tests/fuzz/outside.h"

#include "control/dispatcher.h"
#include "core/debug_log.h"
#include "format/usage_file.h"
#include "notify/qvutm_notify.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/fuzz/support.h"
#include "usage/top_apps.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

namespace {

/// Stands for a client's connection; no descriptor of this number is ever open.
constexpr int client_fd = 1'000'000;
constexpr char usage_folder[] = "/tmp/ApplicationData";
constexpr char log_moved_aside[] = "/tmp/utm_log/utm_app_log2";

struct state_t {
    time_t now = outside::default_now;
    bool was_far = false; ///< the clock has been where queries are cut
    long uptime = 86'400;
    int status = 0;
    std::string reply;
    int replies_left = 0;
    int queries_to_fail = 0;
    const utm_app_config_cmd *request = nullptr;
    std::string answer;
};

state_t state;

// ---- Command lines -------------------------------------------------------------------------

/// Nothing among these lets a shell do more than run the program with its words. Quotes, and what
/// stands between them, are for queries alone.
constexpr char plain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 -_./:";
constexpr char query_start[] = "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":";
constexpr char quoted[] = "ABCDEFacems0123456789 -:,\"";
constexpr char signature_start[] = "lcsh load ";

bool starts_with(const char *text, const char *start) {
    return strncmp(text, start, strlen(start)) == 0;
}

void check_line(const char *line) {
    fuzz::check(starts_with(line, "lcsh apg ") || starts_with(line, "profile_daily_limit.sh -C "),
                "a command line of another program");
    fuzz::check(strlen(line) == strspn(line, plain), "a command line with a strange character");
}

/// A signature's path goes to the shell as it came; nothing else in its line may. The line of a
/// query has room for thirteen digits of each time, and is cut beyond the year 33,658: a shell
/// refuses it.
void check_query(const char *line) {
    if (starts_with(line, signature_start)) {
        fuzz::check(state.request != nullptr &&
                        starts_with(utm_app_config_path(*state.request).text,
                                    line + strlen(signature_start)),
                    "a signature's line does not have its path");
        return;
    }
    fuzz::check(starts_with(line, query_start), "a query of another program");
    const char *inner = line + strlen(query_start);
    const char *end = inner + strspn(inner, quoted);
    fuzz::check(strcmp(end, "}'") == 0 || (state.was_far && strncmp(end, "}'", strlen(end)) == 0),
                "a query with a strange character");
}

// ---- The log -------------------------------------------------------------------------------

/// The log's own lines do what they say, without a shell: one would take a millisecond.
bool run_for_log(const char *line) {
    if (starts_with(line, "/bin/mv /tmp/utm_log"))
        rename(debug_log_path, log_moved_aside);
    else if (starts_with(line, "/bin/touch /tmp/utm_log"))
        close(open(debug_log_path, O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    else if (starts_with(line, "mkdir -p /tmp/utm_log"))
        mkdir(debug_log_directory, 0755);
    else
        return false;
    fuzz::check(strlen(line) == strspn(line, plain), "a log's line with a strange character");
    return true;
}

// ---- Clients -------------------------------------------------------------------------------

/// Every command that is served answers with data replies and one that ends them; the one exception
/// cannot happen while queries start.
std::vector<utm_app_config_reply> replies_of(const std::string &answer) {
    if (answer.size() == UTM_APP_CONFIG_SHORT_REPLY_SIZE)
        return {};
    fuzz::check(answer.size() % UTM_APP_CONFIG_REPLY_SIZE == 0, "an answer of half replies");
    std::vector<utm_app_config_reply> replies(answer.size() / UTM_APP_CONFIG_REPLY_SIZE);
    if (replies.empty())
        return replies;
    memcpy(replies.data(), answer.data(), answer.size());
    for (size_t i = 0; i + 1 < replies.size(); ++i)
        fuzz::check(replies[i].status == UTM_APP_CONFIG_STATUS_DATA, "a list that ends early");
    fuzz::check(replies.back().status != UTM_APP_CONFIG_STATUS_DATA, "a list without an end");
    return replies;
}

} // namespace

// ---- What the linker puts in place of these calls ------------------------------------------

extern "C" {

ssize_t __real_recv(int fd, void *bytes, size_t size, int flags);
ssize_t __real_send(int fd, const void *bytes, size_t size, int flags);

int __wrap_system(const char *line) {
    if (run_for_log(line))
        return 0;
    check_line(line);
    return state.status;
}

FILE *__wrap_popen(const char *line, const char *) {
    check_query(line);
    if (state.queries_to_fail > 0) {
        --state.queries_to_fail;
        return nullptr;
    }
    const size_t size = state.replies_left > 0 ? state.reply.size() : 0;
    --state.replies_left;
    return fmemopen(state.reply.data(), size, "r");
}

int __wrap_pclose(FILE *pipe) {
    return fclose(pipe);
}

int __wrap_gettimeofday(timeval *now, void *) {
    *now = {state.now, 0};
    return 0;
}

int __wrap_sysinfo(struct sysinfo *info) {
    if (state.uptime < 0)
        return -1;
    info->uptime = state.uptime;
    return 0;
}

ssize_t __wrap_recv(int fd, void *bytes, size_t size, int flags) {
    if (fd != client_fd)
        return __real_recv(fd, bytes, size, flags);
    memcpy(bytes, state.request, std::min(size, sizeof(*state.request)));
    return sizeof(*state.request);
}

ssize_t __wrap_send(int fd, const void *bytes, size_t size, int flags) {
    if (fd != client_fd)
        return __real_send(fd, bytes, size, flags);
    state.answer.append(static_cast<const char *>(bytes), size);
    return static_cast<ssize_t>(size);
}

int __wrap_send_utm_notify_event(const utm_notify_event_t *event) {
    fuzz::check(event->type == 128 && (event->action == 0 || event->action == 1),
                "an event that no service knows");
    return 0;
}

int __wrap_send_utm_notify_event_status_changed(int feature, int status) {
    fuzz::check(feature == 1 && (status == 0 || status == 1), "a status that no service knows");
    return 0;
}

} // extern "C"

namespace outside {

void prepare() {
    setenv("TZ", "UTC0", 1);
    tzset();
    mkdir(debug_log_directory, 0755);
    mkdir(usage_folder, 0755);
    utm_app_config_mutex.create();
    utm_app_debug_mutex.create();
    utm_app_export_import_mutex.create();
    utm_export_interval_rwlock.create();
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_store_init(default_now);
    }
    reset();
}

void reset() {
    state.status = 0;
    utm_app_flush_profiles();
    fuzz::check(utm_app_debug_set(0) == 0 && utm_app_set_export_interval(30) == 0,
                "the beginning cannot be restored");
    last_export_statistics_ts = default_now;
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_clear_global_app_stat();
    for (config_app_policy_t &policy : all_policies())
        utm_app_destroy_policy(&policy);
    activate = 0;
    state = {};
    utm_app_store_init(default_now);
}

void set_now(time_t now) {
    constexpr time_t far = 999'999'999'999;
    state.now = now;
    state.was_far = state.was_far || now > far || now < -far;
}

time_t now() {
    return state.now;
}

void set_uptime(long seconds) {
    state.uptime = seconds;
}

void set_status(int status) {
    state.status = status;
}

void set_reply(std::string text, int queries) {
    state.reply = std::move(text);
    state.replies_left = queries;
}

void fail_queries(int count) {
    state.queries_to_fail = count;
}

std::vector<utm_app_config_reply> ask(const utm_app_config_cmd &request) {
    state.request = &request;
    state.answer.clear();
    utm_app_config_cmd_dispatch(client_fd);
    state.request = nullptr;
    return replies_of(state.answer);
}

} // namespace outside

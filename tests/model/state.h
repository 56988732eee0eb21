#pragma once
/// The rules a second time: what the daemon has to do, written without its records.
///
/// The model keeps the family's state in plain values and predicts everything that can be seen of
/// an operation: the replies of a command, and the trace of log lines, command lines, events and
/// queries. It is the slow and obvious version. Where it and the daemon disagree, one is wrong.

#include <array>
#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace model {

/// Minutes of today, of this week's finished days, of this month's finished weeks.
struct used_t {
    int32_t daily = 0;
    int32_t weekly = 0;
    int32_t monthly = 0;
};

struct app_t {
    int32_t id = 0;
    used_t used;
    bool blocked = false;
    std::vector<int32_t> finished_days; ///< all of them, oldest first; only thirty are ever asked
};

struct rule_t {
    int32_t app = 0;
    int32_t action = 0; ///< 1 limit, 2 block; 0 removes a rule and is never kept
    int32_t limit = 0;
};

struct policy_t {
    int32_t id = 0;
    int32_t count = 0; ///< rules, and those that "delete" took away
    std::optional<int32_t> profile;
    std::vector<rule_t> rules; ///< newest first
};

struct profile_t {
    int32_t id = 0;
    std::vector<std::string> devices; ///< "00:11:22:33:44:55", oldest first
    std::string device_text;          ///< "001122334455 ", still naming the last one when it left
    bool enabled = false;
    int32_t limit = 1440;
    int32_t extend = 0;
    used_t used;
    bool blocked = false;
    time_t collected = 0;
    std::array<int32_t, 7> weekdays = {1440, 1440, 1440, 1440, 1440, 1440, 1440};
    std::vector<app_t> apps; ///< newest first
    int32_t app_count = 0;   ///< of `apps`, and of those that an import could not read
    std::optional<int32_t> policy;
};

// ---- Usage files: what they say, and what somebody has done to them --------------------------

/// The daemon's own file, in a folder that somebody else has to make.
inline const std::string own_path = "/tmp/ApplicationData/app_usage.json";
/// A folder that is always there, for the files of commands.
inline const std::string other_folder = "/tmp/model";

struct filed_app_t {
    app_t app;
    std::string lacks;       ///< the key that was taken out
    size_t ring_length = 30; ///< days in its list
};

struct filed_profile_t {
    profile_t profile; ///< but its applications
    std::vector<filed_app_t> apps;
    std::optional<policy_t> policy;
    std::string lacks;
};

struct document_t {
    std::vector<filed_profile_t> profiles;
    int32_t written = 0; ///< when, as far as 32 bits can say it
    std::vector<filed_app_t> router;
    std::string lacks;
    bool is_torn = false; ///< the second half of the text is missing
};

struct file_t {
    document_t document;
    std::string text;
};

/// A figure of the statistics service.
struct figure_t {
    std::string type;
    int32_t app = 0;
    int32_t minutes = 0;
};

/// What a program that the daemon starts will print, or that it cannot be started.
struct answer_t {
    bool fails = false;
    std::string text;
    std::vector<figure_t> figures; ///< those in the text, when it is a reply of the service
};

struct state_t {
    std::vector<profile_t> profiles;
    std::vector<policy_t> policies;
    std::vector<app_t> router; ///< newest first
    time_t router_collected = 0;
    bool active = false;
    bool debug = true;
    int32_t export_interval = 30;
    time_t last_export = 0; ///< an import counts as one

    std::map<std::string, std::shared_ptr<const file_t>> files; ///< by path
    bool has_folder = false;                                    ///< the one of `own_path`

    time_t now = 0;
    long uptime = 0;               ///< seconds since the router booted
    int sysinfo_result = 0;        ///< not 0 when the router does not tell its uptime
    std::vector<answer_t> answers; ///< of the programs that the next operation starts, in turn
    std::string trace;             ///< what the operation has done so far
    std::set<std::string> met;     ///< rules that have come up and leave no line of their own
};

/// The lasting part of a state, in the form of `world::render_store`.
std::string render(const state_t &state);

// ---- Finding things; the first one of a list, or null ----------------------------------------

profile_t *find_profile(state_t &state, int32_t id);
policy_t *find_policy(state_t &state, int32_t id);
app_t *find_app(std::vector<app_t> &apps, int32_t id);
rule_t *find_rule(policy_t &policy, int32_t app);
/// The rule for an application in the profile's policy.
rule_t *rule_for(state_t &state, const profile_t &profile, int32_t app);

// ---- What is seen from outside ---------------------------------------------------------------

void log(state_t &state, const char *format, ...) __attribute__((format(printf, 2, 3)));
/// Writes a line although debug logging is off.
void log_always(state_t &state, const char *format, ...) __attribute__((format(printf, 2, 3)));
/// Runs lines of the DPI shell; those for a device whose address ends in 0C fail.
void guard(state_t &state, bool on);
void block_app(state_t &state, const std::string &device, int32_t app);
void unblock_app(state_t &state, const std::string &device, int32_t app);
void reset_device(state_t &state, const std::string &device);
void block_app(state_t &state, const profile_t &profile, int32_t app);
void unblock_app(state_t &state, const profile_t &profile, int32_t app);
void reset_devices(state_t &state, const profile_t &profile);
/// @return the wait status of a command line, on both sides
int status_of(const std::string &line);
void announce(state_t &state, const profile_t &profile, bool block);
/// Starts a program and takes the next answer.
answer_t ask(state_t &state, const std::string &line);

// ---- Numbers and dates -------------------------------------------------------------------------

/// Every figure stays within 32 bits.
int32_t saturated(int64_t value);
/// The local date of an instant.
tm date_of(time_t instant);
/// Minutes of the finished days `first` to `last` days ago.
int32_t minutes_of_days(const app_t &app, int first, int last);

} // namespace model

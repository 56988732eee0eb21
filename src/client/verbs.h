#pragma once
/// Everything that `utm_appctl` can do: one table that dispatch, the help texts, the manual page
/// and the completion of the shell all follow.

#include "client/connection.h"
#include "client/names.h"
#include "client/options.h"
#include "format/household.h"

#include <cstdint>
#include <initializer_list>
#include <span>

struct ctl_call;

/// Sends the call's request, which only succeeds or fails. Most verbs do no more.
[[nodiscard]] ctl_exit ctl_send(const ctl_call &call);

/// A verb. A row names what differs from these defaults.
struct ctl_verb {
    const char *group = nullptr;   ///< what it is about, at a group's first verb
    const char *noun = nullptr;    ///< the first word
    const char *word = nullptr;    ///< the second word; null when there is only a noun
    const char *synopsis = "";     ///< the operands; see `ctl_read_operands`
    const char *help = nullptr;    ///< one line, without a full stop
    const char *example = nullptr; ///< of its use, without the program's name
    unsigned options = 0;          ///< bits of `ctl_option`, besides the common ones
    uint8_t type = 0;              ///< the request's command
    bool enable = false;           ///< the request's enable flag
    /// Where MINUTES stand in the request.
    int32_t utm_app_config_cmd::*minutes = &utm_app_config_cmd::arg0;
    int32_t minutes_most = INT32_MAX; ///< MINUTES are 1 to so many
    ctl_exit (*run)(const ctl_call &call) = ctl_send;

    bool has(ctl_option option) const { return (options & option) != 0; }
};

/// A verb's words: "limit set".
struct ctl_verb_name {
    char text[40];
};

[[nodiscard]] ctl_verb_name ctl_name_of(const ctl_verb &verb);

/// @return the bits of all options that the verb takes: its own, the common ones, and --household
///         where people or applications may go by name
[[nodiscard]] unsigned ctl_options_of(const ctl_verb &verb);

/// All verbs, those of one noun side by side, in the order of the help. Each is unpacked when it is
/// asked for; its texts last.
class ctl_verb_list {
public:
    class iterator {
    public:
        explicit iterator(size_t place) : place_(place) {}
        ctl_verb operator*() const { return ctl_verb_list::at(place_); }
        iterator &operator++() {
            ++place_;
            return *this;
        }
        bool operator==(const iterator &) const = default;

    private:
        size_t place_;
    };

    static size_t size();
    static ctl_verb at(size_t place);
    iterator begin() const { return iterator(0); }
    iterator end() const { return iterator(size()); }
};

inline ctl_verb_list ctl_verbs() {
    return {};
}

/// One call of a verb.
struct ctl_call {
    const ctl_verb &verb;
    const ctl_options &options;
    const household_t &household; ///< empty for a verb that takes no --household
    const ctl_app_names &names;   ///< the household's applications, as call sites want them
    std::span<const char *const> operands; ///< as many as the verb's synopsis allows
    utm_app_config_cmd request;            ///< the verb's, with those that are read

    bool json() const { return options.has(CTL_OPTION_JSON); }
    int32_t profile_id() const { return request.arg0; } ///< of a verb that begins with ID
};

/// A command, and where its reply goes.
struct ctl_question {
    uint8_t type;
    utm_app_config_reply *reply;
};

/// Asks commands of a single reply about the call's operands, one after the other, up to the first
/// that fails.
[[nodiscard]] ctl_exit ctl_ask_each(const ctl_call &call,
                                    std::initializer_list<ctl_question> questions);

// What rows of the table run, by the first words of the verb.
ctl_exit ctl_status(const ctl_call &call);
ctl_exit ctl_profile_del(const ctl_call &call);
ctl_exit ctl_apply(const ctl_call &call);
ctl_exit ctl_devices(const ctl_call &call);
ctl_exit ctl_limit_show(const ctl_call &call);
ctl_exit ctl_limit_enable(const ctl_call &call);
ctl_exit ctl_weekday_show(const ctl_call &call);
ctl_exit ctl_weekday_set(const ctl_call &call);
ctl_exit ctl_extend_show(const ctl_call &call);
ctl_exit ctl_people(const ctl_call &call);
ctl_exit ctl_list(const ctl_call &call); ///< `device list` and `policy show`
ctl_exit ctl_usage(const ctl_call &call);
ctl_exit ctl_history(const ctl_call &call); ///< `usage --history`
ctl_exit ctl_policy_rule(const ctl_call &call);
ctl_exit ctl_signature_load(const ctl_call &call);
ctl_exit ctl_interval_show(const ctl_call &call);
ctl_exit ctl_completion(const ctl_call &call);

// What `ctl_monitor` runs.
ctl_exit ctl_report(const ctl_call &call);
ctl_exit ctl_watch(const ctl_call &call);
ctl_exit ctl_metrics(const ctl_call &call);

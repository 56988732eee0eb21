/// Verbs that change something and tell what a plain request would leave unsaid.

#include "client/arguments.h"
#include "client/household_file.h"
#include "client/message.h"
#include "client/reason.h"
#include "client/verbs.h"
#include "core/clock.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <strings.h>
#include <unistd.h>

namespace {

/// How a message names a person: "Mia", or "profile 3".
struct called_text {
    char text[household_name_size];
};

called_text called(const ctl_call &call, int32_t number) {
    called_text person = {};
    if (household_person_of(call.household, number) != nullptr)
        snprintf(person.text, sizeof(person.text), "%s",
                 ctl_person_name(call.household, number).text);
    else
        snprintf(person.text, sizeof(person.text), "profile %d", number);
    return person;
}

/// What the daemon would lose with a person.
struct past {
    bool is_known; ///< there is such a person
    bool is_empty; ///< nothing has been counted
};

/// Asks for the sums first: they are nothing for most who are deleted soon after a mistake.
[[nodiscard]] ctl_exit read_past(const ctl_call &call, past *of) {
    utm_app_config_reply sums = {};
    const ctl_daemon &daemon = call.options.daemon;
    ctl_exit status = ctl_ask(
        daemon, {.type = UTM_APP_CONFIG_GET_PROFILE_USAGE, .arg0 = call.profile_id()}, &sums, "");
    of->is_known = status != CTL_REFUSED;
    of->is_empty = sums.daily_used == 0 && sums.weekly_used == 0 && sums.monthly_used == 0;
    if (status != CTL_DONE || !of->is_empty)
        return of->is_known ? status : CTL_DONE;
    status = ctl_ask_list(daemon,
                          {.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE,
                           .arg0 = call.profile_id(),
                           .arg1 = UTM_APP_CONFIG_PREV_BY_DAY},
                          "", [of](const utm_app_config_reply &reply) {
                              of->is_empty =
                                  of->is_empty &&
                                  std::all_of(std::begin(reply.prev_day_data),
                                              std::end(reply.prev_day_data),
                                              [](int32_t minutes) { return minutes == 0; });
                              return true;
                          });
    return status == CTL_REFUSED ? CTL_DONE : status; // refused: no application was used
}

/// @return whether the answer is yes; an answer that does not come is none
bool is_answered_with_yes() {
    char answer[16] = "";
    bool yes = false;
    if (fgets(answer, sizeof(answer), stdin) == nullptr)
        return false;
    answer[strcspn(answer, "\n")] = '\0';
    return strcasecmp(answer, "y") == 0 || (spelling_switch(answer, &yes) && yes);
}

/// Lets nobody delete thirty days by a slip of the hand.
[[nodiscard]] ctl_exit confirm(const ctl_call &call) {
    const called_text person = called(call, call.profile_id());
    if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0)
        return ctl_fail(CTL_USAGE,
                        "the history of %s would be deleted, too\n"
                        "Say --yes if it may go; to keep it, export it to a file first",
                        person.text);
    fprintf(stderr, "Delete %s, and the history of up to thirty days with it? [y/N] ", person.text);
    if (is_answered_with_yes())
        return CTL_DONE;
    return ctl_fail(CTL_REFUSED, "nothing is deleted");
}

} // namespace

ctl_exit ctl_profile_del(const ctl_call &call) {
    if (call.options.has(CTL_OPTION_YES))
        return ctl_send(call);
    past of = {};
    ctl_exit status = read_past(call, &of);
    if (status == CTL_DONE && of.is_known && !of.is_empty)
        status = confirm(call);
    if (status == CTL_DONE)
        status = ctl_send(call);
    if (status == CTL_DONE && !of.is_known)
        ctl_say("note: there was no profile %d", call.profile_id());
    return status;
}

ctl_exit ctl_limit_enable(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_send(call);
    if (status == CTL_DONE &&
        ctl_ask(call.options.daemon, {.type = UTM_APP_CONFIG_GET_STATUS}, &reply, nullptr) ==
            CTL_DONE &&
        reply.activate == 0)
        ctl_say("note: limits are off for everybody; turn them on with activate on");
    return status;
}

ctl_exit ctl_signature_load(const ctl_call &call) {
    // The daemon answers in short when it cannot even start the engine's program: what stands
    // behind that stays as it is.
    utm_app_config_reply reply = {};
    reply.export_interval_minute = -1;
    const ctl_exit status = ctl_ask(call.options.daemon, call.request, &reply, "");
    if (status == CTL_REFUSED && reply.export_interval_minute == -1)
        return ctl_refused("it cannot start the DPI engine's program now; try again");
    return status == CTL_REFUSED ? ctl_explain(call, call.request) : status;
}

ctl_exit ctl_weekday_set(const ctl_call &call) {
    weekday_set_t days = 0;
    if (!ctl_read_days(call.operands[1], &days))
        return CTL_USAGE;
    ctl_call part = call;
    ctl_exit status = CTL_DONE;
    for (int32_t day = 0; day < days_per_week && status == CTL_DONE; ++day) {
        part.request.arg1 = day;
        if ((days >> day & 1) != 0)
            status = ctl_send(part);
    }
    return status;
}

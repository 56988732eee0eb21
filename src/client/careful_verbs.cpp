/// Verbs that change something and tell what a plain request would leave unsaid.

#include "client/arguments.h"
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
    const ctl_called person = ctl_call_person(call.household, call.profile_id());
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

using mac_list = plain_vector<ctl_mac>;

/// @return CTL_DONE, or CTL_USAGE after a message
[[nodiscard]] ctl_exit read_macs(const ctl_call &call, mac_list *macs) {
    for (const char *operand : call.operands.subspan(1)) {
        ctl_mac mac = {};
        // What is no device's address may have been added by another program: it can be removed.
        if (!(call.verb.type == UTM_APP_CONFIG_ADD_DEVICE ? ctl_read_device_mac(operand, mac.bytes)
                                                          : ctl_read_mac(operand, mac.bytes)))
            return CTL_USAGE;
        if (!macs->add(mac))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    return CTL_DONE;
}

/// @return whose device it is in the household, or null
const household_person_t *household_owner(const household_t &household, const ctl_mac &mac) {
    for (const household_person_t &person : household.people)
        for (const household_device_t &device :
             household_records(household.devices, person.devices))
            if (ctl_mac_of(device.mac) == mac)
                return &person;
    return nullptr;
}

/// To look at everything that the daemon has is no small matter; for what the household knows it is
/// not done. That somebody has no such device is known to nobody else.
bool needs_a_look(const ctl_call &call, const mac_list &macs) {
    if (call.verb.type == UTM_APP_CONFIG_DEL_DEVICE)
        return true;
    for (const ctl_mac &mac : macs)
        if (household_owner(call.household, mac) == nullptr)
            return true;
    return false;
}

/// What is known of the devices' owners before anything is done.
struct owners {
    ctl_daemon_state state = {};
    bool seen = false; ///< else the state is empty, and only the household tells
};

/// @return somebody else whose device it is, or 0 with `*is_known` false
int32_t other_owner(const ctl_call &call, const owners &known, const ctl_mac &mac, bool *is_known) {
    *is_known = true;
    for (const ctl_daemon_person &person : known.state.people)
        if (person.number != call.profile_id() && ctl_state_has_device(known.state, person, mac))
            return person.number;
    const household_person_t *person = household_owner(call.household, mac);
    if (!known.seen && person != nullptr && person->number != call.profile_id())
        return person->number;
    *is_known = false;
    return 0;
}

void note_added(const ctl_call &call, const owners &known, const ctl_mac &mac) {
    bool is_known = false;
    const int32_t other = other_owner(call, known, mac, &is_known);
    if (is_known)
        ctl_say("note: %s is a device of %s, too; what blocks either of them blocks it",
                mac_text(mac.bytes).text, ctl_call_person(call.household, other).text);
}

void note_removed(const ctl_call &call, const owners &known, const ctl_mac &mac) {
    const ctl_daemon_person *person = ctl_state_person(known.state, call.profile_id());
    if (!known.seen || person == nullptr || ctl_state_has_device(known.state, *person, mac))
        return;
    bool is_known = false;
    const int32_t other = other_owner(call, known, mac, &is_known);
    const ctl_called owner = ctl_call_person(call.household, call.profile_id());
    if (is_known)
        ctl_say("note: %s was no device of %s, but is one of %s", mac_text(mac.bytes).text,
                owner.text, ctl_call_person(call.household, other).text);
    else
        ctl_say("note: %s was no device of %s", mac_text(mac.bytes).text, owner.text);
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

/// All addresses are looked at before the first request is sent.
ctl_exit ctl_devices(const ctl_call &call) {
    mac_list macs;
    owners known;
    ctl_exit status = read_macs(call, &macs);
    if (status == CTL_DONE && needs_a_look(call, macs))
        status = ctl_look(call, &known.state, &known.seen);
    for (size_t i = 0; i < macs.size() && status == CTL_DONE; ++i) {
        ctl_call part = call;
        utm_app_config_put_mac(&part.request, macs[i].bytes);
        status = ctl_send(part);
        if (status != CTL_DONE)
            break;
        if (call.verb.type == UTM_APP_CONFIG_ADD_DEVICE)
            note_added(call, known, macs[i]);
        else
            note_removed(call, known, macs[i]);
    }
    return status;
}

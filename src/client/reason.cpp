#include "client/reason.h"

#include "client/arguments.h"
#include "client/household_file.h"
#include "client/temporary_file.h"
#include "client/text.h"
#include "client/wire.h"
#include "core/clock.h"
#include "core/owners.h"
#include "core/regular_file.h"
#include "format/usage_file.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

constexpr char no_memory[] = "it is out of memory";
constexpr char you_may_not[] = "it does not tell why, and you may not look at the file yourself";

/// @param error  of opening or reading the file
const char *reason_of(int error) {
    switch (error) {
    case ENOTSUP:
        return "it is not a regular file";
    case EFBIG:
    case EOVERFLOW:
        return "it holds more than the daemon takes";
    case 0: // the text "null"
    case EBADMSG:
        return "it is damaged: it is no JSON document";
    case EACCES:
        return you_may_not;
    default:
        return strerror(error);
    }
}

/// Asks a question to which a refusal is an answer.
/// @param yes  out: whether the daemon did not refuse
[[nodiscard]] ctl_exit ask(const ctl_call &call, const utm_app_config_cmd &request, bool *yes) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask(call.options.daemon, request, &reply, "");
    *yes = status == CTL_DONE;
    return status == CTL_REFUSED ? CTL_DONE : status;
}

[[nodiscard]] ctl_exit find_profile(const ctl_call &call, int32_t number, bool *there) {
    return ask(call, {.type = UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, .arg0 = number}, there);
}

/// No command tells whether there is a policy. But to remove a rule that is not there is refused
/// only where there is no policy either, and changes nothing. Nobody has an application of this
/// number: the DPI engine's are positive.
[[nodiscard]] ctl_exit find_policy(const ctl_call &call, int32_t number, bool *there) {
    utm_app_config_cmd request = {
        .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = number, .arg1 = 1};
    const utm_app_config_app_entry no_rule = {
        .app_id = uint32_t{1} << 31, .action = POLICY_ACTION_REMOVE, .limit = 0};
    utm_app_config_put_rules(&request, &no_rule, 1);
    return ask(call, request, there);
}

[[nodiscard]] ctl_exit find_out_whether_limits_are_on(const ctl_call &call, bool *on) {
    utm_app_config_reply reply = {};
    const ctl_exit status =
        ctl_ask(call.options.daemon, {.type = UTM_APP_CONFIG_GET_STATUS}, &reply, nullptr);
    *on = reply.activate != 0;
    return status;
}

/// Who there is can only be told from the household: no command lists people.
ctl_exit no_profile(const ctl_call &call, int32_t number) {
    if (household_person_of(call.household, number) != nullptr)
        return ctl_fail(CTL_REFUSED,
                        "the daemon refused: %s is not set up; have apply do it, or create profile "
                        "%d with profile add",
                        ctl_person_name(call.household, number).text, number);
    char known[200] = "";
    size_t length = 0;
    for (const household_person_t &person : call.household.people)
        if (length < sizeof(known))
            length += static_cast<size_t>(snprintf(known + length, sizeof(known) - length,
                                                   "%s%s is %d", length == 0 ? "" : ", ",
                                                   person.name.text, person.number));
    if (length == 0)
        return ctl_refused("no such profile; create it with profile add");
    if (length >= sizeof(known))
        snprintf(known + sizeof(known) - 4, 4, "...");
    return ctl_fail(CTL_REFUSED, "the daemon refused: no such profile; in the household %s", known);
}

/// @param otherwise  the reason when the profile is there
ctl_exit explain_profile(const ctl_call &call, int32_t number, const char *otherwise) {
    bool there = false;
    const ctl_exit status = find_profile(call, number, &there);
    if (status != CTL_DONE)
        return status;
    return there ? ctl_refused(otherwise) : no_profile(call, number);
}

/// @param otherwise  the reason when the policy is there, or is not
ctl_exit explain_policy(const ctl_call &call, int32_t number, bool should_be,
                        const char *otherwise) {
    bool there = false;
    const ctl_exit status = find_policy(call, number, &there);
    if (status != CTL_DONE)
        return status;
    if (there == should_be)
        return ctl_refused(otherwise);
    return ctl_refused(there ? "the policy exists already"
                             : "no such policy; create it with policy create");
}

/// @param state  empty when nothing could be seen
ctl_exit bound_already(const ctl_call &call, const ctl_daemon_state &state,
                       const utm_app_config_cmd &request) {
    const ctl_daemon_person *person = ctl_state_person(state, request.arg0);
    if (person != nullptr && person->policy != 0)
        return ctl_fail(CTL_REFUSED, "the daemon refused: %s has policy %d already, for good",
                        ctl_call_person(call.household, request.arg0).text, person->policy);
    for (const ctl_daemon_person &other : state.people)
        if (other.policy == request.arg1)
            return ctl_fail(CTL_REFUSED, "the daemon refused: policy %d is that of %s, for good",
                            request.arg1, ctl_call_person(call.household, other.number).text);
    return ctl_refused(
        "the profile has a policy already, or the policy is another profile's; which "
        "of both it tells only while limits are on");
}

ctl_exit explain_bind(const ctl_call &call, const utm_app_config_cmd &request) {
    bool there = false;
    ctl_exit status = find_profile(call, request.arg0, &there);
    if (status != CTL_DONE)
        return status;
    if (!there)
        return no_profile(call, request.arg0);
    status = find_policy(call, request.arg1, &there);
    if (status != CTL_DONE)
        return status;
    if (!there)
        return ctl_refused("no such policy; create it with policy create");
    ctl_daemon_state state;
    bool seen = false;
    status = ctl_look(call, &state, &seen);
    return status == CTL_DONE ? bound_already(call, state, request) : status;
}

/// @param reason  empty when none is found: then the daemon knows more than can be seen from here
ctl_exit refused_file(const char *path, const char *reason) {
    if (reason[0] != '\0')
        return ctl_fail(CTL_REFUSED, "the daemon refused: %s: %s", path, reason);
    return ctl_fail(CTL_REFUSED,
                    "the daemon refused: %s: it does not tell why, and nothing is wrong with it as "
                    "seen from here; are there links on the way that are not root's?",
                    path);
}

/// @return what keeps a file from being written; empty when nothing seems to
ctl_objection object_to_export(const char *path) {
    ctl_objection objection = {};
    char folder[PATH_MAX] = "/";
    snprintf(folder, sizeof(folder), "%s", path);
    char *slash = strrchr(folder, '/');
    slash[slash == folder ? 1 : 0] = '\0';
    struct stat there = {};
    struct statvfs space = {};
    const char *reason = "";
    if (stat(folder, &there) != 0 && errno == EACCES)
        reason = you_may_not;
    else if (stat(folder, &there) != 0 && errno == ENOENT)
        reason = "its folder does not exist";
    else if (stat(folder, &there) != 0)
        snprintf(objection.text, sizeof(objection.text), "its folder cannot be used (%s)",
                 strerror(errno));
    else if (!S_ISDIR(there.st_mode))
        reason = "it should be in a folder, and is in a file";
    else if (stat(path, &there) == 0 && !S_ISREG(there.st_mode))
        reason = S_ISDIR(there.st_mode) ? "it is a folder" : "it is not a regular file";
    else if (statvfs(folder, &space) == 0 && (space.f_flag & ST_RDONLY) != 0)
        reason = "nothing can be written there: the file system is read-only";
    else if (space.f_blocks != 0 && space.f_bfree == 0)
        reason = "no space is left there";
    if (reason[0] != '\0')
        snprintf(objection.text, sizeof(objection.text), "%s", reason);
    return objection;
}

ctl_exit explain_file(const ctl_call &call, const utm_app_config_cmd &request) {
    bool on = false;
    const ctl_exit status = find_out_whether_limits_are_on(call, &on);
    if (status != CTL_DONE)
        return status;
    if (!on)
        return ctl_refused("limits are off; turn them on with activate on");
    const utm_app_config_path_text path = utm_app_config_path(request);
    return refused_file(path.text, request.type == UTM_APP_CONFIG_EXPORT_STATISTICS
                                       ? object_to_export(path.text).text
                                       : ctl_object_to_import(path.text, utm_app_now()).text);
}

ctl_exit explain_signature(const utm_app_config_cmd &request) {
    const utm_app_config_path_text path = utm_app_config_path(request);
    struct stat there = {};
    if (stat(path.text, &there) != 0)
        return refused_file(path.text, reason_of(errno));
    return refused_file(path.text, S_ISDIR(there.st_mode)
                                       ? "it is a folder"
                                       : "the DPI engine did not load it as a signature file");
}

/// The daemon counts in local days, and takes a file of later today.
bool is_of_a_later_day(int64_t then, int64_t now) {
    const tm theirs = ctl_local_day(then, 0);
    const tm today = ctl_local_day(now, 0);
    return theirs.tm_year != today.tm_year ? theirs.tm_year > today.tm_year
                                           : theirs.tm_yday > today.tm_yday;
}

} // namespace

ctl_called ctl_call_person(const household_t &household, int32_t number) {
    ctl_called person = {};
    if (household_person_of(household, number) != nullptr)
        snprintf(person.text, sizeof(person.text), "%s", ctl_person_name(household, number).text);
    else
        snprintf(person.text, sizeof(person.text), "profile %d", number);
    return person;
}

ctl_exit ctl_look(const ctl_call &call, ctl_daemon_state *state, bool *seen) {
    *seen = false;
    ctl_exit status = find_out_whether_limits_are_on(call, &state->active);
    if (status != CTL_DONE || !state->active)
        return status;
    ctl_temporary_file file;
    json_ptr document;
    if (file.make() != CTL_DONE ||
        ctl_state_export(ctl_wire_to(call.options.daemon), file.path(), &document) != CTL_DONE)
        return CTL_DONE;
    *seen = ctl_state_read(document.get(), state);
    if (*seen)
        ctl_make_up_for_export(ctl_wire_to(call.options.daemon), call.options.daemon.socket_path,
                               *state);
    return CTL_DONE;
}

ctl_objection ctl_object_to_import(const char *path, int64_t now) {
    ctl_objection objection = {};
    const char *reason = nullptr;
    int32_t written = 0;
    const fd_guard file(regular_file_open(path));
    errno = file.get() < 0 ? errno : 0;
    const json_ptr root = file.get() < 0 ? nullptr : usage_file_read(file.get());
    if (root == nullptr)
        reason = reason_of(errno);
    else
        reason = usage_objection_to(root.get());
    if (reason == nullptr && usage_read_time(root.get(), &written) &&
        is_of_a_later_day(written, now))
        reason = "it is from the future; is the clock right?";
    if (reason != nullptr)
        snprintf(objection.text, sizeof(objection.text), "%s", reason);
    return objection;
}

ctl_exit ctl_explain(const ctl_call &call, const utm_app_config_cmd &request) {
    switch (request.type) {
    case UTM_APP_CONFIG_CREATE_PROFILE:
        return ctl_refused(no_memory);
    case UTM_APP_CONFIG_ADD_DEVICE:
        return explain_profile(call, request.arg0, no_memory);
    case UTM_APP_CONFIG_CREATE_POLICY:
        return explain_policy(call, request.arg0, false, no_memory);
    case UTM_APP_CONFIG_ADD_APPS_TO_POLICY:
    case UTM_APP_CONFIG_DELETE_POLICY:
        return explain_policy(call, request.arg0, true, no_memory);
    case UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE:
        return explain_bind(call, request);
    case UTM_APP_CONFIG_IMPORT_STATISTICS:
    case UTM_APP_CONFIG_EXPORT_STATISTICS:
        return explain_file(call, request);
    case UTM_APP_CONFIG_LOAD_SIGNATURE:
        return explain_signature(request);
    default:
        return ctl_has_operand(call.verb, "ID") ? explain_profile(call, request.arg0, nullptr)
                                                : ctl_refused(nullptr);
    }
}

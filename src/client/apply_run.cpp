#include "client/apply.h"

#include "client/apply_words.h"
#include "client/reason.h"
#include "client/temporary_file.h"
#include "core/saturate.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace {

int32_t weekday_of_today() {
    const time_t now = utm_app_now();
    tm today = {};
    localtime_r(&now, &today);
    return today.tm_wday;
}

/// @return whether a person is as the household has them, as far as the records go
bool is_as_wanted(const household_t &household, const household_person_t &wanted,
                  const ctl_daemon_state &state, const ctl_daemon_person &person) {
    if (person.enabled != ctl_is_enforced(wanted) || person.devices.count != wanted.devices.count ||
        person.rules.count != wanted.rules.count ||
        !std::equal(wanted.weekday_limits, wanted.weekday_limits + days_per_week,
                    person.weekday_limits))
        return false;
    for (const household_device_t &device : household_records(household.devices, wanted.devices))
        if (!ctl_state_has_device(state, person, ctl_mac_of(device.mac)))
            return false;
    const auto rules = household_records(state.rules, person.rules);
    for (const config_policy_rule_t &rule : household_records(household.rules, wanted.rules)) {
        const config_policy_rule_t *there = ctl_find_rule(rules, rule.app_id);
        if (there == nullptr || there->action != rule.action ||
            (rule.action == POLICY_ACTION_LIMIT && there->daily_limit != rule.daily_limit))
            return false;
    }
    return true;
}

/// One `apply`, from reading what is remembered to remembering what was done.
class applier {
public:
    applier(const household_t &household, const ctl_apply_wish &wish, const ctl_wire &wire,
            ctl_apply_report *report)
        : household_(household), wish_(wish), wire_(wire), report_(*report) {}

    ctl_exit run();

private:
    ctl_exit prepare();
    ctl_exit read_usage();
    ctl_exit make_equal();
    ctl_exit guess();
    ctl_exit put_use_back();
    ctl_exit carry_out();
    ctl_exit carry_out(const ctl_deed &deed);
    ctl_exit refused_usage() const;
    ctl_exit carry_out(const ctl_step &step);
    ctl_exit write_use_files();
    ctl_exit is_as_applied(bool *result);
    ctl_exit switch_limits(bool on);
    ctl_exit finish_report();
    ctl_exit note(const ctl_line &line);
    ctl_exit warn(const ctl_line &line);
    ctl_plan_wish plan_wish() const;

    const household_t &household_;
    const ctl_apply_wish &wish_;
    const ctl_wire &wire_;
    ctl_apply_report &report_;

    ctl_state_folder folder_;
    ctl_apply_memory memory_ = {};
    ctl_temporary_file export_;
    ctl_daemon_state state_ = {};
    ctl_daemon_state usage_ = {};
    ctl_plan plan_ = {};
    bool was_active_ = false;
};

ctl_exit out_of_memory() {
    return ctl_fail(CTL_BROKEN, "out of memory");
}

ctl_exit applier::note(const ctl_line &line) {
    return report_.deeds.add({line, 0, false, 0, 0}) ? CTL_DONE : out_of_memory();
}

ctl_exit applier::warn(const ctl_line &line) {
    return report_.warnings.add(line) ? CTL_DONE : out_of_memory();
}

/// What is only looked at needs neither a folder nor a lock.
ctl_exit applier::prepare() {
    if (wish_.dry_run && access(wish_.state_path, F_OK) != 0)
        return CTL_DONE;
    ctl_exit status = ctl_state_folder_open(wish_.state_path, &folder_);
    if (status == CTL_DONE && !wish_.dry_run)
        status = ctl_state_folder_lock(&folder_, wish_.timeout_s);
    return status == CTL_DONE ? ctl_memory_read(folder_, &memory_) : status;
}

ctl_exit applier::read_usage() {
    if (wish_.usage_path == nullptr)
        return CTL_DONE;
    const char *objection = nullptr;
    const json_ptr document = ctl_usage_file_open(wish_.usage_path, &objection);
    if (document == nullptr)
        return ctl_fail(CTL_USAGE,
                        "cannot restore %s: %s. Name a usage file that utm_appd has "
                        "exported",
                        wish_.usage_path, objection);
    return ctl_state_read(document.get(), &usage_) ? CTL_DONE : out_of_memory();
}

ctl_exit applier::switch_limits(bool on) {
    const ctl_exit status = ctl_wire_send(wire_, {.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = on});
    return status == CTL_REFUSED
               ? ctl_fail(CTL_REFUSED, "the daemon refused to switch limits %s", on ? "on" : "off")
               : status;
}

/// While limits are off only getters tell what the daemon has.
ctl_exit applier::is_as_applied(bool *result) {
    *result = false;
    if (!memory_.exists || !memory_.is_complete || memory_.applied.active || wish_.repair ||
        wish_.usage_path != nullptr ||
        (wish_.prune && memory_.applied.people.size() != household_.people.size()))
        return CTL_DONE;
    plain_vector<int32_t> numbers;
    for (const household_person_t &wanted : household_.people) {
        const ctl_daemon_person *person = ctl_state_person(memory_.applied, wanted.number);
        if (person == nullptr || !is_as_wanted(household_, wanted, memory_.applied, *person))
            return CTL_DONE;
        if (!numbers.add(wanted.number))
            return out_of_memory();
    }
    plain_vector<ctl_daemon_person> known;
    const ctl_exit status = ctl_state_ask(wire_, {numbers.begin(), numbers.end()}, &known);
    if (status != CTL_DONE)
        return status;
    *result = known.size() == numbers.size() &&
              std::all_of(known.begin(), known.end(), [this](const ctl_daemon_person &person) {
                  const household_person_t *wanted = household_person_of(household_, person.number);
                  return person.enabled == ctl_is_enforced(*wanted) &&
                         std::equal(wanted->weekday_limits, wanted->weekday_limits + days_per_week,
                                    person.weekday_limits);
              });
    return CTL_DONE;
}

/// What limits that are off leave to be told: the getters' answers, and devices and rules as they
/// were applied last.
ctl_exit applier::guess() {
    plain_vector<int32_t> numbers;
    bool fits = true;
    for (const household_person_t &person : household_.people)
        fits = fits && numbers.add(person.number);
    for (const ctl_daemon_person &person : memory_.applied.people)
        if (household_person_of(household_, person.number) == nullptr)
            fits = fits && numbers.add(person.number);
    if (!fits)
        return out_of_memory();
    const ctl_exit status = ctl_state_ask(wire_, {numbers.begin(), numbers.end()}, &state_.people);
    if (status != CTL_DONE)
        return status;
    for (const ctl_mac &mac : memory_.applied.devices)
        fits = fits && state_.devices.add(mac);
    for (const config_policy_rule_t &rule : memory_.applied.rules)
        fits = fits && state_.rules.add(rule);
    for (ctl_daemon_person &person : state_.people) {
        state_.has_counted |= person.used != 0;
        const ctl_daemon_person *applied = ctl_state_person(memory_.applied, person.number);
        if (applied != nullptr) {
            person.devices = applied->devices;
            person.rules = applied->rules;
        }
    }
    return fits
               ? warn(ctl_line_of("limits are off, so the daemon does not say what it has: devices "
                                  "and rules are taken to be as they were applied last"))
               : out_of_memory();
}

/// An `apply` that died in the middle of a repair has left somebody's time used up.
ctl_exit applier::put_use_back() {
    if (faccessat(folder_.fd.get(), ctl_as_it_was_name, F_OK, AT_SYMLINK_NOFOLLOW) != 0)
        return CTL_DONE;
    ctl_daemon_state now = {};
    const ctl_exit learned = ctl_state_learn(wire_, export_.path(), &now);
    if (learned != CTL_DONE)
        return learned;
    if (now.has_counted) { // else the daemon was started anew
        utm_app_config_cmd request = {.type = UTM_APP_CONFIG_IMPORT_STATISTICS};
        utm_app_config_put_path(&request, ctl_state_file(folder_, ctl_as_it_was_name).text);
        const ctl_exit status = ctl_wire_send(wire_, request);
        if (status == CTL_REFUSED)
            ctl_say("the daemon refused %s/%s, what was used before a repair that was cut short",
                    folder_.path, ctl_as_it_was_name);
        else if (status != CTL_DONE)
            return status;
    }
    ctl_state_remove(folder_, ctl_as_it_was_name);
    ctl_state_remove(folder_, ctl_used_up_name);
    return CTL_DONE;
}

ctl_plan_wish applier::plan_wish() const {
    return {.household = household_,
            .memory = memory_,
            .state = state_,
            .usage = wish_.usage_path != nullptr ? &usage_ : nullptr,
            .usage_path = wish_.usage_path,
            .weekday = weekday_of_today(),
            .was_active = was_active_,
            .repair = wish_.repair,
            .prune = wish_.prune};
}

/// Writes what the people who have to be shown as used up have used, as it is and as it is to look.
/// An import turns the router's list around, so the second one has it the other way round.
ctl_exit applier::write_use_files() {
    json_ptr exported;
    ctl_exit status = ctl_state_export(wire_, export_.path(), &exported);
    if (status != CTL_DONE)
        return status;
    const json_ptr file(json_object_new_object());
    json_object *people = json_object_new_array();
    json_object *router = json_object_new_array();
    json_object *exported_people = usage_profiles_of(exported.get());
    for (size_t i = 0; i < json_array_size(exported_people); ++i) {
        json_object *element = json_object_array_get_idx(exported_people, i);
        int32_t number = 0;
        if (usage_read_profile_id(element, &number) && ctl_contains(plan_.used_up, number))
            json_object_array_add(people, json_object_get(element));
    }
    json_object *exported_router = usage_router_apps_of(exported.get());
    for (size_t i = json_array_size(exported_router); i > 0; --i)
        json_object_array_add(router,
                              json_object_get(json_object_array_get_idx(exported_router, i - 1)));
    json_object *timestamp = nullptr;
    json_object_object_get_ex(exported.get(), usage_key::timestamp, &timestamp);
    json_object_object_add(file.get(), usage_key::user_profile_list, people);
    json_object_object_add(file.get(), usage_key::timestamp, json_object_get(timestamp));
    json_object_object_add(file.get(), usage_key::global_stat, router);
    if (json_array_size(people) != plan_.used_up.size())
        return ctl_fail(CTL_REFUSED, "somebody else has deleted a person just now: try again");
    status = ctl_state_write(folder_, ctl_as_it_was_name, file.get());
    for (size_t i = 0; i < json_array_size(people); ++i) {
        json_object *element = json_object_array_get_idx(people, i);
        usage_profile_t profile;
        if (usage_read_profile(element, &profile))
            json_object_object_add(
                element, usage_key::daily_used,
                json_object_new_int(saturating_sum(minutes_per_day, profile.daily_extend)));
    }
    json_object_object_add(file.get(), usage_key::global_stat, json_object_get(exported_router));
    return status == CTL_DONE ? ctl_state_write(folder_, ctl_used_up_name, file.get()) : status;
}

ctl_exit applier::refused_usage() const {
    const ctl_objection objection = ctl_object_to_import(wish_.usage_path, utm_app_now());
    return ctl_fail(CTL_REFUSED, "the daemon refused to import %s: %s; apply without --restore",
                    wish_.usage_path,
                    objection.text[0] != '\0' ? objection.text : "the reason cannot be told");
}

ctl_exit applier::carry_out(const ctl_step &step) {
    utm_app_config_cmd request = step.request;
    if (step.file == ctl_step_file::used_up) {
        const ctl_exit status = write_use_files();
        if (status != CTL_DONE)
            return status;
        utm_app_config_put_path(&request, ctl_state_file(folder_, ctl_used_up_name).text);
    } else if (step.file == ctl_step_file::as_it_was) {
        utm_app_config_put_path(&request, ctl_state_file(folder_, ctl_as_it_was_name).text);
    } else if (step.file == ctl_step_file::usage) {
        utm_app_config_put_path(&request, wish_.usage_path);
    }
    const ctl_exit status = ctl_wire_send(wire_, request);
    if (status == CTL_DONE && step.file == ctl_step_file::as_it_was) {
        ctl_state_remove(folder_, ctl_as_it_was_name);
        ctl_state_remove(folder_, ctl_used_up_name);
    }
    if (status != CTL_REFUSED || step.may_be_refused)
        return status == CTL_REFUSED ? CTL_DONE : status;
    if (step.file == ctl_step_file::usage)
        return refused_usage();
    return ctl_fail(CTL_REFUSED,
                    "the daemon refused command %d: another program may have changed something, or "
                    "the daemon was restarted",
                    request.type);
}

ctl_exit applier::carry_out(const ctl_deed &deed) {
    for (size_t i = deed.first; i < deed.first + deed.count; ++i) {
        const ctl_exit status = carry_out(plan_.steps[i]);
        if (status == CTL_DONE)
            continue;
        if (plan_.steps[i].file == ctl_step_file::usage && status == CTL_REFUSED)
            return status; // it would be refused again
        if (deed.line.text[0] != '\0')
            ctl_say("stopped at \"%s\"; apply again to go on from there", deed.line.text);
        else
            ctl_say("stopped; apply again to go on from there");
        return status;
    }
    return CTL_DONE;
}

ctl_exit applier::carry_out() {
    ctl_exit status = ctl_state_write(
        folder_, ctl_applied_name,
        ctl_memory_under_way(memory_, household_, state_, plan_.release, plan_.scratch).get());
    for (const ctl_deed &deed : plan_.deeds) {
        if (status == CTL_DONE)
            status = carry_out(deed);
        if (status == CTL_DONE && deed.line.text[0] != '\0' && !report_.deeds.add(deed))
            status = out_of_memory();
    }
    if (status != CTL_DONE)
        return status;
    // What was restored is in the daemon now, and its file may be replaced.
    if (wish_.usage_path != nullptr)
        ctl_make_up_for_export(wire_, nullptr, usage_);
    return ctl_state_write(folder_, ctl_applied_name,
                           ctl_memory_at_end(household_, state_, wish_.prune).get());
}

ctl_exit applier::finish_report() {
    for (const ctl_line &warning : plan_.warnings)
        if (!report_.warnings.add(warning))
            return out_of_memory();
    if (!wish_.dry_run)
        return CTL_DONE;
    for (const ctl_deed &deed : plan_.deeds)
        if (deed.line.text[0] != '\0' && !report_.deeds.add(deed))
            return out_of_memory();
    return CTL_DONE;
}

/// Limits are on, or are only spoken of.
ctl_exit applier::make_equal() {
    const bool is_told = was_active_ || !wish_.dry_run;
    ctl_exit status = is_told ? export_.make() : guess();
    if (status == CTL_DONE && !wish_.dry_run)
        status = put_use_back();
    if (status == CTL_DONE && is_told)
        status = ctl_state_learn(wire_, export_.path(), &state_);
    if (status == CTL_DONE && is_told)
        ctl_make_up_for_export(wire_, wish_.socket_path, state_);
    if (status != CTL_DONE)
        return status;
    if (wish_.usage_path != nullptr && state_.has_counted)
        return ctl_fail(CTL_REFUSED,
                        "nothing is restored: the daemon has counted use already, "
                        "which %s would replace. Apply without --restore",
                        wish_.usage_path);
    if (!ctl_make_plan(plan_wish(), &plan_))
        return out_of_memory();
    status = finish_report();
    return status == CTL_DONE && !wish_.dry_run ? carry_out() : status;
}

ctl_exit applier::run() {
    ctl_exit status = prepare();
    if (status == CTL_DONE)
        status = read_usage();
    if (status != CTL_DONE)
        return status;
    utm_app_config_reply reply = {};
    status = ctl_wire_ask(wire_, {.type = UTM_APP_CONFIG_GET_STATUS}, &reply);
    if (status != CTL_DONE)
        return status == CTL_REFUSED ? ctl_refused(nullptr) : status;
    was_active_ = reply.activate != 0;
    bool is_done = false;
    if (!was_active_ && !household_.limits)
        status = is_as_applied(&is_done);
    if (status != CTL_DONE || is_done)
        return status;
    if (!was_active_ && household_.limits)
        status = note(ctl_line_of("limits are switched on"));
    // An engine that was started anew, or did not hear it, ignores its rules.
    if (status == CTL_DONE && was_active_ && wish_.repair && !wish_.dry_run)
        status = switch_limits(false);
    if (status == CTL_DONE && (!was_active_ || wish_.repair) && !wish_.dry_run)
        status = switch_limits(true);
    if (status != CTL_DONE)
        return status;
    status = make_equal();
    // Limits that are to be off were switched on to look.
    if (status != CTL_DONE && !was_active_ && !household_.limits && !wish_.dry_run &&
        switch_limits(false) != CTL_DONE)
        ctl_say("limits were off and are on now");
    return status;
}

} // namespace

ctl_exit ctl_apply_household(const household_t &household, const ctl_apply_wish &wish,
                             const ctl_wire &wire, ctl_apply_report *report) {
    return applier(household, wish, wire, report).run();
}

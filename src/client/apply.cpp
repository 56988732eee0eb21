#include "client/apply.h"

#include "client/arguments.h"
#include "client/household_file.h"
#include "client/output.h"
#include "client/verbs.h"

#include <cstdio>

namespace {

void print_lines(const ctl_apply_report &report, const ctl_apply_wish &wish) {
    for (const ctl_deed &deed : report.deeds)
        puts(deed.line.text);
    if (report.deeds.empty())
        puts(wish.repair && !wish.dry_run ? "nothing to change; everything was sent again"
                                          : "nothing to do");
    else if (wish.dry_run)
        puts("(a dry run: nothing was changed)");
}

/// The household's own name: who is deleted has none any more.
void add_person(ctl_document *step, const household_t &household, int32_t number) {
    const household_person_t *person = household_person_of(household, number);
    step->add_int("profile", number);
    if (person != nullptr)
        step->add_text("person", person->name.text);
    else
        step->add_nothing("person");
}

/// @param status  how it ended: what was done before it failed is told, too
ctl_exit print_document(const ctl_apply_report &report, const ctl_apply_wish &wish,
                        const household_t &household, ctl_exit status) {
    ctl_document document;
    if (status != CTL_DONE)
        document.add_error();
    document.add_bool("changed", !report.deeds.empty());
    document.add_bool("dry_run", wish.dry_run);
    json_object *steps = document.add_array("steps");
    for (const ctl_deed &deed : report.deeds) {
        ctl_document step;
        step.add_text("what", deed.line.text);
        if (deed.is_personal)
            add_person(&step, household, deed.person);
        document.append(steps, &step);
    }
    const ctl_exit printed = document.print();
    return printed == CTL_DONE ? status : printed;
}

} // namespace

ctl_exit ctl_apply(const ctl_call &call) {
    const ctl_options &options = call.options;
    const char *told = call.operands.empty() ? nullptr : call.operands[0];
    ctl_path usage = {};
    if (options.restore_path != nullptr && !ctl_read_path(options.restore_path, &usage))
        return CTL_USAGE;
    household_t household = {};
    if (told == nullptr)
        told = ctl_household_place_of(options.household_path).path;
    ctl_exit status = ctl_read_whole_household(told, options.names_path, &household);
    if (status != CTL_DONE)
        return status;
    const ctl_apply_wish wish = {.dry_run = options.has(CTL_OPTION_DRY_RUN),
                                 .repair = options.has(CTL_OPTION_REPAIR),
                                 .prune = options.has(CTL_OPTION_PRUNE),
                                 .usage_path =
                                     options.restore_path != nullptr ? usage.text : nullptr,
                                 .state_path = ctl_state_folder_path(),
                                 .socket_path = options.daemon.socket_path,
                                 .timeout_s = options.daemon.timeout_s};
    ctl_apply_report report = {};
    status = ctl_apply_household(household, wish, ctl_wire_to(options.daemon), &report);
    for (const ctl_line &warning : report.warnings)
        ctl_say("%s", warning.text);
    if (call.json())
        return print_document(report, wish, household, status);
    if (status == CTL_DONE || !report.deeds.empty())
        print_lines(report, wish);
    return status;
}

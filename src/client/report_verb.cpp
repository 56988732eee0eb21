/// `report`: a page of everybody, or of one person.

#include "client/daemon_state.h"
#include "client/household_file.h"
#include "client/output_file.h"
#include "client/person_page.h"
#include "client/report.h"
#include "client/temporary_file.h"
#include "client/verbs.h"

namespace {

/// Has the daemon write a file for the page, which goes with its folder.
ctl_exit report_now(ctl_call call, FILE *page) {
    ctl_temporary_file file;
    ctl_exit status = file.make();
    if (status != CTL_DONE)
        return status;
    utm_app_config_put_path(&call.request, file.path());
    status = ctl_send(call);
    if (status != CTL_DONE)
        return status;
    const char *objection = nullptr;
    ctl_daemon_state state = {};
    if (ctl_state_read(ctl_usage_file_open(file.path(), &objection).get(), &state))
        ctl_make_up_for_export(ctl_wire_to(call.options.daemon), call.options.daemon.socket_path,
                               state);
    return ctl_write_report(page, file.path(), call.household);
}

ctl_exit report_person(const ctl_call &call, FILE *page) {
    int32_t number = 0;
    if (!ctl_read_person(call.household, call.options.person, &number))
        return CTL_USAGE;
    ctl_person_day day = {};
    const ctl_exit status =
        call.operands.empty()
            ? ctl_ask_person_day(call.options.daemon, call.household, number, &day)
            : ctl_read_person_day(call.operands[0], call.household, number, &day);
    if (status == CTL_DONE)
        ctl_write_person_page(page, day, call.household);
    return status;
}

ctl_exit report(const ctl_call &call, FILE *page) {
    if (call.options.has(CTL_OPTION_PERSON))
        return report_person(call, page);
    if (call.operands.empty())
        return report_now(call, page);
    return ctl_write_report(page, call.operands[0], call.household);
}

} // namespace

ctl_exit ctl_report(const ctl_call &call) {
    ctl_output_file page;
    ctl_exit status = page.open(call.options.output_path, call.json() ? "page" : nullptr);
    if (status == CTL_DONE)
        status = report(call, page.stream());
    return status == CTL_DONE ? page.commit() : status;
}

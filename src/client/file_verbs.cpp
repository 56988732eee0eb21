/// The usage file: written, read, and made into a page.

#include "client/arguments.h"
#include "client/report.h"
#include "client/requests.h"
#include "client/temporary_file.h"
#include "client/verbs.h"

#include <cstdio>

namespace {

ctl_exit do_with_path(const ctl_call &call, uint8_t type, const char *text) {
    ctl_path path = {};
    if (!ctl_read_path(text, &path))
        return CTL_USAGE;
    return ctl_do(call, ctl_path_request(type, path));
}

/// Has the daemon write a file for the page, which goes with its folder.
ctl_exit report_now(const ctl_call &call) {
    ctl_temporary_file file;
    ctl_exit status = file.make();
    if (status == CTL_DONE)
        status = do_with_path(call, UTM_APP_CONFIG_EXPORT_STATISTICS, file.path());
    return status == CTL_DONE ? ctl_write_report(stdout, file.path(), call.names) : status;
}

} // namespace

ctl_exit ctl_export(const ctl_call &call) {
    return do_with_path(call, UTM_APP_CONFIG_EXPORT_STATISTICS, call.operands[0]);
}

ctl_exit ctl_import(const ctl_call &call) {
    return do_with_path(call, UTM_APP_CONFIG_IMPORT_STATISTICS, call.operands[0]);
}

ctl_exit ctl_report(const ctl_call &call) {
    if (call.operand_count == 0)
        return report_now(call);
    return ctl_write_report(stdout, call.operands[0], call.names);
}

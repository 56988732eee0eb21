#include "client/report.h"

#include "client/local_day.h"
#include "client/page.h"
#include "client/report_parts.h"

namespace {

void put_header(const ctl_report_page &report) {
    fputs("<header>\n<h1>Internet time</h1>\n<p class=\"soft\">", report.page);
    if (report.document.has_time) {
        const tm written = ctl_local_day(report.document.timestamp, 0);
        fprintf(report.page, "%s, %s", ctl_long_day(written).text, ctl_clock_time(written).text);
    } else {
        fputs("The file has no date.", report.page);
    }
    fputs("</p>\n</header>\n", report.page);
}

void put_profiles(const ctl_report_page &report) {
    const ctl_usage_document &document = report.document;
    for (const ctl_profile_use &profile : document.profiles)
        ctl_put_profile(report, profile);
    const size_t missing = document.profile_count - document.profiles.size();
    if (document.profile_count == 0)
        fputs("<section>\n<h2>Profiles</h2>\n<p class=\"soft\">No profiles yet.</p>\n</section>\n",
              report.page);
    if (missing > 0)
        fprintf(report.page, "<section>\n<p>Profiles that are not shown: %zu</p>\n</section>\n",
                missing);
}

void put_router(const ctl_report_page &report) {
    fputs("<section>\n<h2>The whole router</h2>\n<h3>Applications</h3>\n", report.page);
    ctl_put_apps(report, ctl_records(report.document.apps, report.document.router_apps), {});
    fputs("</section>\n", report.page);
}

/// Writes what a reader could otherwise take for a mistake.
void put_footer(FILE *page) {
    fputs("<footer>\n"
          "<p>Weeks begin on Sunday. Applications that run at the same time each count their own "
          "minutes, so together they may have more than the profile.</p>\n"
          "<p>Limits are shown as they are set; whether they are switched on is not in the "
          "file.</p>\n</footer>\n",
          page);
}

} // namespace

ctl_exit ctl_write_report(FILE *page, const char *path, const ctl_app_names &names) {
    ctl_usage_document document = {};
    const ctl_exit status = ctl_read_usage_document(path, &document);
    if (status != CTL_DONE)
        return status;
    const ctl_report_page report = {page, document, names};
    ctl_begin_page(page, "Internet time");
    put_header(report);
    fputs("<main>\n", page);
    put_profiles(report);
    put_router(report);
    fputs("</main>\n", page);
    put_footer(page);
    ctl_end_page(page);
    return CTL_DONE;
}

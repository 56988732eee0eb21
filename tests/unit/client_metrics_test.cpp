#include "client/metrics.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

household_name_t metrics_name(const char *text) {
    household_name_t name = {};
    strcpy(name.text, text);
    return name;
}

std::string metrics_of(const ctl_figures &figures) {
    char *text = nullptr;
    size_t size = 0;
    FILE *out = open_memstream(&text, &size);
    ctl_write_metrics(out, figures);
    fclose(out);
    const std::string written(text, size);
    free(text);
    return written;
}

/// Leaves out what is said of the metrics.
std::string values_of(const ctl_figures &figures) {
    const std::string all = metrics_of(figures);
    std::string values;
    for (size_t at = 0; at < all.size();) {
        const size_t end = all.find('\n', at) + 1;
        if (all[at] != '#')
            values += all.substr(at, end - at);
        at = end;
    }
    return values;
}

TEST(ClientMetrics, SayThatNobodyAnswersAndNoMore) {
    EXPECT_EQ(metrics_of({}), "# HELP utm_up Whether the daemon answers.\n"
                              "# TYPE utm_up gauge\n"
                              "utm_up 0\n");
}

TEST(ClientMetrics, HaveNoEmptyFamilies) {
    ctl_figures figures = {.is_up = true};
    EXPECT_EQ(metrics_of(figures), "# HELP utm_up Whether the daemon answers.\n"
                                   "# TYPE utm_up gauge\n"
                                   "utm_up 1\n"
                                   "# HELP utm_limits_active Whether limits are on.\n"
                                   "# TYPE utm_limits_active gauge\n"
                                   "utm_limits_active 0\n");
}

TEST(ClientMetrics, AreInSecondsAndLeaveOutWhatIsNotKnown) {
    ctl_figures figures = {.is_up = true, .limits_on = true};
    ASSERT_TRUE(
        figures.people.add({metrics_name("Mia"), {1, true, true, true, 120, 30, {40, 200, 1000}}}));
    ASSERT_TRUE(figures.people.add(
        {metrics_name("Ben"), {2, true, true, false, INT32_MAX, 0, {INT32_MAX, 0, 0}}}));
    ASSERT_TRUE(figures.people.add({metrics_name("Zoe"), {3, false, true, false, 0, 0, {}}}));
    EXPECT_EQ(values_of(figures), "utm_up 1\n"
                                  "utm_limits_active 1\n"
                                  "utm_person_known{person=\"Mia\"} 1\n"
                                  "utm_person_known{person=\"Ben\"} 1\n"
                                  "utm_person_known{person=\"Zoe\"} 0\n"
                                  "utm_person_used_today_seconds{person=\"Mia\"} 2400\n"
                                  "utm_person_used_today_seconds{person=\"Ben\"} 128849018820\n"
                                  "utm_person_used_week_seconds{person=\"Mia\"} 14400\n"
                                  "utm_person_used_week_seconds{person=\"Ben\"} 128849018820\n"
                                  "utm_person_used_month_seconds{person=\"Mia\"} 74400\n"
                                  "utm_person_used_month_seconds{person=\"Ben\"} 128849018820\n"
                                  "utm_person_limit_seconds{person=\"Mia\"} 7200\n"
                                  "utm_person_limit_seconds{person=\"Ben\"} 128849018820\n"
                                  "utm_person_bonus_seconds{person=\"Mia\"} 1800\n"
                                  "utm_person_bonus_seconds{person=\"Ben\"} 0\n"
                                  "utm_person_left_seconds{person=\"Mia\"} 6600\n"
                                  "utm_person_enforced{person=\"Mia\"} 1\n"
                                  "utm_person_enforced{person=\"Ben\"} 0\n"
                                  "utm_person_cut_off{person=\"Mia\"} 0\n"
                                  "utm_person_cut_off{person=\"Ben\"} 0\n");
}

TEST(ClientMetrics, EscapeWhatStandsInLabels) {
    ctl_figures figures = {.is_up = true, .limits_on = true};
    const household_name_t odd = metrics_name("\"Mi\\a\" {}=,\xc3\xa9");
    ASSERT_TRUE(
        figures.apps.add({odd, metrics_name("\\"), {{305, POLICY_ACTION_LIMIT, 45}, 45, true}}));
    ASSERT_TRUE(
        figures.apps.add({odd, metrics_name("games"), {{306, POLICY_ACTION_BLOCK, 0}, 0, true}}));
    const std::string labels = "{person=\"\\\"Mi\\\\a\\\" {}=,\xc3\xa9\",application=\"";
    EXPECT_EQ(values_of(figures), "utm_up 1\n"
                                  "utm_limits_active 1\n"
                                  "utm_application_used_today_seconds" +
                                      labels +
                                      "\\\\\"} 2700\n"
                                      "utm_application_used_today_seconds" +
                                      labels +
                                      "games\"} 0\n"
                                      "utm_application_limit_seconds" +
                                      labels +
                                      "\\\\\"} 2700\n"
                                      "utm_application_blocked" +
                                      labels +
                                      "\\\\\"} 1\n"
                                      "utm_application_blocked" +
                                      labels + "games\"} 1\n");
}

} // namespace

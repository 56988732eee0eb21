/// Import: what time does to a file's figures.

#include "persist/import.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using world::local;

/// What a gap does to the figures 7 (today), 100 (this week) and 1000 (this month), and how many
/// days it turns the rings on.
struct gap_t {
    const char *name;
    time_t then;
    time_t now;
    const char *used;
    int32_t days;
};

const char *const same_day = "7/100/1000";
const char *const same_week = "0/107/1000";
const char *const same_month = "0/0/1107";
const char *const later_month = "0/0/0";

class ImportRoll : public usage_file_fixture {
protected:
    /// A file with the figures at both places. Its rings remember `100 + n` for n days ago.
    static usage_file::document_t file_of(time_t then, int32_t next) {
        usage_file::app_t app = {10, 7, 100, 1000, next};
        for (int32_t ago = 1; ago <= 30; ++ago)
            app.ring[static_cast<size_t>((next + 30 - ago) % 30)] = 100 + ago;
        return {{{3, 7, 100, 1000, {app}}}, then, {app}};
    }

    /// The ring of such a file some days later, told by days: what was n days ago is n + days ago
    /// now, and the days between, the file's own among them, were without figures.
    static std::string ring_after(int32_t next, int32_t days) {
        int32_t slots[30] = {};
        const int32_t now_next = (next + days) % 30;
        for (int32_t ago = days + 1; ago <= 30; ++ago)
            slots[(now_next + 30 - ago) % 30] = 100 + ago - days;
        std::string text;
        for (int slot = 0; slot < 30; ++slot)
            if (slots[slot] != 0)
                text += (text.empty() ? "" : " ") + std::to_string(slot) + ":" +
                        std::to_string(slots[slot]);
        return "days [" + text + "] next " + std::to_string(now_next);
    }

    static std::string app_line(const gap_t &gap, int32_t next) {
        return std::string("  app 10: used ") + gap.used + ", blocked 0, " +
               ring_after(next, gap.days) + "\n";
    }

    /// Imports a file of `then` at `now` into an empty store and compares the whole store.
    static void expect_gap(const gap_t &gap, int32_t next) {
        SCOPED_TRACE(gap.name);
        empty_store();
        world::set_now(gap.now);
        ASSERT_EQ(import_text(usage_file::text(file_of(gap.then, next))), 0);
        char collected[32];
        snprintf(collected, sizeof(collected), "%+lld",
                 static_cast<long long>(gap.now - world::default_now));
        EXPECT_EQ(world::render_store(),
                  std::string("profile 3: devices 0 [], enabled 0, limit 1440 + 0, used ") +
                      gap.used + ", blocked 0, collected " + collected +
                      ", apps 1, policy none\n"
                      "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n" +
                      app_line(gap, next) + "router: apps 1, collected " + collected + "\n" +
                      app_line(gap, next));
    }

    static void expect_gaps(const std::vector<gap_t> &gaps) {
        for (const gap_t &gap : gaps)
            for (const int32_t next : {0, 4, 29})
                expect_gap(gap, next);
    }

    static void expect_from_future(time_t then, time_t now) {
        world::set_now(now);
        const std::string before = export_text();
        world::trace();
        EXPECT_EQ(import_text(usage_file::text(file_of(then, 4))), -1);
        EXPECT_EQ(world::trace(), "log Import statistic failed because it is from future\n"
                                  "log import from /tmp/usage/import.json failed\n");
        EXPECT_EQ(export_text(), before);
    }
};

TEST_F(ImportRoll, RollsByTheWidestBoundaryThatHasPassed) {
    expect_gaps({
        {"same second", local(2026, 3, 4, 12), local(2026, 3, 4, 12), same_day, 0},
        {"first and last second of a day", local(2026, 3, 4), local(2026, 3, 4, 23, 59, 59),
         same_day, 0},
        {"a second over midnight", local(2026, 3, 4, 23, 59, 59), local(2026, 3, 5), same_week, 1},
        {"Saturday to Sunday", local(2026, 3, 7, 23, 59, 59), local(2026, 3, 8), same_month, 1},
        {"Sunday to Saturday", local(2026, 3, 8), local(2026, 3, 14), same_week, 6},
        {"to an earlier weekday", local(2026, 3, 5), local(2026, 3, 10), same_month, 5},
        {"31 January to 1 February", local(2026, 1, 31, 23), local(2026, 2, 1), later_month, 1},
        {"31 December to 1 January", local(2025, 12, 31, 23), local(2026, 1, 1), later_month, 1},
    });
}

TEST_F(ImportRoll, TurnsTheRingsByTheDaysOfTheGap) {
    expect_gaps({
        {"0 days", local(2026, 3, 31, 1), local(2026, 3, 31, 2), same_day, 0},
        {"1 day", local(2026, 3, 30), local(2026, 3, 31), same_week, 1},
        {"6 days", local(2026, 3, 15), local(2026, 3, 21), same_week, 6},
        {"6 days over a Sunday", local(2026, 3, 17), local(2026, 3, 23), same_month, 6},
        {"8 days over a Saturday", local(2026, 3, 7), local(2026, 3, 15), same_month, 8},
        {"31 days", local(2026, 3, 1), local(2026, 4, 1), later_month, 31},
        {"45 days", local(2026, 3, 4), local(2026, 4, 18), later_month, 45},
        {"400 days", local(2025, 3, 14), local(2026, 4, 18), later_month, 400},
    });
}

TEST_F(ImportRoll, TakesAGapToALaterWeekdayForTheSameWeekWithinAMonth) {
    expect_gaps({
        {"7 days", local(2026, 3, 4), local(2026, 3, 11), same_week, 7},
        {"8 days", local(2026, 3, 4), local(2026, 3, 12), same_week, 8},
        {"29 days", local(2026, 3, 2), local(2026, 3, 31), same_week, 29},
        {"30 days", local(2026, 3, 1), local(2026, 3, 31), same_week, 30},
    });
}

TEST_F(ImportRoll, KnowsALaterMonthByItsNumberAndALaterYearByItsOwn) {
    expect_gaps({
        {"a month to the day", local(2026, 3, 4, 12), local(2026, 4, 4, 12), later_month, 31},
        {"a year to the day", local(2025, 3, 4, 12), local(2026, 3, 4, 12), later_month, 365},
        {"a year and a day", local(2025, 3, 3), local(2026, 3, 4), later_month, 366},
    });
}

TEST_F(ImportRoll, CountsDaysAsTheCalendarCountsLeapDays) {
    expect_gaps({
        {"end of February", local(2025, 2, 28), local(2025, 3, 1), later_month, 2},
        {"into the leap day", local(2024, 2, 28), local(2024, 2, 29), same_week, 1},
        {"out of the leap day", local(2024, 2, 29), local(2024, 3, 1), later_month, 0},
        {"over the leap day", local(2024, 2, 28), local(2024, 3, 1), later_month, 1},
        {"the year after a leap year", local(2025, 1, 1), local(2026, 1, 1), later_month, 366},
    });
}

TEST_F(ImportRoll, CountsDaysOfTheMachinesZone) {
    world::set_zone("Europe/Berlin");
    expect_gaps({
        {"the short day", local(2026, 3, 29, 0, 30), local(2026, 3, 29, 23, 30), same_day, 0},
        {"over the short day", local(2026, 3, 28, 23, 59), local(2026, 3, 30, 0, 1), same_month, 2},
        {"the long day", local(2026, 10, 25), local(2026, 10, 25, 23, 59, 59), same_day, 0},
        // 23:30 and 00:30 there, one and the same day by UTC.
        {"midnight there", local(2026, 3, 4, 23, 30), local(2026, 3, 5, 0, 30), same_week, 1},
    });
    world::set_zone("America/New_York");
    expect_gaps({
        {"midnight of UTC", local(2026, 3, 4, 18, 30), local(2026, 3, 4, 19, 30), same_day, 0},
    });
}

TEST_F(ImportRoll, RefusesAFileOfALaterDay) {
    make(file_of(world::default_now, 2));
    expect_from_future(local(2026, 3, 5), local(2026, 3, 4, 23, 59, 59));
    expect_from_future(local(2026, 3, 5, 12), local(2026, 3, 4, 12));
    expect_from_future(local(2026, 4, 4), local(2026, 3, 4));
    expect_from_future(local(2027, 1, 1), local(2026, 12, 31, 23, 59, 59));
    expect_from_future(local(2038, 1, 19), local(2026, 3, 4));
}

TEST_F(ImportRoll, TakesALaterHourOfTheSameDay) {
    expect_gaps({
        {"an hour", local(2026, 3, 4, 13), local(2026, 3, 4, 12), same_day, 0},
        {"a whole day", local(2026, 3, 4, 23, 59, 59), local(2026, 3, 4), same_day, 0},
        // These two days bear one number, so the later one does not count as the future.
        {"the leap day's neighbour", local(2024, 3, 1), local(2024, 2, 29), later_month, 0},
    });
}

TEST_F(ImportRoll, TakesAFileWithoutATimeForOneWrittenNow) {
    usage_file::document_t file = file_of(0, 4);
    const std::string text = usage_file::text(file);
    const std::string member = ",\"timestamp\":0";
    world::set_now(local(2026, 3, 4));
    ASSERT_EQ(import_text(std::string(text).erase(text.find(member), member.size())), 0);
    file.timestamp = local(2026, 3, 4);
    EXPECT_EQ(export_text(), usage_file::text(file));
}

TEST_F(ImportRoll, ReadsTimesBeforeTheEpoch) {
    expect_gaps({{"1969", -1, local(1970, 1, 1), later_month, 1}});
}

TEST_F(ImportRoll, HoldsCountersAtTheEndsOfTheirRange) {
    constexpr int32_t max = std::numeric_limits<int32_t>::max();
    constexpr int32_t min = std::numeric_limits<int32_t>::min();
    usage_file::document_t file = {
        {{3, max, max, max}, {4, min, min, min}}, local(2026, 3, 3), {{10, max, 1, max}}};
    world::set_now(local(2026, 3, 4));
    ASSERT_EQ(import_text(usage_file::text(file)), 0);
    file.timestamp = local(2026, 3, 4);
    file.profiles = {{3, 0, max, max}, {4, 0, min, min}};
    file.router = {{10, 0, max, max, 1}};
    EXPECT_EQ(export_text(), usage_file::text(file));
    // Over a week's end everything meets in the month's figure.
    file.timestamp = local(2026, 3, 3);
    file.profiles = {{3, max, max, max}, {4, min, max, 1}};
    file.router = {{10, min, min, -1, 0}};
    world::set_now(local(2026, 3, 8));
    ASSERT_EQ(import_text(usage_file::text(file)), 0);
    file.timestamp = local(2026, 3, 8);
    file.profiles = {{3, 0, 0, max}, {4, 0, 0, 0}};
    file.router = {{10, 0, 0, min, 5}};
    EXPECT_EQ(export_text(), usage_file::text(file));
}

} // namespace

#include "usage/calendar.h"

#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

namespace {

using world::local;

constexpr time_t day = 24 * 60 * 60;

class Calendar : public world_test {};

/// What the four boundary tests say of two instants: "dwmy", a dash where nothing changed.
std::string changes(time_t last, time_t now) {
    std::string text;
    text += utm_app_is_day_changed(last, now) == 1 ? 'd' : '-';
    text += utm_app_is_week_changed(last, now) == 1 ? 'w' : '-';
    text += utm_app_is_month_changed(last, now) == 1 ? 'm' : '-';
    text += utm_app_is_year_changed(last, now) == 1 ? 'y' : '-';
    return text;
}

/// 1 March 2026 is a Sunday, 1 January 2026 a Thursday, 1 January 2023 a Sunday.
TEST_F(Calendar, SeesEachBoundaryInBothDirections) {
    for (const char *zone : {"UTC", "Europe/Berlin", "America/Santiago", "Asia/Kathmandu"}) {
        world::set_zone(zone);
        const struct {
            const char *name;
            time_t last, now;
            const char *forward;  ///< from last to now
            const char *backward; ///< from now to last: a clock that was set back
        } boundaries[] = {
            {"within a day", local(2026, 3, 4), local(2026, 3, 5) - 1, "----", "----"},
            {"midnight in mid-week", local(2026, 3, 5) - 1, local(2026, 3, 5), "d---", "dw--"},
            {"into Saturday", local(2026, 3, 7) - 1, local(2026, 3, 7), "d---", "dw--"},
            {"into Sunday", local(2026, 3, 8) - 1, local(2026, 3, 8), "dw--", "d---"},
            {"into Monday", local(2026, 3, 9) - 1, local(2026, 3, 9), "d---", "dw--"},
            {"a month", local(2026, 4, 1) - 1, local(2026, 4, 1), "d-m-", "dwm-"},
            {"a month from a Sunday", local(2026, 3, 1) - 1, local(2026, 3, 1), "dwm-", "d-m-"},
            {"into February", local(2025, 2, 1) - 1, local(2025, 2, 1), "d-m-", "dwm-"},
            {"a year", local(2026, 1, 1) - 1, local(2026, 1, 1), "d-my", "dwmy"},
            {"a year from a Sunday", local(2023, 1, 1) - 1, local(2023, 1, 1), "dwmy", "d-my"},
            {"into 29 February", local(2024, 2, 29) - 1, local(2024, 2, 29), "d---", "dw--"},
            {"out of 29 February", local(2024, 3, 1) - 1, local(2024, 3, 1), "d-m-", "dwm-"},
            {"out of 28 February", local(2025, 3, 1) - 1, local(2025, 3, 1), "d-m-", "dwm-"},
            // Narrow on purpose: each test looks at one field.
            {"a month to the day", local(2026, 3, 5), local(2026, 4, 5), "-wm-", "--m-"},
            {"a year to the day", local(2025, 3, 5), local(2026, 3, 5), "---y", "-w-y"},
            {"a week", local(2026, 3, 4), local(2026, 3, 11), "d---", "d---"},
            {"eight days", local(2026, 3, 4), local(2026, 3, 12), "d---", "dw--"},
            {"six days", local(2026, 3, 4), local(2026, 3, 10), "dw--", "d---"},
        };
        for (const auto &c : boundaries) {
            EXPECT_EQ(changes(c.last, c.now), c.forward) << c.name << " in " << zone;
            EXPECT_EQ(changes(c.now, c.last), c.backward) << c.name << " backwards in " << zone;
            EXPECT_EQ(changes(c.last, c.last), "----") << c.name << " in " << zone;
        }
    }
}

TEST_F(Calendar, CountsDaysInTheLocalZone) {
    // 23:30 UTC on Saturday is Sunday already in Berlin.
    const time_t last = local(2026, 3, 7, 22, 59);
    const time_t now = local(2026, 3, 7, 23, 30);
    EXPECT_EQ(changes(last, now), "----");
    world::set_zone("Europe/Berlin");
    EXPECT_EQ(changes(last, now), "dw--");
}

TEST_F(Calendar, KeepsTheDayWhenClocksChangeAtNight) {
    world::set_zone("Europe/Berlin");
    // The days that the clocks change are 23 and 25 hours long, and one day all the same.
    for (const auto &[start, hours] :
         {std::pair(local(2026, 3, 29), 23), {local(2026, 10, 25), 25}}) {
        const time_t end = start + hours * 3600;
        for (time_t hour = start; hour < end; hour += 3600)
            EXPECT_EQ(changes(hour, hour + 3599) + changes(start, hour), "--------") << hour;
        EXPECT_EQ(changes(end - 1, end), "d---");
        EXPECT_EQ(utm_app_days_between(start, end - 1), 0);
        EXPECT_EQ(utm_app_days_between(start, end), 1);
    }
}

TEST_F(Calendar, FollowsClocksThatChangeAtMidnight) {
    world::set_zone("America/Santiago");
    // Sunday, 6 September 2026 starts at 01:00: midnight itself does not exist.
    const time_t spring = local(2026, 9, 6, 1);
    EXPECT_EQ(changes(spring - 1, spring), "dw--");
    EXPECT_EQ(spring - local(2026, 9, 5), day);
    // The last hour of Saturday, 4 April 2026 comes twice before Sunday starts.
    const time_t second_hour = local(2026, 4, 5) - 3600;
    EXPECT_EQ(changes(second_hour - 1, second_hour), "----");
    EXPECT_EQ(changes(second_hour - 3601, second_hour), "----");
    EXPECT_EQ(changes(second_hour, second_hour + 3599), "----");
    EXPECT_EQ(changes(second_hour + 3599, second_hour + 3600), "dw--");
}

TEST_F(Calendar, NumbersTheDaysOfTheWeekFromSunday) {
    for (int weekday = 0; weekday < 7; ++weekday) {
        world::set_now(local(2026, 3, 1 + weekday));
        EXPECT_EQ(utm_app_current_weekday(), weekday);
        world::set_now(local(2026, 3, 1 + weekday, 23, 59, 59));
        EXPECT_EQ(utm_app_current_weekday(), weekday);
    }
}

TEST_F(Calendar, CountsLeapDaysInFloatingPoint) {
    const int32_t cases[][3] = {
        {2024, 3, 490}, {2024, 12, 490}, {2025, 2, 490},   {2025, 3, 491}, {2027, 12, 491},
        {2028, 2, 491}, {2028, 3, 491},  {2029, 3, 492},   {2020, 3, 489}, {2021, 3, 490},
        {2000, 3, 485}, {2000, 2, 484},  {1999, 12, 484},  {1970, 3, 477}, {1970, 1, 477},
        {1900, 3, 460}, {2100, 3, 509},  {400, 3, 97},     {100, 3, 24},   {1, 1, 0},
        {0, 3, 0},      {0, 1, 0},       {-2000, 3, -485},
    };
    for (const auto &[year, month, days] : cases)
        EXPECT_EQ(utm_app_leap_days(year, month), days) << year << "-" << month;
}

TEST_F(Calendar, AddsTheFractionsOfLeapDaysBeforeItCutsThem) {
    // 97 leap days in 400 years: the sum of the fractions, and not of three whole numbers.
    for (int32_t year = 0; year < 10'000; ++year) {
        EXPECT_EQ(utm_app_leap_days(year, 3), year * 97 / 400);
        EXPECT_EQ(utm_app_leap_days(year + 1, 2), year * 97 / 400);
    }
}

TEST_F(Calendar, NumbersADayByYearMonthAndLeapDays) {
    const std::pair<time_t, int64_t> cases[] = {
        {local(1970, 1, 1), 365 * 1970 + 1 + 477},
        {local(2025, 1, 1), 365 * 2025 + 1 + 490},
        {local(2025, 3, 1), 365 * 2025 + 1 + 59 + 491},
        {local(2024, 2, 29), 365 * 2024 + 29 + 31 + 490},
        {local(2026, 12, 31, 13), 365 * 2026 + 31 + 334 + 491},
    };
    for (const auto &[instant, number] : cases)
        EXPECT_EQ(utm_app_day_number(instant), number) << instant;
}

TEST_F(Calendar, CountsTheDaysBetweenTwoDatesInBothDirections) {
    for (const char *zone : {"UTC", "Europe/Berlin", "America/Santiago"}) {
        world::set_zone(zone);
        const struct {
            time_t a, b;
            int32_t days;
        } distances[] = {
            {local(2025, 2, 28, 12), local(2025, 3, 1, 12), 2},
            {local(2024, 2, 29, 12), local(2024, 3, 1, 12), 0},
            {local(2024, 2, 28, 12), local(2024, 3, 1, 12), 1},
            {local(2024, 2, 28, 12), local(2024, 2, 29, 12), 1},
            {local(2025, 1, 1, 12), local(2026, 1, 1, 12), 366},
            {local(2024, 1, 1, 12), local(2025, 1, 1, 12), 365},
            {local(2026, 3, 4, 12), local(2026, 3, 4, 12), 0},
            {local(2026, 3, 4, 12), local(2026, 3, 11, 12), 7},
            {local(2025, 12, 31, 12), local(2026, 1, 1, 12), 1},
            {local(2026, 1, 31, 12), local(2026, 2, 1, 12), 1},
            {local(1970, 1, 1, 12), local(2026, 1, 1, 12), 56 * 365 + 14},
        };
        for (const auto &[a, b, days] : distances) {
            EXPECT_EQ(utm_app_days_between(a, b), days) << zone << " " << a << " " << b;
            EXPECT_EQ(utm_app_days_between(b, a), -days) << zone << " " << b << " " << a;
        }
    }
}

TEST_F(Calendar, MiscountsOnlyTheDayAfterTheEndOfSomeFebruaries) {
    std::string miscounts;
    for (time_t noon = local(2020, 1, 1, 12); noon < local(2032, 1, 1); noon += day) {
        const int32_t days = utm_app_days_between(noon, noon + day);
        char date[32];
        tm fields = {};
        strftime(date, sizeof(date), "%Y-%m-%d", gmtime_r(&noon, &fields));
        if (days != 1)
            miscounts += std::string(date) + ": " + std::to_string(days) + "\n";
    }
    EXPECT_EQ(miscounts, "2020-02-29: 0\n"
                         "2021-02-28: 2\n"
                         "2024-02-29: 0\n"
                         "2025-02-28: 2\n"
                         "2028-02-29: 0\n"
                         "2029-02-28: 2\n");
}

TEST_F(Calendar, CountsLocalDatesAndNotHours) {
    world::set_zone("Europe/Berlin");
    EXPECT_EQ(utm_app_days_between(local(2026, 3, 4, 23, 59, 59), local(2026, 3, 5)), 1);
    EXPECT_EQ(utm_app_days_between(local(2026, 3, 4), local(2026, 3, 4, 23, 59, 59)), 0);
}

TEST_F(Calendar, SaysMinusOneForADistanceBeyond32Bits) {
    // Years that a tm holds only just: about 2.1 thousand million years are 784 thousand million
    // days.
    const time_t far = time_t{60'000'000'000'000'000};
    EXPECT_EQ(utm_app_days_between(0, far), -1);
    EXPECT_EQ(utm_app_days_between(far, 0), -1);
}

/// Whoever sets the router's zone does not tell the daemon.
TEST_F(Calendar, LooksAtTheZoneEachTime) {
    const time_t evening = local(2026, 3, 4, 20, 30);
    const time_t night = local(2026, 3, 4, 21, 30);
    world::set_now(night);
    EXPECT_EQ(utm_app_is_day_changed(evening, night), 0);
    EXPECT_EQ(utm_app_current_weekday(), 3);
    EXPECT_EQ(utm_app_days_between(evening, night), 0);
    setenv("TZ", "EAST-3", 1); // three hours ahead: there it is past midnight
    EXPECT_EQ(utm_app_is_day_changed(evening, night), 1);
    setenv("TZ", "UTC", 1);
    EXPECT_EQ(utm_app_is_day_changed(evening, night), 0);
    setenv("TZ", "EAST-3", 1);
    EXPECT_EQ(utm_app_current_weekday(), 4);
    EXPECT_EQ(utm_app_days_between(evening, night), 1);
}

} // namespace

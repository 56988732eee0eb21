#include "client/text.h"

#include "format/spelling.h"

#include <gtest/gtest.h>

namespace {

TEST(ClientTimes, AreWrittenWithoutPartsOfNothingAndReadAgain) {
    const std::pair<const char *, int32_t> cases[] = {{"0m", 0},
                                                      {"59m", 59},
                                                      {"1h", 60},
                                                      {"1h01m", 61},
                                                      {"23h59m", 1439},
                                                      {"24h", 1440},
                                                      {"35791394h07m", 2147483647}};
    for (const auto &[text, minutes] : cases) {
        EXPECT_STREQ(ctl_time_of(minutes).text, text);
        int32_t read = -1;
        EXPECT_TRUE(spelling_minutes(text, &read)) << text;
        EXPECT_EQ(read, minutes) << text;
    }
    EXPECT_STREQ(ctl_time_of(-1).text, "-1m");
    EXPECT_STREQ(ctl_time_of(-60).text, "-1h");
    EXPECT_STREQ(ctl_time_of(-90).text, "-1h30m");
    EXPECT_STREQ(ctl_time_of(INT64_MAX).text, "153722867280912930h07m");
    EXPECT_STREQ(ctl_time_of(INT64_MIN).text, "-153722867280912930h08m");
}

TEST(ClientDays, LieSoManyDaysBeforeATime) {
    const std::pair<int, const char *> cases[] = {
        {0, "Wed  4 Mar 2026, 22:40"},   {1, "Tue  3 Mar 2026, 12:40"},
        {4, "Sat 28 Feb 2026, 12:40"},   {30, "Mon  2 Feb 2026, 12:40"},
        {366, "Mon  3 Mar 2025, 12:40"},
    };
    for (const auto &[days_ago, text] : cases)
        EXPECT_STREQ(ctl_write_day(ctl_local_day(1772664000, days_ago), "%a %e %b %Y, %H:%M").text,
                     text);
}

TEST(ClientDays, GiveADateItsNumberUnpadded) {
    const tm early = ctl_local_day(1772664000, 0);
    EXPECT_STREQ(ctl_write_date(early, "%A, ", " %B %Y, %H:%M").text,
                 "Wednesday, 4 March 2026, 22:40");
    EXPECT_STREQ(ctl_write_date(early, "", " %b").text, "4 Mar");
    EXPECT_STREQ(ctl_write_date(ctl_local_day(1772664000, 4), "%a ", "").text, "Sat 28");
}

} // namespace

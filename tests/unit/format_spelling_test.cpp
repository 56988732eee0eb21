#include "format/spelling.h"

#include <gtest/gtest.h>
#include <utility>

namespace {

constexpr int32_t unread = -7;

/// @return what a reader makes of a text, `unread` where it does not take it
int32_t number_in(bool (*parse)(const char *, int32_t *), const char *text) {
    int32_t value = unread;
    const bool is_good = parse(text, &value);
    EXPECT_EQ(is_good, value != unread) << text;
    return value;
}

struct number_case {
    const char *text;
    int32_t value;
};

TEST(SpellingNumber, IsWholeAndHas32Bits) {
    const number_case cases[] = {{"0", 0},
                                 {"-0", 0},
                                 {"+5", 5},
                                 {"007", 7},
                                 {"-3", -3},
                                 {"2147483647", 2147483647},
                                 {"-2147483648", -2147483647 - 1}};
    for (const number_case &c : cases)
        EXPECT_EQ(number_in(spelling_number, c.text), c.value) << c.text;
}

TEST(SpellingNumber, IsNothingElse) {
    for (const char *text :
         {"", "-", "+", "+-3", "--3", " 3", "3 ", "\t3", "- 3", "3x", "x3", "0x10", "3.0", "1e3",
          "2147483648", "-2147483649", "9223372036854775807", "99999999999999999999",
          "-99999999999999999999"})
        EXPECT_EQ(number_in(spelling_number, text), unread) << text;
}

TEST(SpellingMinutes, AreReadAsPeopleWriteThem) {
    const number_case cases[] = {
        {"90", 90},
        {"0090", 90},
        {"90m", 90},
        {"90 m", 90},
        {"90M", 90},
        {"120min", 120},
        {"120 Min", 120},
        {"2h", 120},
        {"2 h", 120},
        {"2H", 120},
        {"0h5m", 5},
        {"1h0m", 60},
        {"1h05m", 65},
        {"1h30", 90},
        {"1h5", 65},
        {"1h30min", 90},
        {"2h 30m", 150},
        {"2 h 30 min", 150},
        {"2H30M", 150},
        {"2h  30", 150},
        {"2.5h", 150},
        {"2.5 H", 150},
        {"0.1h", 6},
        {"2.50h", 150},
        {"1.75h", 105},
        {"0.05h", 3},
        {"0.0h", 0},
        {"0.000000000h", 0},
        {"2:30", 150},
        {"0:05", 5},
        {"02:00", 120},
        {"100h1m", 6001},
        {"2147483647m", 2147483647},
        {"35791394h", 2147483640},
        {"35791394.1h", 2147483646},
        {"35791394:07", 2147483647},
    };
    for (const number_case &c : cases)
        EXPECT_EQ(number_in(spelling_minutes, c.text), c.value) << c.text;
}

TEST(SpellingMinutes, OfAnyOtherFormAreNotRead) {
    for (const char *text :
         {"",      " ",      "m",     "h",     "hm",     "h30m",   "min",    "-1",
          "+1",    " 90",    "90 ",   "90mm",  "90minm", "90 mi",  "90mins", "0x10",
          "1e2",   "90\t m", "1h60m", "1h-5m", "1hm",    "1h30m ", "1h30mm", "1h1h",
          "30m1h", "1h30s",  "1h ",   "1h 60", "1h m",   "30m 5",  "1 30",   "half"})
        EXPECT_EQ(number_in(spelling_minutes, text), unread) << text;
    for (const char *text : {"2.5", "2.5m", "2.h", ".5h", "2.5h30m", "2.5h ", "2.33h", "0.001h",
                             "2.-5h", "2. 5h", "2..5h", "2.5.5h", "0.0000000000h", "2,5h"})
        EXPECT_EQ(number_in(spelling_minutes, text), unread) << text;
    for (const char *text : {"2:3", "2:", ":30", "2:60", "2:300", "2:30h", "2:30m", "2: 30",
                             "2 :30", "2:-3", "2:+3", "-2:30", "2:30:00"})
        EXPECT_EQ(number_in(spelling_minutes, text), unread) << text;
    for (const char *text : {"2147483648", "2147483648m", "35791394h8m", "35791395h", "35791394:08",
                             "35791394.5h", "99999999999999999999", "99999999999999999999h",
                             "1h99999999999999999999m", "0.99999999999999999999h"})
        EXPECT_EQ(number_in(spelling_minutes, text), unread) << text;
}

TEST(SpellingTimeOfDay, IsHoursAndMinutesOfOneDay) {
    const number_case cases[] = {{"0:00", 0},     {"00:00", 0},    {"7:05", 425},  {"07:05", 425},
                                 {"20:30", 1230}, {"23:59", 1439}, {"24:00", 1440}};
    for (const number_case &c : cases)
        EXPECT_EQ(number_in(spelling_time_of_day, c.text), c.value) << c.text;
    for (const char *text : {"", ":", "7", "7:", ":05", "7:5", "7:005", "007:05", "24:01", "25:00",
                             "23:60", "-7:00", " 7:00", "7:00 ", "7 :00", "7.00", "7:00am", "7h"})
        EXPECT_EQ(number_in(spelling_time_of_day, text), unread) << text;
}

/// @return the days that a text means, 0 where it is not read
weekday_set_t days_in(const char *text) {
    weekday_set_t days = 0;
    const bool is_good = spelling_days(text, &days);
    EXPECT_EQ(is_good, days != 0) << text;
    return days;
}

TEST(SpellingDays, AreNamesNumbersAndGroupsInAnyCase) {
    const std::pair<const char *, weekday_set_t> cases[] = {
        {"0", 0x01},           {"6", 0x40},         {"sun", 0x01},         {"SUNDAY", 0x01},
        {"Mon", 0x02},         {"tues", 0x04},      {"wednesday", 0x08},   {"thu", 0x10},
        {"fRi", 0x20},         {"satur", 0x40},     {"sat,sun", 0x41},     {"sat, sun", 0x41},
        {"sat ,  sun", 0x41},  {"weekend", 0x41},   {"Weekdays", 0x3e},    {"ALL", 0x7f},
        {"weekend,fri", 0x61}, {"mon,mon,1", 0x02}, {"weekdays,all", 0x7f}};
    for (const auto &[text, days] : cases)
        EXPECT_EQ(days_in(text), days) << text;
}

TEST(SpellingDays, OfOtherWordsAreNotRead) {
    for (const char *text :
         {"",    ",",        "7",    "-1",      "00",       "01",      "6.",      "s",
          "su",  "t",        "th",   "sundays", "sun day",  " sun",    "sun ",    "sunn",
          "day", "\xc3\xa9", "sat,", ",sat",    "sat,,sun", "sat;sun", "sat sun", "sat, ",
          "al",  "weekends", "week", "mon-fri", "\tsun",    "sat,x"})
        EXPECT_EQ(days_in(text), 0) << text;
}

TEST(SpellingDays, AreTakenOneByOne) {
    const char *text = "weekend, Fri,2";
    const weekday_set_t expected[] = {0x41, 0x20, 0x04};
    for (const weekday_set_t days : expected) {
        ASSERT_NE(text, nullptr);
        weekday_set_t next = 0;
        EXPECT_TRUE(spelling_next_days(&text, &next));
        EXPECT_EQ(next, days);
    }
    EXPECT_EQ(text, nullptr);
}

TEST(SpellingDays, HaveNames) {
    EXPECT_STREQ(spelling_weekday(0), "Sunday");
    EXPECT_STREQ(spelling_weekday(6), "Saturday");
    EXPECT_STREQ(spelling_weekday(7), "?");
    EXPECT_STREQ(spelling_weekday(-1), "?");
}

TEST(SpellingSwitch, HasFiveWordsForEachSide) {
    for (const char *text : {"on", "yes", "true", "enabled", "1", "ON", "Yes"}) {
        bool on = false;
        EXPECT_TRUE(spelling_switch(text, &on) && on) << text;
    }
    for (const char *text : {"off", "no", "false", "disabled", "0", "OFF", "No"}) {
        bool on = true;
        EXPECT_TRUE(spelling_switch(text, &on) && !on) << text;
    }
    for (const char *text : {"", "o", "y", "n", "2", "01", "on ", " on", "onoff", "enable"}) {
        bool on = true;
        EXPECT_FALSE(spelling_switch(text, &on)) << text;
        EXPECT_TRUE(on) << text;
    }
}

TEST(SpellingNearest, IsTheWordThatASlipOrTwoAwayIsMeant) {
    const char *const words[] = {"devices", "device", "limit", "limits",
                                 "mac",     "name",   "on",    nullptr};
    const std::pair<const char *, const char *> cases[] = {
        {"limt", "limit"},      {"limitz", "limit"},  {"LIMIT", "limit"}, {"divices", "devices"},
        {"deviecs", "devices"}, {"mca", "mac"},       {"nam", "name"},    {"naem", "name"},
        {"evice", "device"},    {"limits", "limits"}, {"on", "on"}};
    for (const auto &[text, word] : cases)
        EXPECT_STREQ(spelling_nearest(text, words), word) << text;
    for (const char *text : {"", "n", "no", "xyz", "nnnn", "d", "bedtime", "d-e-v-i-c-e",
                             "devices devices devices devices devices", "\xff\xff\xff"})
        EXPECT_EQ(spelling_nearest(text, words), nullptr) << text;
    const char *const none[] = {nullptr};
    EXPECT_EQ(spelling_nearest("limit", none), nullptr);
}

} // namespace

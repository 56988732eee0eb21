#include "client/minutes.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr int32_t untouched = -7;

struct good_case {
    const char *text;
    int32_t minutes;
};

struct time_case {
    int64_t minutes;
    const char *text;
};

TEST(ClientMinutes, AreReadInThreeForms) {
    const good_case cases[] = {
        {"0", 0},
        {"90", 90},
        {"0090", 90},
        {"90m", 90},
        {"0m", 0},
        {"2h", 120},
        {"0h", 0},
        {"1h30m", 90},
        {"0h5m", 5},
        {"1h0m", 60},
        {"1h59m", 119},
        {"1h05m", 65},
        {"24h", 1440},
        {"100h1m", 6001},
        {"1440m", 1440},
        {"2147483647", 2147483647},
        {"2147483647m", 2147483647},
        {"35791394h7m", 2147483647},
        {"35791394h", 2147483640},
    };
    for (const good_case &c : cases) {
        int32_t minutes = untouched;
        EXPECT_TRUE(ctl_parse_minutes(c.text, &minutes)) << c.text;
        EXPECT_EQ(minutes, c.minutes) << c.text;
    }
}

TEST(ClientMinutes, OfAnyOtherFormAreNotRead) {
    const char *const cases[] = {"",
                                 " ",
                                 "m",
                                 "h",
                                 "hm",
                                 "h30m",
                                 "-1",
                                 "+1",
                                 " 90",
                                 "90 ",
                                 "90 m",
                                 "1 h",
                                 "90M",
                                 "1H",
                                 "1h30",
                                 "1h60m",
                                 "1h-5m",
                                 "1hm",
                                 "1h30m ",
                                 "1h30mm",
                                 "1h1h",
                                 "30m1h",
                                 "1:30",
                                 "1.5h",
                                 "90min",
                                 "0x10",
                                 "1e2",
                                 "one",
                                 "1h30s",
                                 "mm",
                                 "2147483648",
                                 "2147483648m",
                                 "35791394h8m",
                                 "35791395h",
                                 "99999999999999999999",
                                 "99999999999999999999h",
                                 "1h99999999999999999999m"};
    for (const char *text : cases) {
        int32_t minutes = untouched;
        EXPECT_FALSE(ctl_parse_minutes(text, &minutes)) << text;
        EXPECT_EQ(minutes, untouched) << text;
    }
}

TEST(ClientMinutes, AreWrittenWithoutPartsOfNothing) {
    const time_case cases[] = {
        {0, "0m"},
        {1, "1m"},
        {59, "59m"},
        {60, "1h"},
        {61, "1h1m"},
        {90, "1h30m"},
        {120, "2h"},
        {1440, "24h"},
        {-1, "-1m"},
        {-60, "-1h"},
        {-90, "-1h30m"},
        {2147483647, "35791394h7m"},
        {-2147483648, "-35791394h8m"},
        {std::numeric_limits<int64_t>::max(), "153722867280912930h7m"},
        {std::numeric_limits<int64_t>::min(), "-153722867280912930h8m"},
    };
    for (const time_case &c : cases)
        EXPECT_STREQ(ctl_time_of(c.minutes).text, c.text);
}

TEST(ClientMinutes, AreReadAsTheyAreWritten) {
    for (const int32_t minutes : {0, 1, 59, 60, 61, 719, 720, 1439, 1440, 100'000, 2147483647}) {
        int32_t again = untouched;
        EXPECT_TRUE(ctl_parse_minutes(ctl_time_of(minutes).text, &again));
        EXPECT_EQ(again, minutes);
    }
}

} // namespace

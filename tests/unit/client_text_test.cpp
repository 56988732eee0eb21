#include "client/text.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

constexpr int32_t unread = -7;

/// Cleans a text into just so much room; what lies behind must stay.
std::string clean(const std::string &text, size_t room = 60) {
    char to[64];
    memset(to, '!', sizeof(to));
    ctl_copy_clean(to, room, text.c_str());
    for (size_t i = room; i < sizeof(to); ++i)
        EXPECT_EQ(to[i], '!') << "byte " << i << " of a room of " << room;
    return to;
}

struct clean_case {
    const char *what;
    std::string text;
    std::string cleaned;
};

TEST(ClientText, OfPrintableUtf8StaysAsItIs) {
    for (const char *text :
         {"", "video", " ~", "Caf\xc3\xa9", "\xc2\xa0", "\xdf\xbf", "\xe0\xa0\x80", "\xe2\x82\xac",
          "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf0\x9f\x8e\xac",
          "\xf4\x8f\xbf\xbf"})
        EXPECT_EQ(clean(text), text);
}

TEST(ClientText, LosesWhatSteersATerminalAndBytesThatAreNoUtf8) {
    const clean_case cases[] = {
        {"an escape", "a\033[31mb", "a?[31mb"},
        {"a bell and a line end", "a\a\nb", "a??b"},
        {"a tab and a carriage return", "\tb\r", "?b?"},
        {"delete", "a\x7f", "a?"},
        {"the first control character of one byte", "\x01", "?"},
        {"the last control character of one byte", "\x1f", "?"},
        {"the first control character of two bytes", "\xc2\x80", "?"},
        {"a control sequence introducer of two bytes",
         "\xc2\x9b"
         "31m",
         "?31m"},
        {"the last control character of two bytes", "\xc2\x9f", "?"},
        {"a continuation alone", "a\x80z", "a?z"},
        {"a second byte that is missing at the end", "a\xc3", "a?"},
        {"a second byte that is missing", "\xc3z", "?z"},
        {"a third byte that is missing", "\xe2\x82z", "??z"},
        {"a fourth byte that is missing", "\xf0\x9f\x8e", "???"},
        {"two bytes for a slash", "\xc0\xaf", "??"},
        {"two bytes for one that needs one", "\xc1\xbf", "??"},
        {"three bytes for one that needs two", "\xe0\x9f\xbf", "???"},
        {"four bytes for one that needs three", "\xf0\x8f\xbf\xbf", "????"},
        {"the first half of a surrogate pair", "\xed\xa0\x80", "???"},
        {"the second half of a surrogate pair", "\xed\xbf\xbf", "???"},
        {"beyond the last character", "\xf4\x90\x80\x80", "????"},
        {"a byte that begins nothing", "\xf5\x80\x80\x80", "????"},
        {"the highest bytes", "\xfe\xff", "??"},
        {"one bad byte between good ones", "\xc3\xa9\xff\xc3\xa9", "\xc3\xa9?\xc3\xa9"},
    };
    for (const clean_case &c : cases)
        EXPECT_EQ(clean(c.text), c.cleaned) << c.what;
}

TEST(ClientText, IsCutAtACharactersBorder) {
    EXPECT_EQ(clean("video", 6), "video");
    EXPECT_EQ(clean("video", 5), "vide");
    EXPECT_EQ(clean("video", 1), "");
    EXPECT_EQ(clean("ab\xe2\x82\xac", 6), "ab\xe2\x82\xac");
    EXPECT_EQ(clean("ab\xe2\x82\xac", 5), "ab");
    EXPECT_EQ(clean("ab\xe2\x82\xac"
                    "c",
                    4),
              "ab")
        << "nothing behind the cut comes back";
    EXPECT_EQ(clean("a\xff", 2), "a");
}

TEST(ClientText, HasAColumnForEachCharacter) {
    EXPECT_EQ(ctl_text_width(""), 0u);
    EXPECT_EQ(ctl_text_width("video"), 5u);
    EXPECT_EQ(ctl_text_width("Caf\xc3\xa9 \xe2\x82\xac"), 6u);
    EXPECT_EQ(ctl_text_width("\xf0\x9f\x8e\xac"), 1u);
}

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

TEST(ClientText, IsReadAsANumberOf32Bits) {
    const number_case cases[] = {{"0", 0},
                                 {"-0", 0},
                                 {"+5", 5},
                                 {"007", 7},
                                 {"-3", -3},
                                 {"2147483647", 2147483647},
                                 {"-2147483648", -2147483647 - 1}};
    for (const number_case &c : cases)
        EXPECT_EQ(number_in(ctl_parse_int, c.text), c.value) << c.text;
}

TEST(ClientText, ThatIsNoNumberOf32BitsIsNotRead) {
    for (const char *text :
         {"", "-", "+", "+-3", "--3", " 3", "3 ", "\t3", "- 3", "3x", "x3", "0x10", "3.0", "1e3",
          "2147483648", "-2147483649", "9223372036854775807", "99999999999999999999",
          "-99999999999999999999"})
        EXPECT_EQ(number_in(ctl_parse_int, text), unread) << text;
}

TEST(ClientMinutes, AreReadInThreeForms) {
    const number_case cases[] = {{"90", 90},
                                 {"0090", 90},
                                 {"90m", 90},
                                 {"0h5m", 5},
                                 {"1h0m", 60},
                                 {"1h05m", 65},
                                 {"100h1m", 6001},
                                 {"2147483647m", 2147483647},
                                 {"35791394h", 2147483640}};
    for (const number_case &c : cases)
        EXPECT_EQ(number_in(ctl_parse_minutes, c.text), c.value) << c.text;
}

TEST(ClientMinutes, OfAnyOtherFormAreNotRead) {
    for (const char *text : {"", " ", "m", "h", "hm", "h30m", "-1", "+1", " 90", "90 ", "90 m",
                             "1 h", "90M", "1H", "1.5h", "90min", "0x10", "1e2"})
        EXPECT_EQ(number_in(ctl_parse_minutes, text), unread) << text;
    for (const char *text :
         {"1h30", "1h60m", "1h-5m", "1hm", "1h30m ", "1h30mm", "1h1h", "30m1h", "1:30", "1h30s",
          "2147483648", "2147483648m", "35791394h8m", "35791395h", "99999999999999999999",
          "99999999999999999999h", "1h99999999999999999999m"})
        EXPECT_EQ(number_in(ctl_parse_minutes, text), unread) << text;
}

TEST(ClientMinutes, AreWrittenWithoutPartsOfNothingAndReadAgain) {
    const number_case cases[] = {{"0m", 0},
                                 {"59m", 59},
                                 {"1h", 60},
                                 {"1h1m", 61},
                                 {"23h59m", 1439},
                                 {"24h", 1440},
                                 {"35791394h7m", 2147483647}};
    for (const number_case &c : cases) {
        EXPECT_STREQ(ctl_time_of(c.value).text, c.text);
        EXPECT_EQ(number_in(ctl_parse_minutes, c.text), c.value) << c.text;
    }
    EXPECT_STREQ(ctl_time_of(-1).text, "-1m");
    EXPECT_STREQ(ctl_time_of(-60).text, "-1h");
    EXPECT_STREQ(ctl_time_of(-90).text, "-1h30m");
    EXPECT_STREQ(ctl_time_of(INT64_MAX).text, "153722867280912930h7m");
    EXPECT_STREQ(ctl_time_of(INT64_MIN).text, "-153722867280912930h8m");
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

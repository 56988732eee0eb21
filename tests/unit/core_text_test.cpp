#include "core/text.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

/// Cleans a text into just so much room; what lies behind must stay.
std::string clean(const std::string &text, size_t room = 60) {
    char to[64];
    memset(to, '!', sizeof(to));
    text_copy_clean(to, room, text.c_str());
    for (size_t i = room; i < sizeof(to); ++i)
        EXPECT_EQ(to[i], '!') << "byte " << i << " of a room of " << room;
    return to;
}

struct clean_case {
    const char *what;
    std::string text;
    std::string cleaned;
};

TEST(Text, OfPrintableUtf8StaysAsItIs) {
    for (const char *text :
         {"", "video", " ~", "Caf\xc3\xa9", "\xc2\xa0", "\xdf\xbf", "\xe0\xa0\x80", "\xe2\x82\xac",
          "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf0\x9f\x8e\xac",
          "\xf4\x8f\xbf\xbf"})
        EXPECT_EQ(clean(text), text);
}

TEST(Text, LosesWhatSteersATerminalAndBytesThatAreNoUtf8) {
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

TEST(Text, IsCutAtACharactersBorder) {
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

TEST(Text, HasAColumnForEachCharacter) {
    EXPECT_EQ(text_width(""), 0u);
    EXPECT_EQ(text_width("video"), 5u);
    EXPECT_EQ(text_width("Caf\xc3\xa9 \xe2\x82\xac"), 6u);
    EXPECT_EQ(text_width("\xf0\x9f\x8e\xac"), 1u);
}

TEST(Text, IsCleanWhenCopyingWouldChangeNothing) {
    for (const char *text : {"", "video", " ~", "Caf\xc3\xa9", "\xc2\xa0", "\xf4\x8f\xbf\xbf"})
        EXPECT_TRUE(text_is_clean(text)) << text;
    for (const char *text :
         {"a\033", "\t", "\x7f", "\xc2\x85", "a\xc3", "\xc0\xaf", "\xed\xa0\x80"})
        EXPECT_FALSE(text_is_clean(text)) << text;
}

TEST(Text, IsTheSameWhateverTheCaseOfWesternLetters) {
    const std::pair<const char *, const char *> same[] = {
        {"", ""},
        {"mia", "MIA"},
        {"\xc3\x96mer", "\xc3\xb6MER"},           // O with diaeresis
        {"\xc3\x80\xc3\x9e", "\xc3\xa0\xc3\xbe"}, // first and last capital with an accent
        {"\xd0\x9c", "\xd0\x9c"},                 // a Cyrillic letter is like itself only
    };
    for (const auto &[one, other] : same) {
        EXPECT_TRUE(text_is_same(one, other)) << one << ' ' << other;
        EXPECT_TRUE(text_is_same(other, one)) << one << ' ' << other;
    }
    const std::pair<const char *, const char *> different[] = {
        {"", "a"},
        {"mia", "mi"},
        {"mia", "mja"},
        {"@", "`"},
        {"[", "{"},
        {"\xc3\x96mer", "omer"},
        {"\xc3\x97", "\xc3\xb7"}, // times and divided by
        {"\xc3\x9f", "\xc3\xbf"}, // sharp s and y with diaeresis
        {"\xd0\x9c", "\xd0\xbc"}, // Cyrillic
        {"\xc5\x80", "\xc5\xa0"}, // two letters of the next block
        {"a\xc3\x96", "a\xc2\xb6"},
    };
    for (const auto &[one, other] : different) {
        EXPECT_FALSE(text_is_same(one, other)) << one << ' ' << other;
        EXPECT_FALSE(text_is_same(other, one)) << one << ' ' << other;
    }
}

} // namespace

#include "client/output.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// @return what a table prints, which it does
std::string print(const ctl_table &table) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(ctl_print(table), CTL_DONE);
    return testing::internal::GetCapturedStdout();
}

void add(ctl_table *table, const char *first, const char *second, const char *third) {
    ctl_cell *cells = ctl_add_row(table);
    ctl_fill(&cells[0], "%s", first);
    ctl_fill(&cells[1], "%s", second);
    ctl_fill(&cells[2], "%s", third);
}

TEST(ClientTable, HasColumnsAsWideAsTheirWidestCell) {
    ctl_table table;
    add(&table, "Caf\xc3\xa9", "\xe2\x82\xac", "1");
    add(&table, "Bistro", "12", "123456789");
    add(&table, "", "", "x");
    EXPECT_EQ(print(table), "Caf\xc3\xa9     \xe2\x82\xac          1\n"
                            "Bistro  12  123456789\n"
                            "                    x\n");
}

TEST(ClientTable, EndsItsLinesWithoutBlanks) {
    ctl_table table;
    add(&table, "long text", "", "");
    add(&table, "a", "b", "");
    add(&table, "", "", "");
    EXPECT_EQ(print(table), "long text\na          b\n\n");
    EXPECT_EQ(print({}), "");
}

TEST(ClientTable, CutsACellToItsRoom) {
    ctl_table table;
    ctl_fill(ctl_add_row(&table), "%s", std::string(500, 'x').c_str());
    EXPECT_EQ(print(table), std::string(sizeof(ctl_cell::text) - 1, 'x') + "\n");
}

TEST(ClientTable, ThatIsNotCompleteIsNotPrinted) {
    ctl_table table;
    add(&table, "a", "b", "c");
    table.complete = false;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(ctl_print(table), CTL_BROKEN);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "utm_appctl: out of memory\n");
}

/// @return what a document prints, which it does
std::string print(ctl_document &document) {
    ctl_said().clear(); // by other tests
    testing::internal::CaptureStdout();
    EXPECT_EQ(document.print(), CTL_DONE);
    return testing::internal::GetCapturedStdout();
}

TEST(ClientDocument, IsOneLineInTheOrderOfItsParts) {
    ctl_app_names names;
    ASSERT_TRUE(names.add({305, "vid\"eo"}));
    const int64_t minutes[] = {0, INT64_MIN, INT64_MAX};
    ctl_document document;
    document.add_int("int", -5);
    document.add_bool("bool", true);
    document.add_text("text", "a/b");
    document.add_minutes("minutes", minutes, 3);
    document.add_minutes("none", minutes, 0);
    json_object *apps = document.add_array("applications");
    for (const int32_t app : {305, 306}) {
        ctl_document element;
        element.add_app(names, app);
        document.append(apps, &element);
    }
    EXPECT_EQ(print(document),
              "{\"int\":-5,\"bool\":true,\"text\":\"a\\/b\","
              "\"minutes\":[0,-9223372036854775808,9223372036854775807],\"none\":[],"
              "\"applications\":[{\"app\":305,\"name\":\"vid\\\"eo\"},"
              "{\"app\":306,\"name\":null}]}\n");
}

struct bar_case {
    const char *label;
    int64_t minutes;
    bool is_present = false;
};

/// @return the chart of these bars
std::string draw(const std::vector<bar_case> &cases, const ctl_style &style) {
    ctl_bars bars;
    for (const bar_case &c : cases) {
        ctl_bar bar = {.label = {}, .minutes = c.minutes, .is_present = c.is_present};
        ctl_fill(&bar.label, "%s", c.label);
        EXPECT_TRUE(bars.add(bar));
    }
    testing::internal::CaptureStdout();
    ctl_print_bars(bars, style);
    return testing::internal::GetCapturedStdout();
}

constexpr ctl_style ASCII = {.utf8 = false, .colour = false, .columns = 24};
constexpr ctl_style BLOCKS = {.utf8 = true, .colour = false, .columns = 24};

TEST(ClientChart, GivesTheLongestBarAllTheRoom) {
    EXPECT_EQ(draw({{"Mon", 10}, {"Tue", 5}, {"Wed", 0}}, ASCII), "Mon  10  10m  ##########\n"
                                                                  "Tue   5   5m  #####\n"
                                                                  "Wed   0   0m\n");
}

TEST(ClientChart, DrawsEighthsOfABlock) {
    std::vector<bar_case> cases = {{"all", 80}};
    for (int64_t eighths = 1; eighths <= 9; ++eighths)
        cases.push_back({"", eighths});
    EXPECT_EQ(draw(cases, {.utf8 = true, .colour = false, .columns = 26}),
              "all  80  1h20m  ██████████\n"
              "      1     1m  ▏\n"
              "      2     2m  ▎\n"
              "      3     3m  ▍\n"
              "      4     4m  ▌\n"
              "      5     5m  ▋\n"
              "      6     6m  ▊\n"
              "      7     7m  ▉\n"
              "      8     8m  █\n"
              "      9     9m  █▏\n");
}

TEST(ClientChart, RoundsToTheNearestEighth) {
    EXPECT_EQ(draw({{"a", 3}, {"b", 2}, {"c", 1}}, {.utf8 = true, .colour = false, .columns = 20}),
              "a  3  3m  ██████████\n"
              "b  2  2m  ██████▋\n"
              "c  1  1m  ███▍\n");
}

TEST(ClientChart, ShowsWhateverWasUsedAtAll) {
    EXPECT_EQ(draw({{"a", 100'000}, {"b", 1}}, BLOCKS), "a  100000  1666h40m  ██████████\n"
                                                        "b       1        1m  ▏\n");
    EXPECT_EQ(draw({{"a", 100'000}, {"b", 1}}, ASCII), "a  100000  1666h40m  ##########\n"
                                                       "b       1        1m  #\n");
}

TEST(ClientChart, DrawsNothingForNothingAndLess) {
    EXPECT_EQ(draw({{"a", 0}, {"b", -600}}, ASCII), "a     0    0m\nb  -600  -10h\n");
    EXPECT_EQ(draw({}, ASCII), "");
}

TEST(ClientChart, ColoursThePresentApart) {
    const ctl_style colour = {.utf8 = false, .colour = true, .columns = 24};
    EXPECT_EQ(draw({{"Mon", 10}, {"Tue", 0}, {"Wed", 10, true}}, colour),
              "Mon  10  10m  \033[36m##########\033[0m\n"
              "Tue   0   0m\n"
              "Wed  10  10m  \033[33m##########\033[0m\n");
}

TEST(ClientChart, AlignsLabelsByTheirCharacters) {
    EXPECT_EQ(draw({{"M\xc3\xa4r", 10}, {"April", 10}}, ASCII),
              "M\xc3\xa4r    10  10m  ##########\n"
              "April  10  10m  ##########\n");
}

TEST(ClientChart, DrawsTheLargestSums) {
    EXPECT_EQ(draw({{"a", INT64_MAX}, {"b", INT64_MAX / 2}, {"c", INT64_MIN}}, ASCII),
              "a   9223372036854775807   153722867280912930h07m  ##########\n"
              "b   4611686018427387903    76861433640456465h03m  #####\n"
              "c  -9223372036854775808  -153722867280912930h08m\n");
}

} // namespace

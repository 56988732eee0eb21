#include "client/chart.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

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

TEST(ClientChart, FitsIntoTheLine) {
    for (const int columns : {30, 60, 80, 110}) {
        const ctl_style style = {.utf8 = false, .colour = false, .columns = columns};
        const std::string line = draw({{"Mon", 10}}, style);
        EXPECT_EQ(line,
                  "Mon  10  10m  " + std::string(static_cast<size_t>(columns) - 14, '#') + "\n");
    }
}

TEST(ClientChart, HasBarsOf10To100Columns) {
    for (const int columns : {-1, 0, 1, 23}) {
        const ctl_style style = {.utf8 = false, .colour = false, .columns = columns};
        EXPECT_EQ(draw({{"Mon", 10}}, style), "Mon  10  10m  ##########\n");
    }
    const ctl_style wide = {.utf8 = false, .colour = false, .columns = 2'000'000'000};
    EXPECT_EQ(draw({{"Mon", 10}}, wide), "Mon  10  10m  " + std::string(100, '#') + "\n");
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

TEST(ClientChart, ShowsWhateverWasUsedAtAll) {
    EXPECT_EQ(draw({{"a", 100'000}, {"b", 1}}, BLOCKS), "a  100000  1666h40m  ██████████\n"
                                                        "b       1        1m  ▏\n");
    EXPECT_EQ(draw({{"a", 100'000}, {"b", 1}}, ASCII), "a  100000  1666h40m  ##########\n"
                                                       "b       1        1m  #\n");
}

TEST(ClientChart, DrawsNothingForNothingAndLess) {
    EXPECT_EQ(draw({{"a", 0}, {"b", 0}}, ASCII), "a  0  0m\nb  0  0m\n");
    EXPECT_EQ(draw({{"a", -5}, {"b", -600}}, ASCII), "a    -5   -5m\nb  -600  -10h\n");
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
              "a   9223372036854775807   153722867280912930h7m  ##########\n"
              "b   4611686018427387903    76861433640456465h3m  #####\n"
              "c  -9223372036854775808  -153722867280912930h8m\n");
}

} // namespace

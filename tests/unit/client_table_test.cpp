#include "client/table.h"

#include <gtest/gtest.h>
#include <string>

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
    add(&table, "NAME", "MINUTES", "TIME");
    add(&table, "a long name", "5", "123456789");
    add(&table, "", "", "x");
    EXPECT_EQ(print(table), "NAME         MINUTES       TIME\n"
                            "a long name        5  123456789\n"
                            "                              x\n");
}

TEST(ClientTable, CountsCharactersNotBytes) {
    ctl_table table;
    add(&table, "Caf\xc3\xa9", "\xe2\x82\xac", "1");
    add(&table, "Bistro", "12", "2");
    EXPECT_EQ(print(table), "Caf\xc3\xa9     \xe2\x82\xac  1\n"
                            "Bistro  12  2\n");
}

TEST(ClientTable, EndsItsLinesWithoutBlanks) {
    ctl_table table;
    add(&table, "long text", "", "");
    add(&table, "a", "b", "");
    add(&table, "", "", "");
    EXPECT_EQ(print(table), "long text\na          b\n\n");
}

TEST(ClientTable, PrintsNothingWithoutRows) {
    EXPECT_EQ(print({}), "");
}

TEST(ClientTable, KeepsManyRowsInOrder) {
    ctl_table table;
    std::string expected;
    for (int i = 100; i < 200; ++i) {
        ctl_fill(ctl_add_row(&table), "%d", i);
        expected += std::to_string(i) + "\n";
    }
    EXPECT_EQ(print(table), expected);
}

TEST(ClientTable, ShowsMinutesTwiceAndApplicationsByName) {
    ctl_app_names names;
    ASSERT_TRUE(names.add({305, "video"}));
    ctl_table table;
    for (const int32_t app : {305, -306}) {
        ctl_cell *cells = ctl_add_row(&table);
        ctl_fill_app(&cells[0], names, app);
        ctl_fill_minutes(&cells[1], app);
    }
    EXPECT_EQ(print(table), "video   305   5h5m\n"
                            "-306   -306  -5h6m\n");
}

TEST(ClientTable, CutsACellToItsRoom) {
    ctl_table table;
    ctl_fill(ctl_add_row(&table), "%s", std::string(500, 'x').c_str());
    EXPECT_EQ(print(table), std::string(sizeof ctl_cell::text - 1, 'x') + "\n");
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

} // namespace

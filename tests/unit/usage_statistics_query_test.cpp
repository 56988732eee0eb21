#include "usage/statistics_query.h"

#include "tests/lib/world.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

class StatisticsQuery : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

TEST_F(StatisticsQuery, FormatsAProfilesLine) {
    EXPECT_STREQ(utm_app_profile_query_line(1000, 1060, "001122334455 AABBCCDDEE0F ").get(),
                 "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                 "'{\"s\":940,\"e\":1000,\"mac\":\"001122334455 AABBCCDDEE0F \"}'");
}

TEST_F(StatisticsQuery, FormatsTheRoutersLine) {
    EXPECT_STREQ(utm_app_global_query_line(1000, 1060).text,
                 "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":940,\"e\":1000}'");
    EXPECT_STREQ(utm_app_global_query_line(0, 0).text,
                 "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":-60,\"e\":-60}'");
}

TEST_F(StatisticsQuery, HasNoLineWithoutADeviceListOrMemory) {
    EXPECT_EQ(utm_app_profile_query_line(1000, 1060, nullptr), nullptr);
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_profile_query_line(1000, 1060, "001122334455 "), nullptr);
}

TEST_F(StatisticsQuery, CutsALineThatOutgrowsItsBuffer) {
    // 27 digits fit behind the devices; clocks that show 14 each lose the closing quote.
    const time_t far = 99'999'999'999'999;
    EXPECT_STREQ(utm_app_profile_query_line(far, far - 1, "001122334455 ").get(),
                 "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                 "'{\"s\":99999999999939,\"e\":99999999999938,\"mac\":\"001122334455 \"}");
}

/// A reply as it is read from a program that prints `text`.
struct read_t {
    statistics_reply_t reply = {};
    size_t failed = 0;
};

void read_into(statistics_reply_t *reply, const std::string &text, size_t *failed) {
    const int fd = memfd_create("reply", MFD_CLOEXEC);
    ASSERT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    lseek(fd, 0, SEEK_SET);
    FILE *pipe = fdopen(fd, "r");
    *failed = utm_app_statistics_read(reply, pipe);
    fclose(pipe);
}

read_t read_reply(const std::string &text) {
    read_t read;
    EXPECT_TRUE(utm_app_statistics_create(&read.reply));
    read_into(&read.reply, text, &read.failed);
    return read;
}

TEST_F(StatisticsQuery, HoldsNothingAfterAnEmptyReply) {
    const read_t read = read_reply("");
    EXPECT_EQ(read.failed, 0u);
    EXPECT_STREQ(read.reply.text.get(), "");
    EXPECT_EQ(read.reply.used, 0u);
    EXPECT_EQ(read.reply.capacity, 1024u);
}

TEST_F(StatisticsQuery, JoinsLinesOfAnyLength) {
    const std::string text = std::string(300, 'a') + "\n\n" + std::string(127, 'b') + "\n" +
                             std::string(126, 'c') + "\n" + std::string(128, 'd');
    const read_t read = read_reply(text);
    EXPECT_STREQ(read.reply.text.get(), text.c_str());
    EXPECT_EQ(read.reply.used, text.size() + 1);
    EXPECT_EQ(read.reply.capacity, 1024u);
}

struct growth_case_t {
    const char *name;
    std::vector<size_t> lines; ///< lengths, with the line ends
    size_t capacity;
};

const growth_case_t growth[] = {
    // A chunk grows the buffer once held + chunk + 1 reaches the capacity, held with its NUL.
    {"1000 and 21", {100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 21}, 1024},
    {"1000 and 22", {100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 22}, 2048},
    {"3000 in one line", {3000}, 3072},
    {"8 chunks and 5", {127, 127, 127, 127, 127, 127, 127, 127, 5}, 1024},
    {"8 chunks and 6", {127, 127, 127, 127, 127, 127, 127, 127, 6}, 2048},
    {"one by one to 1021", std::vector<size_t>(1021, 1), 1024},
    {"one by one to 1022", std::vector<size_t>(1022, 1), 2048},
    {"a million", {1'000'000}, 1'000'448},
};

TEST_F(StatisticsQuery, GrowsByStepsOf1024) {
    for (const growth_case_t &c : growth) {
        std::string text;
        for (const size_t length : c.lines)
            text += std::string(length - 1, 'x') + "\n";
        const read_t read = read_reply(text);
        EXPECT_EQ(read.failed, 0u) << c.name;
        EXPECT_EQ(read.reply.capacity, c.capacity) << c.name;
        EXPECT_EQ(std::string(read.reply.text.get()), text) << c.name;
        EXPECT_EQ(read.reply.used, text.size() + 1) << c.name;
    }
}

TEST_F(StatisticsQuery, LosesTheRestOfAChunkBehindANul) {
    const std::string text("ab\0cd\nef\n\0gh\nij", 15);
    const read_t read = read_reply(text);
    EXPECT_STREQ(read.reply.text.get(), "abef\nij");
}

TEST_F(StatisticsQuery, ClearsAReplyAndKeepsItsSize) {
    read_t read = read_reply(std::string(3000, 'x'));
    utm_app_statistics_clear(&read.reply);
    EXPECT_EQ(std::string(read.reply.text.get(), 3072), std::string(3072, '\0'));
    EXPECT_EQ(read.reply.used, 0u);
    read_into(&read.reply, "new", &read.failed);
    EXPECT_STREQ(read.reply.text.get(), "new");
    EXPECT_EQ(read.reply.capacity, 3072u);
}

TEST_F(StatisticsQuery, SaysHowManyBytesItCouldNotHave) {
    statistics_reply_t reply = {};
    world::fail_allocation(1);
    EXPECT_FALSE(utm_app_statistics_create(&reply));
    world::fail_allocation(3);
    const read_t read = read_reply(std::string(3000, 'x'));
    EXPECT_EQ(read.failed, 3072u);
    EXPECT_EQ(read.reply.capacity, 2048u);
}

/// What a reply counts, one figure a line.
std::string figures(const std::string &text) {
    std::string told;
    for (const statistics_figure_t &figure : statistics_figures_t(text.c_str()))
        told += std::string(figure.kind == figure_kind_t::app ? "app " : "internet ") +
                std::to_string(figure.app_id) + " " + std::to_string(figure.minutes) + "\n";
    return told;
}

std::string element(const std::string &type, const std::string &app_id,
                    const std::string &minutes) {
    return R"({"type":)" + type + R"(,"app_id":)" + app_id + R"(,"total_time_usage":)" + minutes +
           "}";
}

std::string data(const std::string &elements) {
    return "{\"data\":[" + elements + "]}";
}

TEST_F(StatisticsQuery, ReadsFiguresInArrayOrder) {
    EXPECT_EQ(figures(data(element("\"APP\"", "305", "4") + "," +
                           element("\"INTERNET\"", "0", "9") + "," + element("\"APP\"", "7", "0"))),
              "app 305 4\ninternet 0 9\napp 7 0\n");
}

struct type_case_t {
    const char *type;
    const char *figure;
};

TEST_F(StatisticsQuery, TellsTypesByTheirFirstLetters) {
    const type_case_t cases[] = {
        {R"("APP")", "app 7 4\n"},
        {R"("APPLICATION")", "app 7 4\n"},
        {R"("APP_V6")", "app 7 4\n"},
        {R"("INTERNET")", "internet 7 4\n"},
        {R"("INTERNET_V6")", "internet 7 4\n"},
        {R"("OTHER")", ""},
        {R"("")", ""},
        {R"("AP")", ""},
        {R"("INTERNE")", ""},
        {R"("app")", ""},
        {R"("internet")", ""},
        {R"(" APP")", ""},
        {R"("XAPP")", ""},
        {"null", ""},
        {"7", ""},
        {"true", ""},
        {R"(["APP"])", ""},
        {R"({"APP":1})", ""},
        {R"("\u0041PP")", "app 7 4\n"},
        {R"("AP\u0000P")", ""},
        {R"("APP\u0000X")", "app 7 4\n"},
    };
    for (const type_case_t &c : cases)
        EXPECT_EQ(figures(data(element(c.type, "7", "4"))), c.figure) << c.type;
}

struct number_case_t {
    const char *json;
    const char *number;
};

TEST_F(StatisticsQuery, ReadsOddNumbersAsTheParserConvertsThem) {
    const number_case_t cases[] = {
        {"4", "4"},
        {"-4", "-4"},
        {"\"12\"", "12"},
        {"\"-12\"", "-12"},
        {"\"many\"", "0"},
        {"\"\"", "0"},
        {"2147483647", "2147483647"},
        {"2147483648", "2147483647"},
        {"-2147483648", "-2147483648"},
        {"-2147483649", "-2147483648"},
        {"99999999999999999999999999", "2147483647"},
        {"-99999999999999999999999999", "-2147483648"},
        {"\"99999999999999999999\"", "2147483647"},
        {"3.9", "3"},
        {"-3.9", "-3"},
        {"1e300", "2147483647"},
        {"-1e300", "-2147483648"},
        {"true", "1"},
        {"false", "0"},
        {"null", "0"},
        {"[5]", "0"},
        {"{\"5\":5}", "0"},
    };
    for (const number_case_t &c : cases) {
        EXPECT_EQ(figures(data(element("\"APP\"", "7", c.json))),
                  std::string("app 7 ") + c.number + "\n")
            << c.json;
        EXPECT_EQ(figures(data(element("\"APP\"", c.json, "4"))),
                  std::string("app ") + c.number + " 4\n")
            << c.json;
    }
}

} // namespace

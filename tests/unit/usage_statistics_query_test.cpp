#include "usage/statistics_query.h"

#include "tests/lib/int32_limits.h"
#include "tests/unit/support/world_test.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

class StatisticsQuery : public world_test {};

TEST_F(StatisticsQuery, FormatsALine) {
    EXPECT_STREQ(utm_app_profile_query_line(1000, 1060, "001122334455 AABBCCDDEE0F ").get(),
                 "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                 "'{\"s\":940,\"e\":1000,\"mac\":\"001122334455 AABBCCDDEE0F \"}'");
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

// ---- Reading a reply -----------------------------------------------------------------------

/// What a reply buffer holds, and how often it grew.
struct held_t {
    std::string text = {};
    size_t capacity = 1024;
    int grown = 0;

    bool operator==(const held_t &) const = default;
};

std::ostream &operator<<(std::ostream &to, const held_t &held) {
    return to << held.text.size() << " characters of " << held.capacity << ", grown " << held.grown
              << " times";
}

FILE *stream_of(const std::string &bytes) {
    FILE *stream = tmpfile();
    fwrite(bytes.data(), 1, bytes.size(), stream);
    rewind(stream);
    return stream;
}

/// Reads with `fgets`, 127 characters at the most, and grows by a step ahead of need.
held_t read_by_lines(const std::string &bytes) {
    held_t held;
    size_t used = 0;
    FILE *stream = stream_of(bytes);
    char line[128];
    while (fgets(line, sizeof(line), stream) != nullptr) {
        const size_t length = strlen(line);
        if (held.capacity <= used + length + 1) {
            held.capacity += 1024;
            ++held.grown;
        }
        held.text += line;
        used = held.text.size() + 1;
    }
    fclose(stream);
    return held;
}

/// @return what `utm_app_statistics_read` does
size_t read_into(statistics_reply_t *reply, const std::string &bytes) {
    FILE *stream = stream_of(bytes);
    const size_t failed = utm_app_statistics_read(reply, stream);
    fclose(stream);
    return failed;
}

held_t read_by_blocks(const std::string &bytes) {
    statistics_reply_t reply = {};
    EXPECT_TRUE(utm_app_statistics_create(&reply));
    world::fail_allocation(0);
    EXPECT_EQ(read_into(&reply, bytes), 0U);
    const held_t held = {reply.text.get(), reply.capacity, world::allocations()};
    EXPECT_EQ(reply.used, held.text.empty() ? 0 : held.text.size() + 1);
    return held;
}

/// @return up to 12,000 bytes, each an `a`, `b` and so on
std::string random_reply(std::mt19937 *random) {
    std::string bytes((*random)() % 12'000, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>('a' + (*random)() % 26);
    return bytes;
}

/// Puts one of two bytes over some of a text's.
void strew(std::mt19937 *random, std::string *bytes, size_t times, char first, char second) {
    for (; times > 0 && !bytes->empty(); --times)
        (*bytes)[(*random)() % bytes->size()] = (*random)() % 3 == 0 ? first : second;
}

TEST_F(StatisticsQuery, GrowsAsReadingByLinesDoesAtEveryLength) {
    for (size_t length = 0; length < 3200; ++length) {
        const std::string bytes(length, 'x');
        ASSERT_EQ(read_by_blocks(bytes), read_by_lines(bytes)) << length;
    }
    // With 1001 bytes held, a chunk of 22 grows the buffer, although what it makes would fit.
    EXPECT_EQ(read_by_blocks(std::string(1021, 'x')).capacity, 1024U);
    EXPECT_EQ(read_by_blocks(std::string(1022, 'x')).capacity, 2048U);
    EXPECT_EQ(read_by_blocks(std::string(3000, 'x')).capacity, 3072U);
    EXPECT_EQ(read_by_blocks(std::string(1'000'000, 'x')).capacity, 1'000'448U);
}

TEST_F(StatisticsQuery, TakesLinesOfAnyLength) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        std::string bytes = random_reply(&random);
        strew(&random, &bytes, random() % 400, '\n', '\n');
        ASSERT_EQ(read_by_blocks(bytes), read_by_lines(bytes)) << round;
    }
}

TEST_F(StatisticsQuery, LosesWhatFollowsANulInItsPiece) {
    EXPECT_EQ(read_by_blocks(std::string("ab\0cd\nef\n\0gh\nij\0", 16)).text, "abef\nij");
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        // Few NULs and few line ends, so that long lines are cut and the next piece goes on.
        std::string bytes = random_reply(&random);
        strew(&random, &bytes, random() % 40, '\n', '\0');
        ASSERT_EQ(read_by_blocks(bytes).text, read_by_lines(bytes).text) << round;
    }
}

TEST_F(StatisticsQuery, ClearsAReplyAndKeepsItsSize) {
    statistics_reply_t reply = {};
    ASSERT_TRUE(utm_app_statistics_create(&reply));
    EXPECT_EQ(read_into(&reply, std::string(3000, 'x')), 0U);
    utm_app_statistics_clear(&reply);
    EXPECT_EQ(std::string(reply.text.get(), 3072), std::string(3072, '\0'));
    EXPECT_EQ(reply.used, 0U);
    EXPECT_EQ(read_into(&reply, "new"), 0U);
    EXPECT_STREQ(reply.text.get(), "new");
    EXPECT_EQ(reply.capacity, 3072U);
}

TEST_F(StatisticsQuery, SaysHowManyBytesItCouldNotHave) {
    statistics_reply_t reply = {};
    world::fail_allocation(1);
    EXPECT_FALSE(utm_app_statistics_create(&reply));
    world::fail_allocation(3);
    ASSERT_TRUE(utm_app_statistics_create(&reply));
    EXPECT_EQ(read_into(&reply, std::string(3000, 'x')), 3072U);
    EXPECT_EQ(reply.capacity, 2048U);
    world::fail_allocation(0);
    EXPECT_EQ(read_into(&reply, std::string(5000, 'x')), 0U);
}

// ---- Figures -------------------------------------------------------------------------------

/// What a reply counts, one figure a line.
std::string figures(const std::string &elements) {
    const std::string text = "{\"data\":[" + elements + "]}";
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

TEST_F(StatisticsQuery, ReadsFiguresInArrayOrder) {
    EXPECT_EQ(figures(element("\"APP\"", "305", "4") + "," + element("\"INTERNET\"", "0", "9") +
                      "," + element("\"APP\"", "7", "0")),
              "app 305 4\ninternet 0 9\napp 7 0\n");
}

TEST_F(StatisticsQuery, TellsTypesByTheirFirstLetters) {
    for (const char *type :
         {R"("APP")", R"("APPLICATION")", R"("APP_V6")", R"("\u0041PP")", R"("APP\u0000X")"})
        EXPECT_EQ(figures(element(type, "7", "4")), "app 7 4\n") << type;
    for (const char *type : {R"("INTERNET")", R"("INTERNET_V6")"})
        EXPECT_EQ(figures(element(type, "7", "4")), "internet 7 4\n") << type;
    for (const char *type : {R"("OTHER")", R"("")", R"("AP")", R"("INTERNE")", R"("app")",
                             R"("internet")", R"(" APP")", R"("XAPP")", "null", "7", "true",
                             R"(["APP"])", R"({"APP":1})", R"("AP\u0000P")"})
        EXPECT_EQ(figures(element(type, "7", "4")), "") << type;
}

TEST_F(StatisticsQuery, ReadsOddNumbersAsTheParserConvertsThem) {
    const std::string nines(26, '9');
    const std::pair<std::string, int32_t> cases[] = {
        {"4", 4},
        {"-4", -4},
        {"2147483647", int32_max},
        {"2147483648", int32_max},
        {"-2147483648", int32_min},
        {"-2147483649", int32_min},
        {nines, int32_max},
        {"-" + nines, int32_min},
        {"\"" + nines + "\"", int32_max},
        {"\"12\"", 12},
        {"\"-12\"", -12},
        {"3.9", 3},
        {"-3.9", -3},
        {"1e300", int32_max},
        {"-1e300", int32_min},
        {"true", 1},
    };
    for (const auto &[json, number] : cases)
        EXPECT_EQ(figures(element("\"APP\"", "7", json) + "," + element("\"APP\"", json, "4")),
                  "app 7 " + std::to_string(number) + "\napp " + std::to_string(number) + " 4\n")
            << json;
    for (const char *zero : {"\"many\"", "\"\"", "false", "null", "NaN", "[5]", "{\"5\":5}"})
        EXPECT_EQ(figures(element("\"APP\"", zero, zero)), "app 0 0\n") << zero;
}

} // namespace

#include "usage/collector.h"

#include "store/store.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define UTM_BUFFERS_ARE_COPIED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define UTM_BUFFERS_ARE_COPIED
#endif

namespace {

/// A reply that no router gives. The sanitizers' allocators copy a buffer at each of its steps,
/// which makes minutes of ten megabytes.
#ifdef UTM_BUFFERS_ARE_COPIED
constexpr size_t very_long = 1'000'000;
#else
constexpr size_t very_long = 10'000'000;
#endif

constexpr char figure[] = R"({"type":"APP","app_id":7,"total_time_usage":4})";

std::string around(const std::string &before, const std::string &after) {
    return "{\"data\":[" + before + figure + after + "]}";
}

std::string nested(int depth) {
    return std::string(static_cast<size_t>(depth), '[') +
           std::string(static_cast<size_t>(depth), ']');
}

/// The store where each of the collectors has counted so many minutes of application 7.
std::string counted(int32_t minutes) {
    return "profile 3: devices 1 [AABBCCDDEE0F ], used 2/0/0, apps 1\n  app 7: used " +
           std::to_string(1 + minutes) + "/0/0\n" +
           (minutes == 0 ? "router: apps 0\n"
                         : "router: apps 1\n  app 7: used " + std::to_string(minutes) + "/0/0\n");
}

/// Both collectors run against replies that the statistics service ought not to give.
class OddReplies : public world_test {
protected:
    void SetUp() override {
        world::reset();
        config_user_profile_t *profile = world::make_profile(3, {world::phone});
        world::make_usage(profile, {{7, 1}});
        profile->daily_used = 2;
    }

    /// The store after a tick whose queries are answered with `reply`.
    static std::string store_after(const std::string &reply) {
        world::on_popen([&reply](const std::string &) { return reply; });
        EXPECT_EQ(utm_app_update_app_status(), 0);
        EXPECT_EQ(utm_app_update_global_app_status(), 0);
        EXPECT_EQ(world::open_pipes(), 0);
        return world::brief(world::render_store());
    }

    /// Expects that each of the replies is worth so many minutes of application 7.
    void expect_counted(int32_t minutes, const std::vector<std::string> &replies) {
        for (const std::string &reply : replies) {
            SetUp();
            EXPECT_EQ(store_after(reply), counted(minutes)) << reply.substr(0, 100);
        }
    }
};

TEST_F(OddReplies, ChangeNothingWithoutAFigure) {
    const std::string element = figure;
    expect_counted(0, {"", "\n", "   \n\n", "null", "true", "7", "\"data\"", "[]", "{}",
                       "{\"data\":null}", "{\"data\":7}", "{\"data\":\"APP\"}", "{\"data\":{}}",
                       "{\"data\":[]}", "{\"data\":[null,null]}",
                       "{\"data\":[7,1.5,true,\"APP\",[],{},[{\"type\":\"APP\"}]]}"});
    expect_counted(0, {"[" + element + "]", "{\"date\":[" + element + "]}",
                       "{\"data\":{\"data\":[" + element + "]}}", "{\"data\":[[" + element + "]]}",
                       around("", "],\"data\":[")});
    expect_counted(0, {R"({"data":[{"app_id":7,"total_time_usage":4}]})",
                       R"({"data":[{"type":"APP","total_time_usage":4}]})",
                       R"({"data":[{"type":"APP","app_id":7}]})"});
    expect_counted(0, {"{\"data\":" + nested(100) + "}", nested(100'000),
                       around(nested(100) + ",", ""), "Command failed: Request timed out\n",
                       "Command failed: Not found\n{\"data\":[]}\n", "trailing " + around("", ""),
                       std::string(1, '\0') + around("", ""), "\xFF\xFE\x80{\"data\":[]}",
                       std::string(very_long, ' '), std::string(very_long, '[')});
}

TEST_F(OddReplies, CountAFigureAmongElementsOfAnyOtherShape) {
    expect_counted(4, {around("null,", ",null"), around("7,1e300,true,\"APP\",[],{},", ""),
                       around(nested(20) + ",", ""), around(" \n\t ", "\n"),
                       around("", "") + " and some more text", around("", "") + "}}}}",
                       around("", "") + "\n\n", around("", "") + std::string("\0{\"data\":[]}", 12),
                       around("{\"x\":\"\xFF\xFE\"},", ""), around("],\"data\":[", ""),
                       around(std::string(very_long, ' '), "")});
    expect_counted(
        4, {around(R"({"type":"OTHER","app_id":7,"total_time_usage":9},)", ""),
            around(R"({"type":"APP","app_id":7},)", R"(,{"total_time_usage":9})"),
            R"({"status":0,"data":[)" + std::string(figure) + R"(],"more":{}})",
            R"({"data":[{"unit":"min","type":"APP","total_time_usage":"4","x":[1],"app_id":"7"}]})",
            R"({"data":[{"type":"APP","app_id":7.9,"total_time_usage":4.9}]})"});
}

TEST_F(OddReplies, ChangeNothingWhenTheyEndTooEarly) {
    const std::string whole =
        "{\"data\":[" + std::string(figure) + R"(,{"type":"INTERNET","app_id":0,)" +
        R"("total_time_usage":"12\u0041"},{"type":"APP","app_id":-5,"total_time_usage":1.5e0}]})";
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(store_after(whole.substr(0, length)), counted(0)) << whole.substr(0, length);
    EXPECT_NE(store_after(whole), counted(0));
}

TEST_F(OddReplies, CountNegativeAndHugeFiguresWithinTheRange) {
    const std::string reply = R"({"data":[)"
                              R"({"type":"APP","app_id":7,"total_time_usage":99999999999},)"
                              R"({"type":"APP","app_id":7,"total_time_usage":1},)"
                              R"({"type":"INTERNET","app_id":0,"total_time_usage":1e300},)"
                              R"({"type":"APP","app_id":-1e300,"total_time_usage":-9e99},)"
                              R"({"type":"APP","app_id":-1e300,"total_time_usage":-1}]})";
    EXPECT_EQ(store_after(reply),
              "profile 3: devices 1 [AABBCCDDEE0F ], used 2147483647/0/0, apps 2\n"
              "  app -2147483648: used -2147483648/0/0\n"
              "  app 7: used 2147483647/0/0\n"
              "router: apps 2\n"
              "  app -2147483648: used -2147483648/0/0\n"
              "  app 7: used 2147483647/0/0\n");
}

TEST_F(OddReplies, CountEveryElementOfAVeryLongReply) {
    std::string more;
    int32_t count = 1;
    for (; more.size() < very_long; ++count)
        more += std::string(",") + figure;
    EXPECT_EQ(store_after(around("", more)), counted(4 * count));
}

} // namespace

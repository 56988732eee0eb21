/// The usage file as the client reads it: good ones, odd ones and bad ones.

#include "client/usage_document.h"

#include "tests/unit/support/client_report_fixture.h"

#include <numeric>
#include <sys/stat.h>
#include <vector>

namespace {

class ClientUsageDocument : public client_report_fixture {
protected:
    /// Expects that a file is refused for a reason, and that nothing is read of it.
    static void expect_refused(const std::string &file, const std::string &reason) {
        ctl_usage_document document = {};
        testing::internal::CaptureStderr();
        EXPECT_EQ(ctl_read_usage_document(file.c_str(), &document), CTL_USAGE);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "utm_appctl: cannot report " + file + ": " + reason +
                      ". Name a usage file that utm_appd has exported\n");
        EXPECT_EQ(document.profile_count, 0U);
    }

    void read_text(const std::string &text, ctl_usage_document *document) {
        ASSERT_EQ(ctl_read_usage_document(write(text).c_str(), document), CTL_DONE) << text;
    }

    /// Reads a file of one profile with these members.
    void read_profile(const std::string &members, ctl_usage_document *document) {
        read_text("{\"user_profile_list\":[{\"user_profile_id\":3" + members +
                      "}],\"global_stat\":[]}",
                  document);
    }

    /// @return a profile's history of one application with these members
    std::vector<int64_t> history_of(const std::string &members) {
        ctl_usage_document document = {};
        read_profile(",\"app_stat_list\":[{\"app_id\":1,\"daily_used\":500,\"weekly_used\":0,"
                     "\"monthly_used\":0" +
                         members + "}]",
                     &document);
        const ctl_profile_use &profile = document.profiles[0];
        return {std::begin(profile.history), std::end(profile.history)};
    }

    /// @return ids and this month's minutes, such as "7:12 9:3 "
    static std::string text_of(const ctl_usage_document &document, ctl_part part) {
        std::string text;
        for (const ctl_app_use &app : ctl_records(document.apps, part))
            text += std::to_string(app.app_id) + ":" + std::to_string(ctl_month_of(app.used)) + " ";
        return text;
    }
};

/// Slot n holds n.
constexpr char ring[] = R"("prev_30_days":[0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,)"
                        R"(20,21,22,23,24,25,26,27,28,29])";

constexpr char no_json[] = "it is not JSON, is cut off, or is nested deeper than 32";

TEST_F(ClientUsageDocument, RefusesWhatIsNoUsageFile) {
    const std::string deep = std::string(40, '[') + std::string(40, ']');
    const char *reasons[] = {no_json, "it is not a JSON object", "it has no user_profile_list",
                             "it has no global_stat"};
    const std::pair<std::string, int> files[] = {
        {"", 0},
        {"hello", 0},
        {"{\"user_profile_list\":[],", 0},
        {"{\"user_profile_list\":[],\"global_stat\":[],\"x\":" + deep + "}", 0},
        {std::string("\0{}", 3), 0},
        {"null", 0},
        {"7\n", 1},
        {"[{\"user_profile_list\":[],\"global_stat\":[]}]", 1},
        {"{\"global_stat\":[]}", 2},
        {"{\"user_profile_list\":[]}", 3},
    };
    for (const auto &[text, reason] : files)
        expect_refused(write(text), reasons[reason]);
}

TEST_F(ClientUsageDocument, RefusesWhatIsNoRegularFileWithoutWaiting) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    expect_refused(path("pipe"), "it is not a regular file");
    expect_refused(path(""), "it is not a regular file");
    expect_refused("/dev/zero", "it is not a regular file");
    expect_refused(path("none.json"), "No such file or directory");
    expect_refused("", "No such file or directory");
}

TEST_F(ClientUsageDocument, RefusesAFileOfMoreThan2MiB) {
    const std::string file = write("{\"user_profile_list\":[],\"global_stat\":[]}");
    std::filesystem::resize_file(file, 2 * 1024 * 1024 + 1);
    expect_refused(file, "it is larger than 2 MiB");
    // It says that it is empty, has no end, and gives no odd number of bytes.
    expect_refused("/proc/self/pagemap", "Invalid argument");
}

TEST_F(ClientUsageDocument, RefusesMoreThanJsonCHasRoomFor) {
    std::string text = "[";
    for (int i = 0; i < 100'000; ++i)
        text += "{},";
    expect_refused(write(text + "{}]"), "it holds more than 64 profiles of 500 applications would");
}

TEST_F(ClientUsageDocument, TakesListsOfAnotherTypeForEmptyOnes) {
    for (const char *value : {"null", "7", "\"x\"", "{}", "true", "[null,7,\"x\",[],{}]"}) {
        ctl_usage_document document = {};
        read_text("{\"user_profile_list\":" + std::string(value) + ",\"global_stat\":" + value +
                      "}",
                  &document);
        EXPECT_EQ(document.profile_count, 0U) << value;
        EXPECT_EQ(document.router_apps.count, 0U) << value;
        ctl_usage_document inner = {};
        read_profile(",\"app_stat_list\":" + std::string(value) +
                         ",\"app_policy\":{\"app_list\":" + value + "}",
                     &inner);
        EXPECT_EQ(inner.profiles[0].apps.count, 0U) << value;
        EXPECT_EQ(inner.profiles[0].rules.count, 0U) << value;
    }
}

TEST_F(ClientUsageDocument, TakesNumbersAsTheDaemonDoes) {
    const std::pair<const char *, int64_t> values[] = {{"7", 7},
                                                       {"-7", 0},
                                                       {"1.5", 1},
                                                       {"NaN", 0},
                                                       {"1e300", INT32_MAX},
                                                       {"\"12\"", 12},
                                                       {"\"x\"", 0},
                                                       {"true", 1},
                                                       {"null", 0},
                                                       {"[1]", 0},
                                                       {"99999999999", INT32_MAX}};
    for (const auto &[value, minutes] : values) {
        ctl_usage_document document = {};
        read_profile(",\"daily_used\":" + std::string(value), &document);
        EXPECT_EQ(document.profiles[0].used.daily, minutes) << value;
    }
}

TEST_F(ClientUsageDocument, AddsUpTheLargestNumbersWithoutOverflow) {
    ctl_usage_document document = {};
    const std::string app = R"({"app_id":1,"daily_used":2147483647,"weekly_used":2147483647,)"
                            R"("monthly_used":2147483647})";
    read_profile(",\"app_stat_list\":[" + app + "," + app + "]", &document);
    EXPECT_EQ(text_of(document, document.profiles[0].apps), "1:6442450941 1:6442450941 ");
    EXPECT_EQ(ctl_week_of(document.apps[0].used), 4294967294);
    EXPECT_EQ(document.profiles[0].history[0], 4294967294);
}

TEST_F(ClientUsageDocument, ReadsTheRingBackFromYesterday) {
    std::vector<int64_t> expected = {500};
    for (int days_ago = 1; days_ago <= 30; ++days_ago)
        expected.push_back((4 + 30 - days_ago) % 30);
    for (const char *index : {"4", "34", "-26", "\"4\"", "4.9"})
        EXPECT_EQ(history_of(",\"next_day_idx\":" + std::string(index) + "," + ring), expected)
            << index;
}

TEST_F(ClientUsageDocument, TakesAnOddRingForAnEmptyOne) {
    std::vector<int64_t> today_alone(31, 0);
    today_alone[0] = 500;
    for (const std::string &members :
         {std::string(""), "," + std::string(ring), std::string(",\"next_day_idx\":4"),
          std::string(",\"next_day_idx\":4,\"prev_30_days\":[1,2]"),
          std::string(",\"next_day_idx\":4,\"prev_30_days\":{\"a\":1}")})
        EXPECT_EQ(history_of(members), today_alone) << members;
}

TEST_F(ClientUsageDocument, DropsApplicationsThatLackARequiredKeyAndPutsTheMostUsedFirst) {
    ctl_usage_document document = {};
    read_text(R"({"user_profile_list":[],"global_stat":[)"
              R"({"app_id":1,"daily_used":1,"weekly_used":1,"monthly_used":1},)"
              R"({"app_id":2,"daily_used":9,"weekly_used":9},)"
              R"({"daily_used":9,"weekly_used":9,"monthly_used":9},)"
              R"({"app_id":4,"daily_used":0,"weekly_used":0,"monthly_used":9},)"
              R"({"app_id":6,"daily_used":0,"weekly_used":3,"monthly_used":0},)"
              R"({"app_id":5,"daily_used":0,"weekly_used":3,"monthly_used":0}]})",
              &document);
    EXPECT_EQ(text_of(document, document.router_apps), "4:9 5:3 6:3 1:3 ");
}

TEST_F(ClientUsageDocument, KeepsSoManyProfilesAndDevicesAndCountsTheRest) {
    std::string devices = "\"0A:1B:2C:3D:4E:5F:and more\"";
    for (int i = 1; i < 40; ++i)
        devices += ",\"x\",7";
    std::string profiles = "{\"user_profile_id\":1,\"device_list\":[" + devices + "]}";
    for (int i = 1; i < 120; ++i)
        profiles += ",{\"user_profile_id\":2},{\"no\":\"id\"}";
    ctl_usage_document document = {};
    read_text("{\"user_profile_list\":[" + profiles + "],\"global_stat\":[]}", &document);
    EXPECT_EQ(document.profiles.size(), 100U);
    EXPECT_EQ(document.profile_count, 120U);
    EXPECT_EQ(document.profiles[0].devices.count, 32U);
    EXPECT_EQ(document.profiles[0].device_count, 40U);
    EXPECT_STREQ(document.devices[0].text, "0A:1B:2C:3D:4E:5F");
}

TEST_F(ClientUsageDocument, ReadsATimeBeyond2038AsItWasCut) {
    const struct {
        const char *value;
        int64_t time;
    } times[] = {{"1772625600", 1772625600}, {"-2147483648", 2147483648}, {"0", 0}, {"\"x\"", 0}};
    for (const auto &time : times) {
        ctl_usage_document document = {};
        read_text("{\"user_profile_list\":[],\"global_stat\":[],\"timestamp\":" +
                      std::string(time.value) + "}",
                  &document);
        EXPECT_EQ(document.timestamp, time.time);
        EXPECT_EQ(document.has_time, time.time != 0);
    }
}

TEST_F(ClientUsageDocument, RefusesAFileCutAtAnyByte) {
    std::string text = read(golden("report.json"));
    text.resize(text.find_last_of('}') + 1);
    for (size_t length = 0; length < text.size(); length += 7)
        expect_refused(write(text.substr(0, length)), no_json);
    ctl_usage_document document = {};
    read_text(text, &document);
    EXPECT_EQ(document.profiles.size(), 2U);
}

TEST_F(ClientUsageDocument, LeavesNoDescriptorBehind) {
    const auto open_descriptors = [] {
        const std::filesystem::directory_iterator descriptors("/proc/self/fd");
        return std::distance(begin(descriptors), end(descriptors));
    };
    const auto before = open_descriptors();
    expect_refused(write("{}"), "it has no user_profile_list");
    expect_refused(path(""), "it is not a regular file");
    ctl_usage_document document = {};
    read_profile("", &document);
    EXPECT_EQ(open_descriptors(), before);
}

} // namespace

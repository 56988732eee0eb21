/// The report: what the page shows.

#include "client/report.h"

#include "tests/unit/support/client_report_fixture.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

class ClientReport : public client_report_fixture {
protected:
    void name(int32_t app_id, const char *text) {
        household_app_t app = {app_id, {}};
        snprintf(app.name.text, sizeof(app.name.text), "%s", text);
        ASSERT_TRUE(household_.apps.add(app));
    }

    /// @return the page of a file, which must be good
    std::string page_of_file(const std::string &file) {
        char *text = nullptr;
        size_t size = 0;
        FILE *page = open_memstream(&text, &size);
        EXPECT_EQ(ctl_write_report(page, file.c_str(), household_), CTL_DONE);
        EXPECT_EQ(ferror(page), 0);
        fclose(page);
        const std::string written(text, size);
        free(text);
        return written;
    }

    std::string page_of(const std::string &text) { return page_of_file(write(text)); }

    /// @return the page of one profile, written on Wednesday, 4 March 2026, 12:00 UTC
    std::string page_of_profile(const std::string &members) {
        return page_of("{\"user_profile_list\":[{\"user_profile_id\":3" + members +
                       "}],\"timestamp\":1772625600,\"global_stat\":[]}");
    }

    /// @return the page's lines that hold a text, all of them
    static std::string lines_with(const std::string &page, std::string_view wanted) {
        std::istringstream in(page);
        std::string lines;
        for (std::string line; std::getline(in, line);)
            if (line.find(wanted) != std::string::npos)
                lines += line + "\n";
        return lines;
    }

    static size_t count(std::string_view text, std::string_view part) {
        size_t found = 0;
        for (size_t at = 0; (at = text.find(part, at)) != std::string_view::npos; at += part.size())
            ++found;
        return found;
    }

    household_t household_ = {};
};

TEST_F(ClientReport, IsThisPageForThisFile) {
    name(305, "Video & clips");
    EXPECT_EQ(page_of_file(golden("report.json")), read(golden("report.html")));
}

TEST_F(ClientReport, IsEmptyOfWhatWasNotCountedYet) {
    const std::string page =
        page_of("{\"user_profile_list\":[],\"global_stat\":[],\"timestamp\":1772625600}");
    EXPECT_EQ(lines_with(page, " yet"), "<p class=\"soft\">No profiles yet.</p>\n"
                                        "<p class=\"soft\">No applications yet.</p>\n");
    const std::string profile = page_of_profile("");
    EXPECT_EQ(lines_with(profile, " yet"), "<p class=\"soft\">No applications yet.</p>\n"
                                           "<p class=\"soft\">No applications yet.</p>\n");
    EXPECT_EQ(lines_with(profile, "No use"), "<p class=\"soft\">No use in these days.</p>\n");
    EXPECT_EQ(count(profile, "class=\"chart\""), 0U);
}

TEST_F(ClientReport, NeedsNothingButItself) {
    const std::string page = page_of_file(golden("household.json"));
    for (const char *loading : {"<script", "http", "src=", "href=", "url(", "@import", "<link",
                                "<iframe", "<object", "<embed", "srcset", "onload"})
        EXPECT_EQ(page.find(loading), std::string::npos) << loading;
    EXPECT_EQ(count(page, "<section>"), 4U);
    EXPECT_EQ(count(page, "class=\"chart\""), 3U);
}

TEST_F(ClientReport, ShowsAnEvilNameAsText) {
    name(305, "<script>alert(1)</script>\"'&");
    const std::string page =
        page_of_profile(R"(,"device_list":["<b onclick='a&b'>"],"app_stat_list":[)"
                        R"({"app_id":305,"daily_used":1,"weekly_used":0,"monthly_used":0}])");
    EXPECT_EQ(page.find("<script"), std::string::npos);
    EXPECT_EQ(page.find("<b "), std::string::npos);
    EXPECT_EQ(lines_with(page, "alert").substr(0, 100),
              "<tr><th scope=\"row\"><bdi>&lt;script&gt;alert(1)&lt;/script&gt;&quot;&#39;&amp;"
              "</bdi><svg class=\"bar\"");
    EXPECT_EQ(lines_with(page, "onclick"), "<li>&lt;b onclick=&#39;a&amp;b&#39;&gt;</li>\n");
}

TEST_F(ClientReport, CleansWhatIsNoTextOfThePage) {
    const std::string page = page_of_profile(R"(,"device_list":["a\u0007b\u001b[2J","\u0000hid"])");
    EXPECT_EQ(lines_with(page, "<li>"), "<li>a?b?[2J</li>\n<li></li>\n");
}

TEST_F(ClientReport, TakesTheLimitOfTheLocalDayWhereMonIsSunday) {
    constexpr char limits[] = R"(,"daily_used":5,"mon":10,"tues":20,"wed":30,"thur":40,)"
                              R"("fri":50,"sat":60,"sun":70,"daily_extend":1)";
    const struct {
        const char *zone;
        int64_t time;
        const char *limit;
    } days[] = {
        {"UTC0", 1772323200, "10m on Sundays and a bonus of 1m today"},     // 1 March, 00:00
        {"UTC0", 1772323199, "1h10m on Saturdays and a bonus of 1m today"}, // a second before
        {"UTC0", 1772625600, "40m on Wednesdays and a bonus of 1m today"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1772667000, "50m on Thursdays and a bonus of 1m today"},
        {"PST8PDT,M3.2.0,M11.1.0", 1772323200, "1h10m on Saturdays and a bonus of 1m today"},
    };
    for (const auto &day : days) {
        set_zone(day.zone);
        const std::string page =
            page_of("{\"user_profile_list\":[{\"user_profile_id\":3" + std::string(limits) +
                    "}],\"timestamp\":" + std::to_string(day.time) + ",\"global_stat\":[]}");
        EXPECT_EQ(lines_with(page, " bonus "),
                  "<p class=\"soft\">" + std::string(day.limit) + "</p>\n");
    }
}

TEST_F(ClientReport, ShowsTodayAgainstItsAllowance) {
    const struct {
        const char *members;
        const char *today;
    } profiles[] = {
        {R"(,"thur":60,"daily_used":42)",
         "<strong title=\"42 min\">42m</strong> <span>of 1h today</span> "
         "<span class=\"soft\">18m left</span>"},
        {R"(,"thur":60,"daily_extend":15,"daily_used":75)",
         "<strong title=\"75 min\">1h15m</strong> <span>of 1h15m today</span> "
         "<span class=\"soft\">0m left</span>"},
        {R"(,"thur":60,"daily_used":61)",
         "<strong title=\"61 min\">1h01m</strong> <span>of 1h today</span> "
         "<span class=\"soft\">1m over</span>"},
        {R"(,"thur":-5,"daily_used":-9)",
         "<strong title=\"0 min\">0m</strong> <span>of 0m today</span> "
         "<span class=\"soft\">0m left</span>"},
        {R"(,"thur":1440,"daily_used":42)",
         "<strong title=\"42 min\">42m</strong> <span>today</span> "
         "<span class=\"soft\">no limit</span>"},
        {R"(,"daily_extend":15,"daily_used":42)",
         "<strong title=\"42 min\">42m</strong> <span>today</span> "
         "<span class=\"soft\">no limit</span>"},
    };
    for (const auto &profile : profiles)
        EXPECT_EQ(lines_with(page_of_profile(profile.members), "<p class=\"today\">"),
                  "<p class=\"today\">" + std::string(profile.today) + "</p>\n");
}

TEST_F(ClientReport, FillsTodaysMeterUpToItsAllowance) {
    const struct {
        const char *members;
        const char *meter;
    } profiles[] = {
        {R"(,"thur":60,"daily_used":0)", R"("now" width="0.0%")"},
        {R"(,"thur":60,"daily_used":45)", R"("now" width="75.0%")"},
        {R"(,"thur":60,"daily_used":60)", R"("now" width="100.0%")"},
        {R"(,"thur":60,"daily_used":90)", R"("over" width="100.0%")"},
        {R"(,"thur":60,"daily_extend":30,"daily_used":90)", R"("now" width="100.0%")"},
        {R"(,"thur":0,"daily_used":0)", R"("now" width="0.0%")"},
        {R"(,"thur":0,"daily_used":1)", R"("over" width="100.0%")"},
    };
    for (const auto &profile : profiles) {
        const std::string meter = lines_with(page_of_profile(profile.members), "class=\"meter\"");
        EXPECT_EQ(count(meter, std::string("<rect class=") + profile.meter), 1U)
            << profile.members << "\n"
            << meter;
    }
}

TEST_F(ClientReport, NamesABonusOnlyWhereThereIsOne) {
    EXPECT_EQ(lines_with(page_of_profile(R"(,"thur":60)"), " on Wednesdays"),
              "<p class=\"soft\">1h on Wednesdays</p>\n");
    EXPECT_EQ(lines_with(page_of_profile(R"(,"thur":60,"daily_extend":1)"), " on Wednesdays"),
              "<p class=\"soft\">1h on Wednesdays and a bonus of 1m today</p>\n");
}

/// Today's use of an application, and that of the days before, the latest first.
std::string use_of(int today, const std::string &days) {
    return R"(,"app_stat_list":[{"app_id":1,"daily_used":)" + std::to_string(today) +
           R"(,"weekly_used":0,"monthly_used":0,"next_day_idx":0,"prev_30_days":[)" +
           "0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0," + days + "]}]";
}

TEST_F(ClientReport, ShowsAMinuteBesideAWholeDay) {
    const std::string page = page_of_profile(use_of(1, "0,0,1440"));
    EXPECT_EQ(count(lines_with(page, "today: 1m (1 min)"), "height=\"1.0\""), 1U) << page;
    EXPECT_EQ(count(lines_with(page, ": 24h (1440 min)"), "height=\"110.0\""), 1U) << page;
}

TEST_F(ClientReport, NamesTheEarlierOfTwoDaysAsTheBusiest) {
    EXPECT_EQ(count(page_of_profile(use_of(5, "7,0,7")), "The busiest: Sun 1 Mar, 7m."), 1U);
    EXPECT_EQ(count(page_of_profile(use_of(8, "7,0,7")), "The busiest: today, 8m."), 1U);
}

TEST_F(ClientReport, ListsTwentyRulesWithoutARowAndCountsTheOthers) {
    for (const int all : {1, 20, 21, 25}) {
        std::string rules;
        for (int app_id = 1; app_id <= all; ++app_id)
            rules += (app_id == 1 ? "" : ",") + std::string(R"({"action":2,"app_id":)") +
                     std::to_string(app_id) + "}";
        const std::string page = page_of_profile(R"(,"app_policy":{"app_list":[)" + rules + "]}");
        EXPECT_EQ(count(page, "always blocked</li>"), static_cast<size_t>(std::min(all, 20)));
        EXPECT_EQ(lines_with(page, " more<"),
                  all > 20 ? "<li>" + std::to_string(all - 20) + " more</li>\n" : "");
    }
}

TEST_F(ClientReport, ShowsNoDatesOfAFileWithoutOne) {
    const std::string page = page_of(
        R"({"user_profile_list":[{"user_profile_id":3,"mon":10,"app_stat_list":[{"app_id":1,)"
        R"("daily_used":5,"weekly_used":0,"monthly_used":0}]}],"global_stat":[]})");
    EXPECT_EQ(lines_with(page, "no date"),
              "<p class=\"soft\">The file has no date.</p>\n"
              "<p class=\"today\"><strong title=\"0 min\">0m</strong> <span>today</span> "
              "<span class=\"soft\">The file has no date, so the day's limit is not known."
              "</span></p>\n");
    EXPECT_EQ(count(page, "days</text>"), 4U);
    EXPECT_EQ(count(page, ">today</text>"), 1U);
}

TEST_F(ClientReport, NamesTheDaysOnBothSidesOfAChangeOfTheClocks) {
    set_zone("CET-1CEST,M3.5.0,M10.5.0/3");
    std::string ring = "100";
    for (int slot = 1; slot < 30; ++slot)
        ring += "," + std::to_string(100 + slot);
    // Sunday, 25 October 2026, 23:30: the clocks went back in the morning.
    const std::string page = page_of(
        R"({"user_profile_list":[{"user_profile_id":3,"app_stat_list":[{"app_id":1,)"
        R"("daily_used":9,"weekly_used":0,"monthly_used":0,"next_day_idx":2,"prev_30_days":[)" +
        ring + R"(]}]}],"timestamp":1792967400,"global_stat":[]})");
    EXPECT_EQ(lines_with(page, "<h1>") + lines_with(page, "2026"),
              "<h1>Internet time</h1>\n<p class=\"soft\">Sunday, 25 October 2026, 23:30</p>\n");
    std::string days;
    for (size_t at = 0; (at = page.find("\"><title>", at)) != std::string::npos;) {
        at += strlen("\"><title>");
        const std::string title = page.substr(at, page.find("</title>", at) - at);
        if (title.find(':') != std::string::npos)
            days += title + "\n";
    }
    EXPECT_EQ(days.substr(0, days.find("Sun 27 Sep")),
              "Fri 25 Sep: 1h42m (102 min)\nSat 26 Sep: 1h43m (103 min)\n");
    EXPECT_EQ(days.substr(days.find("Thu 22 Oct")),
              "Thu 22 Oct: 2h09m (129 min)\nFri 23 Oct: 1h40m (100 min)\n"
              "Sat 24 Oct: 1h41m (101 min)\ntoday: 9m (9 min)\n");
    EXPECT_EQ(count(days, "\n"), 31U);
}

TEST_F(ClientReport, AddsUpTheApplicationsThatHaveNoRow) {
    std::string apps;
    for (int i = 1; i <= 23; ++i)
        apps += (i == 1 ? "" : ",") + std::string("{\"app_id\":") + std::to_string(i) +
                ",\"daily_used\":1,\"weekly_used\":2,\"monthly_used\":" + std::to_string(i) + "}";
    const std::string page = page_of_profile(",\"app_stat_list\":[" + apps + "]");
    EXPECT_EQ(count(page, "<tr><th scope=\"row\">"), 21U);
    EXPECT_EQ(lines_with(page, " more<"),
              "<tr><th scope=\"row\">3 more</th><td title=\"3 min\">3m</td>"
              "<td title=\"9 min\">9m</td><td title=\"15 min\">15m</td></tr>\n");
}

TEST_F(ClientReport, CountsTheProfilesThatItDoesNotShow) {
    std::string profiles = "{\"user_profile_id\":1}";
    for (int i = 1; i < 103; ++i)
        profiles += ",{\"user_profile_id\":1}";
    const std::string page =
        page_of("{\"user_profile_list\":[" + profiles + "],\"global_stat\":[]}");
    EXPECT_EQ(count(page, "<h2>Profile 1</h2>"), 100U);
    EXPECT_EQ(lines_with(page, "not shown"), "<p>Profiles that are not shown: 3</p>\n");
}

TEST_F(ClientReport, ShowsARuleBesideItsApplicationOrElseBelow) {
    const std::string page = page_of_profile(
        R"(,"app_stat_list":[{"app_id":5,"daily_used":30,"weekly_used":0,"monthly_used":0}],)"
        R"("app_policy":{"app_list":[{"app_id":5,"action":1,"daily_limit":30},)"
        R"({"app_id":6,"action":2},{"app_id":7,"action":1,"daily_limit":90},)"
        R"({"app_id":8,"action":3},null,{"action":2}]})");
    EXPECT_EQ(count(page, "<span class=\"rule\">limit 30m a day, used up</span>"), 1U);
    EXPECT_EQ(lines_with(page, "<li>"), "<li><bdi>Application 6</bdi>: always blocked</li>\n"
                                        "<li><bdi>Application 7</bdi>: limit 1h30m a day</li>\n");
}

TEST_F(ClientReport, CountsTheRulesAndDevicesThatItDoesNotShow) {
    std::string rules;
    std::string devices;
    for (int i = 1; i <= 40; ++i) {
        const std::string comma = i == 1 ? "" : ",";
        rules += comma + "{\"app_id\":" + std::to_string(i) + ",\"action\":2}";
        devices += comma + "\"02:00:00:00:00:" + std::to_string(10 + i) + "\"";
    }
    const std::string page = page_of_profile(",\"app_policy\":{\"app_list\":[" + rules +
                                             "]},\"device_list\":[" + devices + "]");
    EXPECT_EQ(count(page, ": always blocked</li>"), 20U);
    EXPECT_EQ(lines_with(page, " more<"), "<li>8 more</li>\n<li>20 more</li>\n");
}

TEST_F(ClientReport, DrawsAFewLinesHoweverLongADayWas) {
    for (const int64_t minutes : {1, 5'761, 100'000, 2'147'483'647}) {
        const std::string page =
            page_of_profile(R"(,"app_stat_list":[{"app_id":5,"weekly_used":0,"monthly_used":0,)"
                            R"("daily_used":)" +
                            std::to_string(minutes) + "}]");
        EXPECT_GE(count(page, "class=\"grid\""), 2U) << minutes;
        EXPECT_LE(count(page, "class=\"grid\""), 5U) << minutes;
    }
}

TEST_F(ClientReport, LeavesThePageUntouchedWhenTheFileIsRefused) {
    char page[64] = "";
    FILE *stream = fmemopen(page, sizeof(page), "w");
    testing::internal::CaptureStderr();
    EXPECT_EQ(ctl_write_report(stream, write("{}").c_str(), household_), CTL_USAGE);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "utm_appctl: cannot report " + path("usage.json") +
                  ": it has no user_profile_list. Name a usage file that utm_appd has exported\n");
    EXPECT_EQ(ftell(stream), 0);
    fclose(stream);
}

} // namespace

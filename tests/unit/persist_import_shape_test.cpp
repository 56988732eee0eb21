/// Import: files whose values are not what they should be.

#include "persist/import.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace {

using usage_file::app_t;
using usage_file::document_t;

/// A value of some type, and what json-c's integer getter makes of it.
struct value_t {
    const char *text;
    const char *as_integer;
};

const value_t values[] = {
    {"null", "0"},
    {"true", "1"},
    {"false", "0"},
    {"7", "7"},
    {"-7", "-7"},
    {"1.5", "1"},
    {"\"x\"", "0"},
    {"\"12\"", "12"},
    {"\"12 minutes\"", "12"},
    {"[]", "0"},
    {"[1]", "0"},
    {"{}", "0"},
    {"{\"a\":1}", "0"},
    {"99999999999", "2147483647"},
    {"-99999999999", "-2147483648"},
};

bool ends_with(const std::string &text, const std::string &end) {
    return text.ends_with(end);
}

bool is_element(const std::string &place, const std::string &array) {
    const size_t at = place.rfind('[');
    return place.ends_with("]") && ends_with(place.substr(0, at), array);
}

class ImportShape : public usage_file_fixture {
protected:
    /// Two of everything, and the figures all different.
    static document_t full_document() {
        const auto app = [](int32_t base) {
            app_t made = {base, base + 1, base + 2, base + 3, base % 30};
            for (size_t slot = 0; slot < 30; ++slot)
                made.ring[slot] = base + 10 + static_cast<int32_t>(slot);
            return made;
        };
        return {{{3,
                  15,
                  40,
                  200,
                  {app(100), app(204)},
                  {1, 2, 3, 4, 5, 6, 7},
                  25,
                  1,
                  {"0A:1B:2C:3D:4E:5F", "FF:00:00:00:00:01"},
                  usage_file::policy_t{7, {{100, 1, 60}, {11, 2, 0}}}},
                 {4, 16, 41, 201, {app(308)}}},
                world::default_now,
                {app(412), app(516)}};
    }

    /// A store that a file meets: profile 3 with a policy and other applications.
    static void make_store() {
        empty_store();
        usage_file::profile_t profile = {3, 1, 1, 1, {{100, 5}, {77, 6}}};
        profile.policy = usage_file::policy_t{7, {{100, 1, 6000}, {77, 1, 6000}}};
        make(profile);
        make_router_app({78, 9});
    }

    /// @return the whole store after a text met it; "refused" stands in front when it was
    static std::string store_after(const std::string &text) {
        make_store();
        forget_log();
        const std::string untouched = world::render_store();
        const int32_t result = import_text(text);
        const std::string store = world::render_store();
        if (result == 0)
            return store;
        EXPECT_EQ(result, -1);
        EXPECT_EQ(store, untouched) << text;
        EXPECT_TRUE(world::trace().ends_with("log import from /tmp/usage/import.json failed\n"));
        return "refused\n" + store;
    }

    /// @return the index of a place
    static size_t place_named(const document_t &document, const std::string &name) {
        const std::vector<std::string> places = usage_file::places(document);
        return static_cast<size_t>(std::find(places.begin(), places.end(), name) - places.begin());
    }

    /// What a document becomes when one value is of another type, as a document that is all right.
    static std::string same_as(const document_t &document, size_t place, const value_t &value) {
        const std::string name = usage_file::places(document)[place];
        const bool is_object = value.text[0] == '{';
        if (name == "user_profile_list" || name == "global_stat" ||
            name == "user_profile_list[0].app_stat_list" ||
            name == "user_profile_list[1].app_stat_list") {
            // An array of another type is empty; [1] is an array with nothing in it to use.
            if (std::string(value.text) == "[1]" && ends_with(name, "app_stat_list"))
                return usage_file::text_with(document, place, "[0]");
            return usage_file::text_with(document, place, "[]");
        }
        if (ends_with(name, "prev_30_days"))
            return usage_file::text_with(document, place, "[]");
        if (is_element(name, "user_profile_list") || is_element(name, "global_stat"))
            return usage_file::text_without(document, place);
        if (is_element(name, "app_stat_list"))
            return usage_file::text_with(document, place, is_object ? "{\"app_id\":1}" : "{}");
        return usage_file::text_with(document, place, value.as_integer);
    }

    /// @return whether a place is one slot of many like it: the rings but the first are tried at
    /// their ends only
    static bool is_repetition(const std::string &place) {
        return is_element(place, "prev_30_days") && !ends_with(place, "[0]") &&
               !ends_with(place, "[29]") &&
               !place.starts_with("user_profile_list[0].app_stat_list[0]");
    }

    /// @return whether import reads what stands at a place
    static bool is_read(const std::string &place) {
        for (const char *unread : {".mon", ".tues", ".wed", ".thur", ".fri", ".sat", ".sun",
                                   ".daily_extend", ".blocked"})
            if (ends_with(place, unread))
                return false;
        return place.find("device_list") == std::string::npos &&
               place.find("app_policy") == std::string::npos;
    }
};

TEST_F(ImportShape, ReadsValuesOfEveryTypeInEveryPlace) {
    const document_t document = full_document();
    const std::vector<std::string> places = usage_file::places(document);
    ASSERT_GT(places.size(), 180U);
    std::map<std::string, std::string> stores; // by the text that led to them
    for (size_t place = 0; place < places.size(); ++place)
        for (const value_t &value : values) {
            if (is_repetition(places[place]))
                continue;
            const std::string text = usage_file::text_with(document, place, value.text);
            const std::string store = store_after(text);
            // Only the time may put a file off: a number that is too large lies in the future.
            ASSERT_TRUE(!store.starts_with("refused") || places[place] == "timestamp") << text;
            const std::string same = is_read(places[place]) ? same_as(document, place, value)
                                                            : usage_file::text(document);
            if (!stores.contains(same))
                stores[same] = store_after(same);
            ASSERT_EQ(store, stores[same]) << places[place] << " = " << value.text;
        }
}

TEST_F(ImportShape, ReadsFilesThatLackAnyMember) {
    const document_t document = full_document();
    const std::vector<std::string> places = usage_file::places(document);
    for (size_t place = 0; place < places.size(); ++place) {
        const std::string &name = places[place];
        const std::string store = store_after(usage_file::text_without(document, place));
        if (name == "user_profile_list" || name == "global_stat") {
            EXPECT_TRUE(store.starts_with("refused")) << name;
        } else if (!is_read(name) || name == "timestamp") {
            EXPECT_EQ(store, store_after(usage_file::text(document))) << name;
        } else {
            EXPECT_FALSE(store.starts_with("refused")) << name;
            EXPECT_NE(store, store_after(usage_file::text(document))) << name;
        }
    }
}

TEST_F(ImportShape, TakesCountersThatAProfileLacksForZero) {
    EXPECT_EQ(import_text("{\"global_stat\":[],\"user_profile_list\":[{\"user_profile_id\":3}]}"),
              0);
    EXPECT_EQ(export_text(), usage_file::text(document_t{{{3}}, world::default_now, {}}));
}

TEST_F(ImportShape, SkipsAProfileWithoutAnIdWithAllItsApplications) {
    EXPECT_EQ(import_text("{\"user_profile_list\":[{\"daily_used\":5,\"app_stat_list\":[" +
                          usage_file::text(app_t{10}) +
                          "]},{},null,7,[],\"x\",{\"user_profile_id\":4}],\"global_stat\":[]}"),
              0);
    EXPECT_EQ(export_text(), usage_file::text(document_t{{{4}}, world::default_now, {}}));
}

TEST_F(ImportShape, DropsApplicationsWithoutOneOfTheirFourFiguresAndCountsThem) {
    const std::string whole =
        "{\"app_id\":10,\"daily_used\":1,\"weekly_used\":2,\"monthly_used\":3}";
    const std::string list = "[{\"daily_used\":1,\"weekly_used\":2,\"monthly_used\":3},"
                             "{\"app_id\":10,\"weekly_used\":2,\"monthly_used\":3},"
                             "{\"app_id\":10,\"daily_used\":1,\"monthly_used\":3},"
                             "{\"app_id\":10,\"daily_used\":1,\"weekly_used\":2},null,7,[],{}," +
                             whole + "]";
    EXPECT_EQ(import_text("{\"user_profile_list\":[{\"user_profile_id\":3,\"app_stat_list\":" +
                          list + "}],\"global_stat\":" + list + "}"),
              0);
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, "
              "collected +0, apps 9, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 10: used 1/2/3, blocked 0, days [] next 0\n"
              "router: apps 1, collected +0\n"
              "  app 10: used 1/2/3, blocked 0, days [] next 0\n");
}

TEST_F(ImportShape, ReadsNoRingWithoutItsIndex) {
    const document_t document = full_document();
    const size_t place = place_named(document, "global_stat[0].next_day_idx");
    EXPECT_EQ(import_text(usage_file::text_without(document, place)), 0);
    const std::string router = world::render_router();
    EXPECT_EQ(router.substr(router.find("app 412")),
              "app 412: used 413/414/415, blocked 0, days [] next 0\n");
}

TEST_F(ImportShape, KeepsTheIndexAndNoFiguresOfARingThatHasNotThirty) {
    for (const size_t entries : {0U, 1U, 29U, 31U, 60U, 3000U}) {
        empty_store();
        const document_t document = {
            {}, world::default_now - 86'400, {{10, 1, 2, 3, 28, std::vector<int32_t>(entries, 9)}}};
        EXPECT_EQ(import_text(usage_file::text(document)), 0);
        EXPECT_EQ(world::render_router(), "router: apps 1, collected +0\n"
                                          "  app 10: used 0/3/3, blocked 0, days [] next 29\n");
    }
}

TEST_F(ImportShape, ReducesAnIndexOutsideTheRingIntoIt) {
    const std::pair<int32_t, int32_t> cases[] = {
        {0, 0},   {29, 29},  {30, 0},    {31, 1},     {59, 29},       {-1, 29},        {-29, 1},
        {-30, 0}, {-31, 29}, {1000, 10}, {-1000, 20}, {int32_max, 7}, {int32_min, 22},
    };
    for (const auto &[read, stored] : cases) {
        document_t document = {{}, world::default_now, {{10, 1, 2, 3, read}}};
        for (size_t slot = 0; slot < 30; ++slot)
            document.router[0].ring[slot] = 100 + static_cast<int32_t>(slot);
        empty_store();
        ASSERT_EQ(import_text(usage_file::text(document)), 0);
        document.router[0].next = stored;
        EXPECT_EQ(export_text(), usage_file::text(document)) << read;
        // A day later: the slot that was due stays empty.
        document.router[0].next = read;
        document.timestamp -= 86'400;
        ASSERT_EQ(import_text(usage_file::text(document)), 0);
        document.timestamp += 86'400;
        document.router[0].next = (stored + 1) % 30;
        document.router[0].ring[static_cast<size_t>(stored)] = 0;
        document.router[0].daily = 0;
        document.router[0].weekly = 3;
        EXPECT_EQ(export_text(), usage_file::text(document)) << read;
    }
}

TEST_F(ImportShape, RefusesARootThatIsNoDocumentOfUsage) {
    for (const char *text : {"", " ", "\n", "null", "true", "7", "1.5", "\"x\"", "[]", "{}",
                             "{\"user_profile_list\":[]}", "{\"global_stat\":[]}",
                             "[{\"user_profile_list\":[],\"global_stat\":[]}]", "x",
                             "{\"user_profile_list\":[],\"global_stat\":[]",
                             "{\"user_profile_list\":[],}", "\xff\xfe"})
        EXPECT_TRUE(store_after(text).starts_with("refused\n")) << text;
}

TEST_F(ImportShape, TakesTheEmptyDocument) {
    make_store();
    EXPECT_EQ(import_text("{\"user_profile_list\":[],\"global_stat\":[]}"), 0);
    EXPECT_EQ(world::render_router(), "router: apps 0, collected +0\n");
}

TEST_F(ImportShape, IgnoresMembersThatItDoesNotKnow) {
    EXPECT_EQ(import_text("{\"version\":2,\"user_profile_list\":[{\"user_profile_id\":3,\"name\":"
                          "\"x\",\"daily_used\":5}],\"global_stat\":[],\"more\":{\"a\":[]}}"),
              0);
    EXPECT_EQ(export_text(), usage_file::text(document_t{{{3, 5}}, world::default_now, {}}));
}

TEST_F(ImportShape, RefusesAFileCutAtAnyByteAndLeavesTheStoreAsItWas) {
    make_store();
    const std::string before = export_text();
    const std::string text = usage_file::text(full_document());
    for (size_t length = 0; length < text.size(); ++length) {
        ASSERT_EQ(import_text(text.substr(0, length)), -1) << length;
        ASSERT_EQ(world::trace(), "log import from /tmp/usage/import.json failed\n") << length;
        ASSERT_EQ(export_text(), before) << length;
        forget_log();
    }
    EXPECT_EQ(import_text(text), 0);
    EXPECT_NE(export_text(), before);
}

TEST_F(ImportShape, ReadsManyRecords) {
    document_t document = {{{3}}, world::default_now, {}};
    for (int32_t i = 0; i < 10'000; ++i)
        (i % 2 == 0 ? document.router : document.profiles[0].apps).push_back({i, i, 2, 3, i % 30});
    ASSERT_EQ(import_text(usage_file::text(document)), 0);
    std::reverse(document.router.begin(), document.router.end());
    EXPECT_EQ(export_text(), usage_file::text(document));
}

TEST_F(ImportShape, RefusesWhatIsNestedTooDeep) {
    const std::string deep = std::string(100, '[') + std::string(100, ']');
    const std::string text = "{\"user_profile_list\":[],\"global_stat\":[],\"x\":" + deep + "}";
    EXPECT_TRUE(store_after(text).starts_with("refused\n"));
}

} // namespace

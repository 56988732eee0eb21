/// Households: tests/unit/households has a table of good and one of bad documents, which the schema
/// is judged by as well. What does not fit into a table stands here.

#include "format/household.h"

#include "format/protocol.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace {

/// Names that the file may use besides its own.
constexpr household_app_t named_apps[] = {{310, {"music"}}, {0, {"unknown"}}, {305, {"tv"}}};

/// What a document was read to.
struct reading_t {
    bool is_good;
    household_t household;
    household_remarks_t remarks;
};

void read_household(const std::string &text, reading_t *reading) {
    // A copy of just its size, so that a sanitizer sees a look behind it.
    const std::vector<char> bytes(text.begin(), text.end());
    reading->is_good = household_read(bytes.data(), bytes.size(), named_apps, &reading->household,
                                      &reading->remarks);
}

std::string render(const household_remarks_t &remarks) {
    std::string text;
    for (const household_remark_t &remark : remarks)
        text += std::string(remark.is_error ? "error: " : "warning: ") + remark.text + "\n";
    return text;
}

std::string render(const config_policy_rule_t &rule) {
    const std::string action = rule.action == POLICY_ACTION_BLOCK ? "blocked"
                               : rule.action == POLICY_ACTION_LIMIT
                                   ? std::to_string(rule.daily_limit) + "m"
                                   : "no rule";
    return "  app " + std::to_string(rule.app_id) + ": " + action + "\n";
}

std::string render(const household_t &household, const household_person_t &person) {
    std::string text = "person " + std::to_string(person.number) + " " + person.name.text +
                       (person.enforced ? ": enforced," : ": counted,");
    for (const int32_t minutes : person.weekday_limits)
        text += " " + std::to_string(minutes);
    text += "\n";
    for (const household_device_t &device : household_records(household.devices, person.devices)) {
        const std::string name = device.name.text;
        text +=
            std::string("  ") + mac_text(device.mac).text + (name.empty() ? "" : " " + name) + "\n";
    }
    for (const config_policy_rule_t &rule : household_records(household.rules, person.rules))
        text += render(rule);
    return text;
}

/// @return the whole household; of its applications nothing when they are the names file's alone
std::string render(const household_t &household) {
    std::string text = household.limits ? "limits on\n" : "limits off\n";
    if (household.apps.size() > std::size(named_apps))
        for (const household_app_t &app : household.apps)
            text += "app " + std::to_string(app.number) + " " + app.name.text + "\n";
    for (const household_person_t &person : household.people)
        text += render(household, person);
    return text;
}

/// A row of a table: a title, a document and what is expected of it.
struct row_t {
    std::string title;
    std::string document;
    std::string expected;
};

/// Reads a table: "== TITLE", the document's lines, "--", and the lines that are expected.
std::vector<row_t> table(const std::string &name) {
    std::ifstream file(UTM_SOURCE_DIR "/tests/unit/households/" + name);
    std::vector<row_t> rows;
    std::string *part = nullptr;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== ")) {
            rows.push_back({line.substr(3), "", ""});
            part = &rows.back().document;
        } else if (line == "--") {
            part = &rows.back().expected;
        } else if (part != nullptr && !line.empty() && !line.starts_with("schema: ")) {
            *part += line + "\n";
        }
    }
    return rows;
}

TEST(Household, IsReadWhole) {
    const std::vector<row_t> rows = table("good.txt");
    EXPECT_GE(rows.size(), 15u);
    for (const row_t &row : rows) {
        reading_t reading = {};
        read_household(row.document, &reading);
        EXPECT_TRUE(reading.is_good) << row.title;
        EXPECT_EQ(render(reading.remarks) + render(reading.household), row.expected) << row.title;
    }
}

TEST(Household, WithErrorsGetsARemarkForEach) {
    const std::vector<row_t> rows = table("bad.txt");
    EXPECT_GE(rows.size(), 30u);
    for (const row_t &row : rows) {
        reading_t reading = {};
        read_household(row.document, &reading);
        EXPECT_FALSE(reading.is_good) << row.title;
        EXPECT_EQ(render(reading.remarks), row.expected) << row.title;
    }
}

/// @return all remarks about a document, after "good" or "bad"
std::string judgement(const std::string &text) {
    reading_t reading = {};
    read_household(text, &reading);
    return (reading.is_good ? "good\n" : "bad\n") + render(reading.remarks);
}

struct text_case_t {
    const char *what;
    std::string text;
    std::string judgement;
};

TEST(Household, IsTextInUtf8) {
    const std::string not_utf8 = ": this is not text in UTF-8\n";
    const text_case_t cases[] = {
        {"no byte", "", "bad\nerror: it is empty\n"},
        {"blanks", " \t\r\n", "bad\nerror: it is empty\n"},
        {"a byte order mark", "\xef\xbb\xbf{}", "good\n"},
        {"a byte order mark alone", "\xef\xbb\xbf", "bad\nerror: it is empty\n"},
        {"lines of another system", "{\r\n}\r\n", "good\n"},
        {"a NUL behind", std::string("{}\0", 3), "bad\nerror: line 1" + not_utf8},
        {"a NUL within", std::string("{\n\"a\0b\":1}", 10), "bad\nerror: line 2" + not_utf8},
        {"NULs alone", std::string(4, '\0'), "bad\nerror: line 1" + not_utf8},
        {"a byte that begins nothing", "{}\n\n\xff", "bad\nerror: line 3" + not_utf8},
        {"a character that is cut off", "{}\xe2\x82", "bad\nerror: line 1" + not_utf8},
        {"Latin-1", "{\"people\":[{\"number\":1,\"name\":\"J\xf6rg\"}]}",
         "bad\nerror: line 1" + not_utf8},
        {"UTF-16", std::string("{\0}\0", 4), "bad\nerror: line 1" + not_utf8},
    };
    for (const text_case_t &c : cases)
        EXPECT_EQ(judgement(c.text), c.judgement) << c.what;
}

/// Repeats a text with commas between.
std::string repeated(const std::string &text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; ++i)
        all += (i == 0 ? "" : ",") + text;
    return all;
}

TEST(Household, IsBounded) {
    const std::string blanks(household_size_limit - 2, ' ');
    const std::string too_much = "bad\nerror: there is more in it than a household can need\n";
    const text_case_t cases[] = {
        {"1 MiB", "{" + blanks + "}", "good\n"},
        {"a byte more", "{" + blanks + " }", "bad\nerror: it is larger than 1 MiB\n"},
        {"hosts", "{\"free\":[" + repeated("\"a\"", 90'000) + "]}",
         "good\nwarning: free: checked, and ignored until a gateway reads it\n"},
        {"too many values", "{\"free\":[" + repeated("0", 100'000) + "]}", too_much},
        {"too many lists", "{\"free\":[" + repeated("[]", 13'000) + "]}", too_much},
        {"too many members", "{" + repeated("\"a\":0", 60'001) + "}", too_much},
    };
    for (const text_case_t &c : cases)
        EXPECT_EQ(judgement(c.text), c.judgement) << c.what;
}

TEST(Household, IsNotNestedDeeply) {
    const auto nested = [](size_t depth) {
        return "{\n\"free\":[\n" + std::string(depth - 2, '[') + std::string(depth - 2, ']') + "]}";
    };
    EXPECT_EQ(judgement(nested(32)),
              "bad\nerror: free[0]: has to be a host or a network in quotes, not a list\n"
              "warning: free: checked, and ignored until a gateway reads it\n");
    for (const size_t depth : {33, 34, 10'000})
        EXPECT_EQ(judgement(nested(depth)), "bad\nerror: line 3: nested too deeply\n") << depth;
    EXPECT_EQ(judgement(std::string(10'000, '{')),
              "bad\nerror: line 1: this is not JSON: quoted object property name expected\n");
    EXPECT_EQ(judgement(std::string(10'000, '}')),
              "bad\nerror: line 1: this is not JSON: unexpected character\n");
}

std::string people(size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += std::string(i == 0 ? "" : ",") + "{\"number\":" + std::to_string(i) +
                ",\"name\":\"p" + std::to_string(i) + "\"}";
    return "{\"people\":[" + text + "]}";
}

TEST(Household, HasAtMost1024People) {
    EXPECT_EQ(judgement(people(1024)), "good\n");
    EXPECT_EQ(judgement(people(1025)), "bad\nerror: people: 1025 people are more than 1024\n");
}

TEST(Household, GetsSoManyRemarksAndNoWarningInPlaceOfAnError) {
    const auto device = [](size_t i) {
        const std::string digits = std::to_string(10'000 + i);
        return "{\"mac\":\"02000000" + digits.substr(1) + "\"}";
    };
    std::string devices;
    for (size_t i = 0; i < household_remarks_max + 3; ++i)
        devices += device(i) + ",";
    const std::string text =
        "{\"people\":[{\"number\":1,\"name\":\"a\",\"devices\":[" + devices + "1,2,3]}]}";
    reading_t reading = {};
    read_household(text, &reading);
    ASSERT_EQ(reading.remarks.size(), household_remarks_max);
    for (size_t i = 0; i < household_remarks_max; ++i)
        EXPECT_EQ(reading.remarks[i].is_error, i >= household_remarks_max - 3) << i;
    EXPECT_STREQ(reading.remarks[household_remarks_max - 1].text,
                 "people[0].devices[105]: has to be an object in braces, not a number");

    const std::string wrong = "{\"free\":[" + repeated("0", household_remarks_max + 1) + "]}";
    reading_t all = {};
    read_household(wrong, &all);
    EXPECT_FALSE(all.is_good);
    ASSERT_EQ(all.remarks.size(), household_remarks_max);
    EXPECT_STREQ(all.remarks[household_remarks_max - 1].text,
                 "free[99]: has to be a host or a network in quotes, not a number");
}

TEST(Household, WithThousandsOfKeysTwiceGetsNoMoreRemarks) {
    reading_t reading = {};
    read_household("{" + repeated("\"people\":[]", 10'000) + "}", &reading);
    EXPECT_FALSE(reading.is_good);
    ASSERT_EQ(reading.remarks.size(), household_remarks_max);
    EXPECT_STREQ(reading.remarks[0].text, "line 1: the key \"people\" is there twice");
}

TEST(Household, ShowsNoMoreOfALongTextThanFits) {
    const std::string name(1000, 'x');
    const std::string shown = name.substr(0, 63);
    EXPECT_EQ(judgement("{\"people\":[{\"number\":1,\"name\":\"a\",\"limit\":{\"" + name +
                        "\":1,\"mon," + repeated("mon", 200) + "\":1}}]}"),
              "bad\n"
              "error: people[0].limit: \"" +
                  shown +
                  "...\" are no days: give such as \"friday\", \"sat,sun\", \"weekend\" or "
                  "\"all\"\n"
                  "error: people[0].limit." +
                  ("mon," + repeated("mon", 200)).substr(0, 63) + ": Monday has a limit twice\n");
}

/// @return a person's name, "nobody" without one
std::string found(const household_t &household, const char *text) {
    const household_person_t *person = household_find_person(household, text);
    return person == nullptr ? "nobody" : person->name.text;
}

TEST(Household, FindsPeopleByNameAndNumber) {
    reading_t reading = {};
    read_household(
        "{\"people\":[{\"number\":7,\"name\":\"Mia\"},{\"number\":-1,\"name\":\"Jörg\"}]}",
        &reading);
    const std::pair<const char *, const char *> cases[] = {
        {"Mia", "Mia"},   {"mIA", "Mia"},     {"7", "Mia"},     {"+7", "Mia"},    {"007", "Mia"},
        {"JÖRG", "Jörg"}, {"-1", "Jörg"},     {"", "nobody"},   {"Mi", "nobody"}, {"8", "nobody"},
        {"7 ", "nobody"}, {"jorg", "nobody"}, {"all", "nobody"}};
    for (const auto &[text, name] : cases)
        EXPECT_EQ(found(reading.household, text), name) << text;
    EXPECT_STREQ(household_nearest_person(reading.household, "mai"), "Mia");
    EXPECT_EQ(household_nearest_person(reading.household, "ben"), nullptr);
    EXPECT_STREQ(household_person_of(reading.household, -1)->name.text, "Jörg");
    EXPECT_EQ(household_person_of(reading.household, 0), nullptr);
}

TEST(Household, FindsApplicationsByNameAndNumber) {
    reading_t reading = {};
    read_household("{\"applications\":[{\"number\":306,\"name\":\"Music\"}]}", &reading);
    const std::pair<const char *, int32_t> cases[] = {{"music", 306}, {"TV", 305}, {"unknown", 0},
                                                      {"310", 310},   {"9", 9},    {"-9", -9}};
    for (const auto &[text, app_id] : cases) {
        int32_t number = -1;
        EXPECT_TRUE(household_find_app(reading.household, text, &number)) << text;
        EXPECT_EQ(number, app_id) << text;
    }
    int32_t untouched = -1;
    EXPECT_FALSE(household_find_app(reading.household, "chess", &untouched));
    EXPECT_EQ(untouched, -1);
    EXPECT_STREQ(household_app_name(reading.household, 310), "music");
    EXPECT_EQ(household_app_name(reading.household, 311), nullptr);
    EXPECT_STREQ(household_nearest_app(reading.household, "musik"), "Music");
}

TEST(Household, IsEmptyWhenItIsNew) {
    const household_t household = {};
    EXPECT_EQ(household_find_person(household, "mia"), nullptr);
    EXPECT_EQ(household_nearest_person(household, "mia"), nullptr);
    EXPECT_EQ(household_app_name(household, 305), nullptr);
}

// ---- The page ------------------------------------------------------------------------------

std::string read_file(const std::string &name) {
    std::ifstream file(UTM_SOURCE_DIR "/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// @return what stands between fences on the page, in order: the example, a limit, what is said of
///         errors, and answers of the client
std::vector<std::string> blocks_of_the_page() {
    const std::string page = read_file("docs/household.md");
    const std::string fence = "```";
    std::vector<std::string> blocks;
    for (size_t next = page.find(fence); next != page.npos; next = page.find(fence, next)) {
        const size_t begin = page.find('\n', next) + 1;
        const size_t end = page.find(fence, begin);
        blocks.push_back(page.substr(begin, end - begin));
        next = end + fence.size();
    }
    return blocks;
}

TEST(HouseholdPage, HasAnExampleWithoutARemark) {
    const std::vector<std::string> blocks = blocks_of_the_page();
    ASSERT_GE(blocks.size(), 3u);
    EXPECT_EQ(blocks[0], read_file("docs/examples/household.json"));
    reading_t reading = {};
    read_household(blocks[0], &reading);
    EXPECT_EQ(render(reading.remarks) + render(reading.household),
              "limits on\n"
              "app 305 video\n"
              "app 306 games\n"
              "app 412 maths\n"
              "app 310 music\n"
              "app 0 unknown\n"
              "app 305 tv\n"
              "person 1 Mia: enforced, 180 120 120 120 120 150 180\n"
              "  00:00:5E:00:53:1A Mia's tablet\n"
              "  00:00:5E:00:53:1B Mia's phone\n"
              "  app 305: 45m\n"
              "  app 306: blocked\n"
              "person 2 Ben: counted, 90 90 90 90 90 90 90\n"
              "  00:00:5E:00:53:2A\n");
}

TEST(HouseholdPage, ShowsALimitByDaysAndWhatIsSaidOfErrors) {
    const std::vector<std::string> blocks = blocks_of_the_page();
    ASSERT_GE(blocks.size(), 3u);
    reading_t limit = {};
    read_household(R"({"people":[{"number":1,"name":"a","limit":)" + blocks[1] + "}]}", &limit);
    EXPECT_EQ(render(limit.household),
              "limits on\nperson 1 a: enforced, 180 120 120 120 120 150 180\n");
    reading_t wrong = {};
    read_household(R"({"people":[{"number":1,"name":"a"},
 {"number":2,"name":"b","devices":[{"mac":"02:00"}],"limt":1}]})",
                   &wrong);
    std::string lines;
    for (const household_remark_t &remark : wrong.remarks)
        lines += std::string(remark.text) + "\n";
    EXPECT_EQ(blocks[2], lines);
}

} // namespace

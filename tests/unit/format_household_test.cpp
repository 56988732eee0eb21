/// Households: tests/unit/households has a table of good and one of bad documents, which the schema
/// is judged by as well. What does not fit into a table stands here.

#include "format/household.h"

#include "format/protocol.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
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

} // namespace

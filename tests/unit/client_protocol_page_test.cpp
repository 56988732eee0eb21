/// docs/protocol.md is correct: its numbers are those of format/protocol.h, its bytes those
/// that the daemon takes and gives. A transcript shows that its clients work.

#include "format/protocol.h"

#include "sim/harness/files.h"
#include "tests/lib/exchange.h"
#include "tests/lib/world.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace {

using strings_t = std::vector<std::string>;

std::string page() {
    return sim_read_file(UTM_SOURCE_DIR "/docs/protocol.md");
}

/// @return what stands in a table's cell, without blanks and backquotes around it
std::string content_of(const std::string &cell) {
    const size_t first = cell.find_first_not_of(" `");
    return first == std::string::npos ? ""
                                      : cell.substr(first, cell.find_last_not_of(" `") - first + 1);
}

/// @return the contents of a section's rows that begin with a number
std::vector<strings_t> cells_of(const std::string &section) {
    std::vector<strings_t> rows;
    bool inside = false;
    for (const std::string &line : sim_split_lines(page())) {
        if (line.starts_with("##"))
            inside = line == "## " + section;
        if (!inside || !std::regex_search(line, std::regex(R"(^\| \d)")))
            continue;
        std::istringstream cells(line.substr(1));
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, '|');)
            rows.back().push_back(content_of(cell));
    }
    return rows;
}

/// @return the first cells of these rows, joined with blanks
strings_t rows_of(const std::string &section, size_t width) {
    strings_t rows;
    for (const strings_t &cells : cells_of(section)) {
        rows.push_back(cells.at(0));
        for (size_t i = 1; i < width; ++i)
            rows.back() += " " + cells.at(i);
    }
    return rows;
}

/// @return the page's blocks of a language
strings_t blocks_of(const std::string &language) {
    const std::string text = page();
    const std::string opening = "\n```" + language + "\n";
    strings_t found;
    for (size_t at = 0; (at = text.find(opening, at)) != std::string::npos;) {
        at += opening.size();
        found.push_back(text.substr(at, text.find("```", at) - at));
    }
    return found;
}

/// @return the bytes that an example shows; those that no line shows are 0
std::string bytes_from(const std::string &example, size_t size) {
    std::string bytes(size, '\0');
    for (const std::string &line : sim_split_lines(example)) {
        std::istringstream text(line);
        size_t offset = 0;
        char colon = 0;
        text >> offset >> colon >> std::hex;
        EXPECT_EQ(colon, ':') << line;
        for (unsigned byte = 0; text >> byte; ++offset)
            bytes.at(offset) = static_cast<char>(byte);
        EXPECT_TRUE(text.eof()) << line;
    }
    return bytes;
}

/// @return a field's row: its place, its size, and its name
template <typename Record, typename Field>
std::string row(const char *name, Field Record::*field) {
    const Record record = {};
    const auto offset =
        reinterpret_cast<const char *>(&(record.*field)) - reinterpret_cast<const char *>(&record);
    return std::to_string(offset) + " " + std::to_string(sizeof(Field)) + " " + name;
}

strings_t in_order(strings_t lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// @return format/protocol.h's numbers and names of one kind, such as "0 PING"
strings_t names_of(const std::string &kind) {
    const std::string header = sim_read_file(UTM_SOURCE_DIR "/src/format/protocol.h");
    const std::regex entry("UTM_APP_CONFIG_(" + kind + R"() = (\d+),)");
    strings_t names;
    for (std::sregex_iterator it(header.begin(), header.end(), entry), end; it != end; ++it)
        names.push_back((*it)[2].str() + " " + (*it)[1].str());
    return in_order(names);
}

class ProtocolPage : public testing::Test {
protected:
    void SetUp() override { world::reset(); }

    /// Profile 3 as the example has it: 127 and 40 minutes this week.
    static config_user_profile_t *make_example() {
        config_user_profile_t *profile = world::make_profile(3);
        world::make_usage(profile, {{12, 40}, {305, 27}});
        for (config_app_usage_t &usage : apps_of(profile))
            usage.weekly_used = usage.app_id == 305 ? 100 : 0;
        return profile;
    }

    static void set_everything(config_user_profile_t *profile) {
        profile->daily_limit_enable = 1;
        profile->daily_extend = 5;
        profile->daily_used = 10;
        profile->weekly_used = 20;
        profile->monthly_used = 30;
        world::set_active(true);
    }

    /// @return the fields of the page's table whose bytes are not 0
    static strings_t fields_in(const std::string &reply) {
        strings_t fields;
        for (const strings_t &field : cells_of("The reply")) {
            if (field.size() < 4)
                continue; // a status
            const std::string bytes = reply.substr(std::stoul(field[0]), std::stoul(field[1]));
            if (bytes.find_first_not_of('\0') != bytes.npos)
                fields.push_back(field[2]);
        }
        return fields;
    }

    /// @return the fields that a cell names
    static strings_t fields_named(const std::string &cell) {
        const std::regex name(R"([a-z]\w*_\w+|extend|activate|debug)");
        strings_t fields;
        for (std::sregex_iterator it(cell.begin(), cell.end(), name), end; it != end; ++it)
            fields.push_back(it->str());
        return fields;
    }

    /// @return the replies of the page's example: those from one block on
    static std::string replies(const strings_t &blocks, size_t first, size_t count) {
        std::string bytes;
        for (size_t i = first; i < first + count; ++i)
            bytes += bytes_from(blocks[i], UTM_APP_CONFIG_REPLY_SIZE);
        return bytes;
    }
};

#define REQUEST_ROW(field) row(#field, &utm_app_config_cmd::field)
#define RULE_ROW(field) row(#field, &utm_app_config_app_entry::field)
#define REPLY_ROW(field) row(#field, &utm_app_config_reply::field)

TEST_F(ProtocolPage, PlacesEveryFieldOfARequest) {
    const strings_t overlays = {
        std::to_string(UTM_APP_CONFIG_MAC_OFFSET) + " 6 mac",
        std::to_string(UTM_APP_CONFIG_PATH_OFFSET) + " " +
            std::to_string(UTM_APP_CONFIG_PATH_SIZE) + " path",
        std::to_string(UTM_APP_CONFIG_APP_LIST_OFFSET) + " " +
            std::to_string(UTM_APP_CONFIG_APP_LIST_MAX * sizeof(utm_app_config_app_entry)) +
            " rules"};
    EXPECT_EQ(rows_of("The request", 3),
              (strings_t{REQUEST_ROW(type), REQUEST_ROW(arg0), REQUEST_ROW(arg1), REQUEST_ROW(arg2),
                         REQUEST_ROW(arg3), REQUEST_ROW(arg4), overlays[0], overlays[1],
                         overlays[2], RULE_ROW(app_id), RULE_ROW(action), RULE_ROW(limit)}));
}

TEST_F(ProtocolPage, PlacesEveryFieldOfAReply) {
    strings_t rows = rows_of("The reply", 3);
    std::erase_if(rows, [](const std::string &row) { return row.find("STATUS_") != row.npos; });
    EXPECT_EQ(
        rows,
        (strings_t{REPLY_ROW(status), REPLY_ROW(policy_id), REPLY_ROW(daily_used),
                   REPLY_ROW(weekly_used), REPLY_ROW(monthly_used), REPLY_ROW(app_usage_app_id),
                   REPLY_ROW(app_usage_value), REPLY_ROW(prev_day_app_id), REPLY_ROW(prev_day_data),
                   REPLY_ROW(daily_limit_enable), REPLY_ROW(daily_limit), REPLY_ROW(extend),
                   REPLY_ROW(activate), REPLY_ROW(debug), REPLY_ROW(weekday_day),
                   REPLY_ROW(weekday_limit), REPLY_ROW(export_interval_minute)}));
}

TEST_F(ProtocolPage, NamesEveryStatus) {
    strings_t rows = rows_of("The reply", 2);
    std::erase_if(rows, [](const std::string &row) { return row.find("STATUS_") == row.npos; });
    EXPECT_EQ(in_order(rows), names_of(R"(STATUS_\w+)"));
    EXPECT_EQ(rows.size(), 4u);
}

TEST_F(ProtocolPage, NamesEveryCommand) {
    EXPECT_EQ(in_order(rows_of("Commands", 2)), names_of(R"((?!STATUS_|PERIOD_|PREV_)\w+)"));
}

TEST_F(ProtocolPage, HasTheCommandsThatAreServedAndNoOther) {
    strings_t served;
    for (int type = 0; type <= UINT8_MAX; ++type)
        if (!world::exchange_bytes(sim_bytes(world::request(static_cast<uint8_t>(type)))).empty())
            served.push_back(std::to_string(type));
    EXPECT_EQ(in_order(rows_of("Commands", 1)), in_order(served));
}

/// Everything that can be asked for is set; of each answer those bytes are not 0 that carry it.
TEST_F(ProtocolPage, NamesTheFieldsOfEveryAnswer) {
    set_everything(make_example());
    int answers = 0;
    for (const strings_t &command : cells_of("Commands")) {
        if (command.at(4).empty())
            continue;
        const auto type = static_cast<uint8_t>(std::stoi(command.at(0)));
        const std::string bytes = world::exchange_bytes(sim_bytes(world::request(type, {3})));
        ASSERT_GE(bytes.size(), UTM_APP_CONFIG_REPLY_SIZE) << command.at(1);
        EXPECT_EQ(fields_in(bytes.substr(bytes.size() - UTM_APP_CONFIG_REPLY_SIZE)),
                  fields_named(command.at(4)))
            << command.at(1);
        ++answers;
    }
    EXPECT_EQ(answers, 10);
}

TEST_F(ProtocolPage, ShowsARequestAndItsReply) {
    const strings_t blocks = blocks_of("hex");
    ASSERT_EQ(blocks.size(), 6u);
    const std::string request = bytes_from(blocks[0], UTM_APP_CONFIG_CMD_SIZE);
    const config_user_profile_t *profile = world::make_profile(3);
    EXPECT_EQ(request, sim_bytes({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 30}));
    EXPECT_EQ(world::exchange_bytes(request), replies(blocks, 1, 1));
    EXPECT_EQ(profile->daily_extend, 30);
}

TEST_F(ProtocolPage, ShowsARequestAndItsList) {
    const strings_t blocks = blocks_of("hex");
    ASSERT_EQ(blocks.size(), 6u);
    const std::string request = bytes_from(blocks[2], UTM_APP_CONFIG_CMD_SIZE);
    make_example();
    EXPECT_EQ(request, sim_bytes({.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = 3, .arg1 = 1000}));
    EXPECT_EQ(world::exchange_bytes(request), replies(blocks, 3, 3));
}

} // namespace

/// What the client sends, to the byte.

#include "sim/harness/client.h"
#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <gtest/gtest.h>

namespace {

using word_list = std::vector<std::string>;
using request_list = std::vector<utm_app_config_cmd>;

/// @return what the client sends to a server that says yes to everything
std::vector<std::string> sent_by(word_list words) {
    const fake_server server(
        FAKE_SOCKET, [](int fd, const std::string &) { sim_send(fd, wire_of({.status = 0})); });
    words.insert(words.begin(), {"-s", FAKE_SOCKET});
    const program_end end = appctl(words);
    EXPECT_EQ(end.status, 0) << end;
    return server.requests();
}

std::vector<std::string> bytes_of_all(const request_list &requests) {
    std::vector<std::string> all;
    for (const utm_app_config_cmd &request : requests)
        all.emplace_back(reinterpret_cast<const char *>(&request), sizeof request);
    return all;
}

void expect_sent(const word_list &words, const request_list &requests) {
    EXPECT_EQ(sent_by(words), bytes_of_all(requests)) << testing::PrintToString(words);
}

utm_app_config_cmd plain(const utm_app_config_cmd &request) {
    return request;
}

} // namespace

TEST(ClientRequests, OfTheDaemon) {
    expect_sent({"ping"}, {plain({.type = UTM_APP_CONFIG_PING})});
    expect_sent({"status"}, {plain({.type = UTM_APP_CONFIG_GET_STATUS})});
    expect_sent({"activate", "on"}, {plain({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1})});
    expect_sent({"activate", "off"}, {plain({.type = UTM_APP_CONFIG_SET_ACTIVATE})});
    expect_sent({"debug", "on"}, {plain({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1})});
    expect_sent({"interval", "show"}, {plain({.type = UTM_APP_CONFIG_GET_EXPORT_INTERVAL})});
    expect_sent({"interval", "set", "2h"},
                {plain({.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = 120})});
}

TEST(ClientRequests, OfPeopleAndDevices) {
    const sim_mac mac = {0x02, 0xfe, 0x80, 0x7f, 0x00, 0x1a};
    const sim_mac other = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    expect_sent({"profile", "add", "3"},
                {plain({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 3})});
    expect_sent({"profile", "del", "--", "-3"},
                {plain({.type = UTM_APP_CONFIG_DELETE_PROFILE, .arg0 = -3})});
    expect_sent({"device", "add", "3", "02FE.807F.001A", "ffffffffffff"},
                {sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, mac),
                 sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, other)});
    expect_sent({"device", "del", "3", "02-fe-80-7f-00-1a"},
                {sim_device_command(UTM_APP_CONFIG_DEL_DEVICE, 3, mac)});
}

TEST(ClientRequests, OfLimits) {
    expect_sent({"limit", "show", "3"},
                {plain({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT, .arg0 = 3}),
                 plain({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, .arg0 = 3})});
    expect_sent({"limit", "set", "3", "90"},
                {plain({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 3, .arg3 = 90})});
    expect_sent({"limit", "enable", "3"},
                {plain({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 3, .arg2 = 1})});
    expect_sent({"limit", "disable", "3"},
                {plain({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 3})});
    expect_sent({"weekday", "show", "3"},
                {plain({.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = 3})});
    expect_sent(
        {"weekday", "set", "3", "sat", "1h30m"},
        {plain(
            {.type = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, .arg0 = 3, .arg1 = 6, .arg3 = 90})});
    expect_sent({"extend", "show", "3"}, {plain({.type = UTM_APP_CONFIG_GET_EXTEND, .arg0 = 3})});
    expect_sent({"extend", "add", "3", "30"},
                {plain({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 30})});
    expect_sent({"extend", "reset", "3"},
                {plain({.type = UTM_APP_CONFIG_RESET_EXTEND, .arg0 = 3})});
}

TEST(ClientRequests, OfUsage) {
    const uint8_t apps = UTM_APP_CONFIG_GET_APP_USAGE;
    const uint8_t history = UTM_APP_CONFIG_GET_PREV_DAY_USAGE;
    expect_sent({"usage", "3"}, {plain({.type = UTM_APP_CONFIG_GET_PROFILE_USAGE, .arg0 = 3}),
                                 plain({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT, .arg0 = 3}),
                                 plain({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, .arg0 = 3}),
                                 plain({.type = UTM_APP_CONFIG_GET_EXTEND, .arg0 = 3})});
    expect_sent({"usage", "3", "--apps"}, {plain({.type = apps, .arg0 = 3})});
    expect_sent({"usage", "3", "--day", "30"}, {plain({.type = apps, .arg0 = 3, .arg1 = 30})});
    expect_sent({"usage", "3", "--week", "3"}, {plain({.type = apps, .arg0 = 3, .arg1 = 1003})});
    expect_sent({"usage", "3", "--month"}, {plain({.type = apps, .arg0 = 3, .arg1 = 2000})});
    expect_sent({"usage", "3", "--history"}, {plain({.type = history, .arg0 = 3})});
    expect_sent({"usage", "3", "--history", "weeks"},
                {plain({.type = history, .arg0 = 3, .arg1 = 1})});
}

TEST(ClientRequests, OfPolicies) {
    expect_sent({"policy", "create", "7"},
                {plain({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 7})});
    expect_sent({"policy", "bind", "3", "7"},
                {plain({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 3, .arg1 = 7})});
    expect_sent({"policy", "clear", "7"},
                {plain({.type = UTM_APP_CONFIG_DELETE_POLICY, .arg0 = 7})});
    expect_sent({"policy", "rule", "7", "305=1h5m", "306=block", "307=remove", "308=65535"},
                {sim_rules_command(7, {{305, 1, 65}, {306, 2, 0}, {307, 0, 0}, {308, 1, 65535}})});
}

TEST(ClientRequests, OfMoreRulesThanOneHasRoomFor) {
    word_list words = {"policy", "rule", "7"};
    std::vector<utm_app_config_app_entry> rules;
    for (uint32_t app = 1; app <= 20; ++app) {
        words.push_back(std::to_string(app) + "=block");
        rules.push_back({app, 2, 0});
    }
    expect_sent(words, {sim_rules_command(7, {rules.begin(), rules.begin() + 10}),
                        sim_rules_command(7, {rules.begin() + 10, rules.end()})});
}

TEST(ClientRequests, OfFiles) {
    const std::string longest = "/" + std::string(126, 'a');
    expect_sent({"signature", "load", "/tmp/a"},
                {sim_path_command(UTM_APP_CONFIG_LOAD_SIGNATURE, "/tmp/a")});
    expect_sent({"export", longest}, {sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, longest)});
    expect_sent({"import", "/tmp/with a blank"},
                {sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, "/tmp/with a blank")});
}

#include "tests/daemon/support/clients.h"

namespace {

/// @return a number from `low` to `high`
int32_t pick(std::mt19937 &random, int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(random);
}

utm_app_config_cmd random_rules(std::mt19937 &random) {
    std::vector<utm_app_config_app_entry> rules(static_cast<size_t>(pick(random, 1, 10)));
    for (utm_app_config_app_entry &rule : rules)
        rule = {static_cast<uint32_t>(pick(random, 300, 310)),
                static_cast<uint16_t>(pick(random, 0, 2)),
                static_cast<uint16_t>(pick(random, 1, 60))};
    return sim_rules_command(pick(random, 1, 4), rules);
}

/// The commands whose arguments are numbers; but the switching of the log.
constexpr uint8_t PLAIN_COMMANDS[] = {
    UTM_APP_CONFIG_PING,
    UTM_APP_CONFIG_CREATE_PROFILE,
    UTM_APP_CONFIG_DELETE_PROFILE,
    UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE,
    UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE,
    UTM_APP_CONFIG_SET_DAILY_LIMIT,
    UTM_APP_CONFIG_GET_DAILY_LIMIT,
    UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT,
    UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT,
    UTM_APP_CONFIG_ADD_EXTEND,
    UTM_APP_CONFIG_GET_EXTEND,
    UTM_APP_CONFIG_RESET_EXTEND,
    UTM_APP_CONFIG_GET_PROFILE_USAGE,
    UTM_APP_CONFIG_GET_APP_USAGE,
    UTM_APP_CONFIG_GET_PREV_DAY_USAGE,
    UTM_APP_CONFIG_SET_ACTIVATE,
    UTM_APP_CONFIG_CREATE_POLICY,
    UTM_APP_CONFIG_DELETE_POLICY,
    UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE,
    UTM_APP_CONFIG_GET_STATUS,
    UTM_APP_CONFIG_GET_EXPORT_INTERVAL,
    UTM_APP_CONFIG_SET_EXPORT_INTERVAL,
};

} // namespace

utm_app_config_cmd random_command(std::mt19937 &random) {
    const int32_t kind = pick(random, 0, static_cast<int32_t>(std::size(PLAIN_COMMANDS)) + 7);
    const int32_t profile_id = pick(random, 1, 4);
    const sim_mac mac = {2, 0, 0, 0, 0, static_cast<uint8_t>(pick(random, 1, 3))};
    if (kind < 3)
        return sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, profile_id, mac);
    if (kind == 3)
        return sim_device_command(UTM_APP_CONFIG_DEL_DEVICE, profile_id, mac);
    if (kind < 6)
        return random_rules(random);
    if (kind == 6)
        return sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, "/tmp/exported.json");
    if (kind == 7)
        return sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, "/tmp/exported.json");
    return utm_app_config_cmd{.type = PLAIN_COMMANDS[kind - 8],
                              .arg0 = profile_id,
                              .arg1 = pick(random, 0, 6),
                              .arg2 = pick(random, 0, 1),
                              .arg3 = pick(random, 1, 60),
                              .arg4 = pick(random, 1, 30)};
}

busy_clients::busy_clients(unsigned count, const request_maker &make) {
    for (unsigned seed = 0; seed < count; ++seed)
        threads_.emplace_back([this, seed, make] { ask_until_stopped(seed, make); });
}

busy_clients::~busy_clients() {
    stop();
}

void busy_clients::stop() {
    stopped_ = true;
    for (std::thread &thread : threads_)
        if (thread.joinable())
            thread.join();
}

void busy_clients::ask_until_stopped(unsigned seed, const request_maker &make) {
    std::mt19937 random(seed);
    while (!stopped_) {
        const sim_answer answer = sim_ask(make(random));
        if (!answer.replies.empty())
            ++answered_;
        if (answer.connected && !answer.closed)
            ++left_waiting_;
    }
}

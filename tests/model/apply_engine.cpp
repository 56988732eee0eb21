#include "tests/model/apply_engine.h"

#include "core/mac.h"
#include "sim/router/engine.h"
#include "store/store.h"

#include <cstdlib>
#include <sstream>

namespace model {

namespace {

std::vector<std::string> words_of(const std::string &line) {
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;)
        words.push_back(word);
    return words;
}

std::set<std::string> devices_of_profile(int32_t id) {
    const mutex_guard lock(utm_app_config_mutex);
    std::set<std::string> devices;
    if (config_user_profile_t *profile = utm_app_find_profile(id))
        for (const config_device_t &device : devices_of(profile))
            devices.insert(mac_text(device.mac).text);
    return devices;
}

void carry_out(engine_t *engine, const engine_command &command) {
    const auto rule = std::make_pair(command.mac, command.app_id);
    switch (command.verb) {
    case engine_verb::guard_on:
    case engine_verb::guard_off:
        engine->guard = command.verb == engine_verb::guard_on;
        break;
    case engine_verb::block:
        engine->blocked.insert(rule);
        break;
    case engine_verb::unblock:
        engine->blocked.erase(rule);
        break;
    case engine_verb::reset:
        std::erase_if(engine->blocked,
                      [&](const auto &blocked) { return blocked.first == command.mac; });
        break;
    case engine_verb::load:
    case engine_verb::none:
        abort(); // the daemon runs no other line through `system`
    }
}

/// The router's script: who has left a profile that is cut off is online again.
void let_go_who_left(engine_t *engine, int32_t profile_id) {
    const auto found = engine->cut_off.find(profile_id);
    if (found == engine->cut_off.end())
        return;
    const std::set<std::string> stay = devices_of_profile(profile_id);
    std::erase_if(found->second, [&](const std::string &mac) { return !stay.contains(mac); });
}

void run_line(engine_t *engine, const std::vector<std::string> &words) {
    if (words[0] == "lcsh")
        carry_out(engine, engine_command_of({words.begin() + 1, words.end()}));
    else
        let_go_who_left(engine, atoi(words[2].c_str())); // profile_daily_limit.sh -C 3
}

void take_event(engine_t *engine, const std::vector<std::string> &words) {
    const int32_t profile_id = atoi(words[2].c_str());
    if (words[0] == "block")
        engine->cut_off[profile_id] = devices_of_profile(profile_id);
    else
        engine->cut_off.erase(profile_id);
}

} // namespace

void engine_t::hear(const std::string &trace, const std::vector<int> &statuses) {
    std::istringstream lines(trace);
    auto status = statuses.begin();
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("run ") && *status++ == 0)
            run_line(this, words_of(line.substr(4)));
        else if (line.starts_with("event "))
            take_event(this, words_of(line.substr(6)));
    }
}

} // namespace model

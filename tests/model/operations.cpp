#include "tests/model/operations.h"

#include "tests/lib/exchange.h"

#include <climits>

namespace model {

namespace {

/// The commands by how often they come.
constexpr uint8_t command_types[] = {
    1,  1,  1,  2,  3,  3,  3,  3,  4,  4,  26, 26, 26, 27, 28, 28, 29, 30, 30,
    31, 32, 32, 33, 34, 35, 36, 36, 37, 37, 39, 39, 39, 41, 42, 42, 42, 43, 43,
    43, 43, 43, 43, 44, 45, 45, 45, 45, 46, 47, 48, 49, 0,  50, 50, 51, 51,
};

std::string json_of(const std::vector<figure_t> &figures) {
    std::string elements;
    for (const figure_t &figure : figures)
        elements += (elements.empty() ? "" : ",") + ("{\"type\":\"" + figure.type) +
                    "\",\"app_id\":" + std::to_string(figure.app) +
                    ",\"total_time_usage\":" + std::to_string(figure.minutes) + "}";
    return "{\"data\":[" + elements + "]}\n";
}

} // namespace

int32_t generator_t::below(int32_t bound) {
    return static_cast<int32_t>(random_() % static_cast<uint32_t>(bound));
}

int32_t generator_t::profile_id() {
    return one_in(20) ? one_of({0, -3, INT_MAX, INT_MIN, 9}) : 1 + below(4);
}

int32_t generator_t::policy_id() {
    return one_in(20) ? one_of({0, -1, INT_MAX, INT_MIN, 9}) : 1 + below(5);
}

int32_t generator_t::limit_minutes() {
    return one_in(15) ? one_of({0, -1, 361, 1440, 1441, INT_MAX, INT_MIN}) : 1 + below(12);
}

uint8_t generator_t::command_type() {
    if (one_in(40)) // one that is not served
        return static_cast<uint8_t>(one_of({5, 25, 38, 40, 52, 128, 255}));
    return command_types[below(static_cast<int32_t>(std::size(command_types)))];
}

time_t generator_t::clock_step(time_t now) {
    constexpr int32_t hour = 3600;
    constexpr int32_t day = 24 * hour;
    // Sometimes to the years in which a 32-bit time runs over, and back again.
    const time_t from_end = now - INT_MAX;
    if (from_end > 0 ? one_in(5) : one_in(60))
        return -from_end + (from_end > 0 ? -below(8000) * day : below(20) * hour);
    constexpr struct {
        int32_t range;
        int32_t unit;
    } steps[] = {{60, 1},    {60, -1},   {2 * day, -1}, {20, day},
                 {40, -day}, {120, day}, {400, day},    {400, -day}};
    const auto dice = static_cast<size_t>(below(12));
    if (dice >= std::size(steps))
        return hour * (4 + below(20));
    return time_t{below(steps[dice].range)} * steps[dice].unit;
}

figure_t generator_t::figure() {
    figure_t figure;
    figure.type = one_of({"APP", "APP", "APP", "APPLICATION", "INTERNET", "INTERNET", "INTERNET_V6",
                          "OTHER", "", "AP", "app"});
    figure.app = one_in(30) ? one_of({-1, INT_MAX, INT_MIN}) : below(6);
    figure.minutes = one_in(60) ? one_of({-4, INT_MAX, INT_MIN, 10'000}) : below(5);
    return figure;
}

answer_t generator_t::reply() {
    answer_t answer;
    answer.fails = one_in(40);
    if (one_in(12)) {
        answer.text = one_of({"", "\n", "{}", "[]", "{\"data\":null}", "{\"data\":[null,7]}",
                              "Command failed: Request timed out\n", "{\"data\":[{\"type\":"});
        return answer;
    }
    for (int32_t i = below(5); i > 0; --i)
        answer.figures.push_back(figure());
    answer.text = json_of(answer.figures);
    return answer;
}

/// A request with arguments as its type wants them, most of the time.
std::string generator_t::request(uint8_t type, std::string *text) {
    const int32_t profile = profile_id();
    const int32_t policy = policy_id();
    *text = "command " + std::to_string(type);
    if (type == 3 || type == 4) {
        const uint8_t last = static_cast<uint8_t>(0x0A + below(4));
        *text += " profile " + std::to_string(profile) + " device " + std::to_string(last);
        return sim_bytes(world::device_request(type, profile, {0, 0x11, 0x22, 0xAA, 0xBB, last}));
    }
    if (type == 43) {
        std::vector<utm_app_config_app_entry> rules;
        *text += " policy " + std::to_string(policy) + " rules";
        for (int32_t i = 1 + below(3); i > 0; --i) {
            const int action = one_in(20) ? 3 : below(3);
            rules.push_back({static_cast<uint32_t>(below(6)), static_cast<uint16_t>(action),
                             static_cast<uint16_t>(below(12))});
            *text += " " + std::to_string(rules.back().app_id) + "/" + std::to_string(action) +
                     "/" + std::to_string(rules.back().limit);
        }
        const int32_t count =
            one_in(20) ? one_of({0, 11, -1, 10}) : static_cast<int32_t>(rules.size());
        *text += " of " + std::to_string(count);
        rules.resize(10);
        return sim_bytes(world::rules_request(policy, count, rules));
    }
    if (type == 50 || type == 51) {
        const std::string file = path();
        *text += " " + file;
        return sim_bytes(sim_path_command(type, file));
    }
    if (type == 46)
        return sim_bytes(sim_path_command(type, std::string(static_cast<size_t>(below(129)), 'p')));
    int32_t first = profile;
    int32_t second = policy;
    if (type == 39 || type == 41)
        first = one_in(10) ? one_of({2, -1}) : (one_in(4) ? 0 : 1);
    if (type == 49)
        first = interval();
    if (type == 42 || type == 44)
        first = policy;
    if (type == 30)
        second = one_in(10) ? one_of({7, -1, INT_MIN}) : below(7);
    if (type == 36)
        second = one_in(10) ? one_of({31, -1, 999, 1004, INT_MAX})
                            : one_of({0, 1, 2, 7, 29, 30, 1000, 1001, 1002, 1003, 2000});
    if (type == 37)
        second = one_in(10) ? one_of({2, -1}) : below(2);
    const int32_t enable = one_in(10) ? 2 : (one_in(3) ? 0 : 1);
    const int32_t arguments[] = {first, second, enable, limit_minutes(), limit_minutes()};
    for (const int32_t argument : arguments)
        *text += " " + std::to_string(argument);
    return sim_bytes(world::request(type, {first, second, enable, arguments[3], arguments[4]}));
}

operation_t generator_t::command() {
    return command(command_type());
}

operation_t generator_t::command(uint8_t type) {
    operation_t operation;
    operation.kind = kind_t::command;
    operation.request = request(type, &operation.text);
    answer_t answer;
    answer.fails = one_in(4);
    answer.text = one_of({"", "signature loaded\n", "failed\n"});
    operation.answers = {answer};
    return operation;
}

operation_t generator_t::tick() {
    operation_t operation;
    operation.kind = kind_t::tick;
    operation.text = "tick";
    operation.step = 60;
    if (one_in(4))
        operation.uptime = below(4000);
    if (one_in(8))
        operation.sysinfo_result = one_of({-1, -14});
    operation.text += " up " + std::to_string(operation.uptime) + " sysinfo " +
                      std::to_string(operation.sysinfo_result);
    for (int i = 0; i < 12; ++i)
        operation.answers.push_back(reply());
    return operation;
}

operation_t generator_t::next(const state_t &state) {
    if (plan_.empty() && one_in(400))
        plan_restart();
    if (plan_.empty() && one_in(60))
        plan_round_trip();
    operation_t operation;
    const int32_t dice = below(100);
    if (!plan_.empty()) {
        operation = plan_.front();
        plan_.pop_front();
    } else if (dice < 62) {
        operation = command();
    } else if (dice < 89) {
        operation = tick();
    } else if (dice < 92) {
        operation = change(state);
    } else {
        operation = clock(clock_step(state.now));
    }
    operation.now = state.now + operation.step;
    operation.text += " at " + std::to_string(operation.now);
    for (const answer_t &answer : operation.answers)
        operation.text += "\n      " + std::string(answer.fails ? "fails " : "") + answer.text;
    return operation;
}

} // namespace model

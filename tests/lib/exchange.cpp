#include "tests/lib/exchange.h"

#include "control/dispatcher.h"

#include <algorithm>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr size_t reply_size = 832;

std::string status_name(uint8_t status) {
    switch (status) {
    case 0:
        return "ok";
    case 1:
        return "fail";
    case 2:
        return "data";
    case 255:
        return "not loaded";
    default:
        return "status " + std::to_string(status);
    }
}

/// A field's name and place.
struct field_t {
    const char *name;
    size_t offset;
};

std::vector<field_t> fields_of(uint8_t type) {
    switch (type) {
    case 27:
        return {{"enabled", 224}};
    case 29:
        return {{"limit", 228}};
    case 31:
        return {{"day", 264}, {"limit", 268}};
    case 33:
        return {{"extend", 232}};
    case 35:
        return {{"daily", 16}, {"weekly", 20}, {"monthly", 24}};
    case 36:
        return {{"app", 48}, {"minutes", 52}};
    case 42:
        return {{"policy", 8}};
    case 47:
        return {{"activate", 236}, {"debug", 244}};
    case 48:
        return {{"interval", 280}};
    default:
        return {};
    }
}

/// The previous-usage row: the application, then 31 figures without the zeros at the end.
std::string prev_day_row(const std::string &bytes) {
    std::vector<int32_t> figures;
    for (size_t i = 0; i < 31; ++i)
        figures.push_back(world::int32_at(bytes, 84 + 4 * i));
    while (!figures.empty() && figures.back() == 0)
        figures.pop_back();
    std::string text = " app " + std::to_string(world::int32_at(bytes, 80)) + " minutes";
    for (const int32_t figure : figures)
        text += " " + std::to_string(figure);
    return text;
}

std::string describe_one(uint8_t type, const std::string &bytes) {
    const uint8_t status = static_cast<uint8_t>(bytes[0]);
    const bool is_list = type == 31 || type == 36 || type == 37;
    std::string text = status_name(status);
    if (status != (is_list ? 2 : 0))
        return text;
    if (type == 37)
        return text + prev_day_row(bytes);
    for (const field_t &field : fields_of(type))
        text += std::string(" ") + field.name + " " +
                std::to_string(world::int32_at(bytes, field.offset));
    return text;
}

/// What nobody reads is not 0.
/// @param used  bytes that the request names, its overlay included
utm_app_config_cmd filled(utm_app_config_cmd command, size_t used = 0) {
    const size_t from = std::max(used, offsetof(utm_app_config_cmd, tail));
    memset(command.reserved, 0xA5, sizeof(command.reserved));
    memset(reinterpret_cast<char *>(&command) + from, 0x5A, sizeof(command) - from);
    return command;
}

} // namespace

namespace world {

utm_app_config_cmd request(uint8_t type, std::initializer_list<int32_t> arguments) {
    int32_t values[5] = {};
    std::copy(arguments.begin(), arguments.end(), values);
    return filled({.type = type,
                   .arg0 = values[0],
                   .arg1 = values[1],
                   .arg2 = values[2],
                   .arg3 = values[3],
                   .arg4 = values[4]});
}

utm_app_config_cmd device_request(uint8_t type, int32_t profile_id,
                                  const std::vector<uint8_t> &mac) {
    sim_mac bytes = {};
    std::copy_n(mac.begin(), bytes.size(), bytes.begin());
    return filled(sim_device_command(type, profile_id, bytes));
}

utm_app_config_cmd rules_request(int32_t policy_id, int32_t count,
                                 const std::vector<utm_app_config_app_entry> &rules) {
    utm_app_config_cmd command = sim_rules_command(policy_id, rules);
    command.arg1 = count;
    return filled(command, UTM_APP_CONFIG_APP_LIST_OFFSET + rules.size() * sizeof(rules[0]));
}

std::string exchange_bytes(const std::string &sent) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0 || !sim_send(ends[0], sent))
        abort();
    shutdown(ends[0], SHUT_WR);
    utm_app_config_cmd_dispatch(ends[1]);
    close(ends[1]);
    const sim_answer answer = sim_read_answer(ends[0]);
    close(ends[0]);
    return answer.bytes;
}

std::string exchange(const utm_app_config_cmd &request) {
    return describe(request.type, exchange_bytes(sim_bytes(request)));
}

std::string describe(uint8_t type, const std::string &bytes) {
    if (bytes.empty())
        return "no reply\n";
    std::string text;
    size_t at = 0;
    for (; at + reply_size <= bytes.size(); at += reply_size)
        text += describe_one(type, bytes.substr(at, reply_size)) + "\n";
    if (at < bytes.size())
        text += status_name(static_cast<uint8_t>(bytes[at])) + " in " +
                std::to_string(bytes.size() - at) + " bytes\n";
    return text;
}

int32_t int32_at(const std::string &bytes, size_t offset) {
    int32_t value = 0;
    memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

} // namespace world

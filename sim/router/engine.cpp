#include "sim/router/engine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

using words = std::vector<std::string>;

bool is_mac(const std::string &text) {
    static const char digits[] = "0123456789ABCDEF";
    if (text.size() != 17)
        return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (i % 3 == 2 ? text[i] != ':' : strchr(digits, text[i]) == nullptr)
            return false;
    return true;
}

int32_t app_id_of(const std::string &text) {
    return static_cast<int32_t>(strtol(text.c_str(), nullptr, 10));
}

bool is_app_id(const std::string &text) {
    return text == std::to_string(app_id_of(text));
}

bool starts_with(const words &command, const words &start) {
    return command.size() >= start.size() &&
           std::equal(start.begin(), start.end(), command.begin());
}

bool is_rule_line(const words &command, const char *verb, const words &end) {
    return command.size() == 5 + end.size() && starts_with(command, {"apg", "acl", verb}) &&
           is_mac(command[3]) && is_app_id(command[4]) &&
           std::equal(end.begin(), end.end(), command.begin() + 5);
}

} // namespace

engine_command engine_command_of(const words &command) {
    if (command == words{"apg", "on"})
        return {.verb = engine_verb::guard_on};
    if (command == words{"apg", "off"})
        return {.verb = engine_verb::guard_off};
    if (is_rule_line(command, "set", {"0", "18"}))
        return {engine_verb::block, command[3], app_id_of(command[4])};
    if (is_rule_line(command, "del", {"0"}))
        return {engine_verb::unblock, command[3], app_id_of(command[4])};
    if (command.size() == 4 && starts_with(command, {"apg", "acl", "reset"}) && is_mac(command[3]))
        return {.verb = engine_verb::reset, .mac = command[3]};
    if (command.size() == 2 && command[0] == "load")
        return {.verb = engine_verb::load, .path = command[1]};
    return {};
}

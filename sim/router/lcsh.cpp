/// A fake of the shell of the packet inspection engine. It knows the command lines that the
/// daemon issues, to the letter, and refuses all others.

#include "sim/router/command.h"
#include "sim/router/router_dir.h"

#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <vector>

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

bool is_app_id(const std::string &text) {
    return text == std::to_string(static_cast<int32_t>(strtol(text.c_str(), nullptr, 10)));
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

bool is_set(const words &command) {
    return is_rule_line(command, "set", {"0", "18"});
}
bool is_del(const words &command) {
    return is_rule_line(command, "del", {"0"});
}

bool is_reset(const words &command) {
    return command.size() == 4 && starts_with(command, {"apg", "acl", "reset"}) &&
           is_mac(command[3]);
}

bool is_guard(const words &command) {
    return command == words{"apg", "on"} || command == words{"apg", "off"};
}

bool is_load(const words &command) {
    return command.size() == 2 && command[0] == "load";
}

void set_rule(const words &command, bool holds) {
    int32_t app_id = atoi(command[4].c_str());
    sim_router_set(sim_rule_fact(command[3].c_str(), app_id).name, holds);
}

void reset_device(const std::string &mac) {
    DIR *directory = opendir(sim_router_file("").text);
    if (directory == nullptr)
        return;
    const std::string start = "rule." + mac + ".";
    while (const dirent *entry = readdir(directory))
        if (strncmp(entry->d_name, start.c_str(), start.size()) == 0)
            sim_router_set(entry->d_name, false);
    closedir(directory);
}

/// The answer to a bad file does not repeat its name: the daemon looks for one word in the answer,
/// which a name may hold too.
void load_signature(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
        printf("signature %s loaded\n", path.c_str());
    else
        printf("no such signature\n");
}

void carry_out(const words &command) {
    if (is_guard(command))
        sim_router_set(SIM_GUARD_FACT, command[1] == "on");
    else if (is_set(command) || is_del(command))
        set_rule(command, is_set(command));
    else if (is_reset(command))
        reset_device(command[3]);
    else
        load_signature(command[1]);
}

} // namespace

int main(int argc, char **argv) {
    const std::string line = sim_command_line("lcsh", argc, argv);
    const words command(argv + 1, argv + argc);
    if (!is_guard(command) && !is_set(command) && !is_del(command) && !is_reset(command) &&
        !is_load(command))
        return sim_refuse(line, "no such command");
    if (int status = sim_accept(line))
        return status;
    carry_out(command);
    return 0;
}

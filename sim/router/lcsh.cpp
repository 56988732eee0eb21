/// A fake of the shell of the packet inspection engine. It knows the command lines that the
/// daemon issues, to the letter, and refuses all others.

#include "sim/router/command.h"
#include "sim/router/engine.h"
#include "sim/router/router_dir.h"

#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

void set_rule(const engine_command &command, bool holds) {
    sim_router_set(sim_rule_fact(command.mac.c_str(), command.app_id).name, holds);
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

void carry_out(const engine_command &command) {
    switch (command.verb) {
    case engine_verb::guard_on:
    case engine_verb::guard_off:
        sim_router_set(SIM_GUARD_FACT, command.verb == engine_verb::guard_on);
        break;
    case engine_verb::block:
    case engine_verb::unblock:
        set_rule(command, command.verb == engine_verb::block);
        break;
    case engine_verb::reset:
        reset_device(command.mac);
        break;
    case engine_verb::load:
        load_signature(command.path);
        break;
    case engine_verb::none:
        break;
    }
}

} // namespace

int main(int argc, char **argv) {
    const std::string line = sim_command_line("lcsh", argc, argv);
    const engine_command command =
        engine_command_of(std::vector<std::string>(argv + 1, argv + argc));
    if (command.verb == engine_verb::none)
        return sim_refuse(line, "no such command");
    if (int status = sim_accept(line))
        return status;
    carry_out(command);
    return 0;
}

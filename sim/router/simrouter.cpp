/// A look into the simulated router, for people and scripts.

#include "sim/router/command.h"
#include "sim/router/router_dir.h"
#include "sim/router/scenario.h"

#include <cstdio>
#include <dirent.h>
#include <set>
#include <string>

namespace {

int usage() {
    fputs("usage: simrouter blocked         what is blocked now, in the router of UTM_SIM_DIR\n"
          "       simrouter check FILE      whether FILE is a proper scenario\n"
          "       simrouter accept COMMAND  journal a fake's command line, with its faults\n",
          stderr);
    return 2;
}

std::set<std::string> facts() {
    std::set<std::string> names;
    if (DIR *directory = opendir(sim_router_file("").text)) {
        while (const dirent *entry = readdir(directory))
            names.insert(entry->d_name);
        closedir(directory);
    }
    return names;
}

std::string person_name(const scenario &scene, int32_t profile_id) {
    for (const scenario_person &person : scene.people)
        if (person.profile_id == profile_id)
            return person.name;
    return "somebody";
}

std::string device_name(const scenario &scene, const std::string &mac) {
    for (const scenario_device &device : scene.devices)
        if (device.mac == mac)
            return device.name;
    return "a device";
}

std::string app_name(const scenario &scene, int32_t id) {
    for (const scenario_app &app : scene.apps)
        if (app.id == id)
            return app.name;
    return "an application";
}

/// @return whether the fact is a block, which is then printed
bool print_block(const scenario &scene, const std::string &fact) {
    int32_t id = 0;
    char mac[18] = {};
    if (sscanf(fact.c_str(), "rule.%17[0-9A-F:].%d", mac, &id) == 2)
        printf("%s (%d) is blocked on %s (%s)\n", app_name(scene, id).c_str(), id,
               device_name(scene, mac).c_str(), mac);
    else if (sscanf(fact.c_str(), "profile.%d.blocked", &id) == 1)
        printf("%s (profile %d) has no network\n", person_name(scene, id).c_str(), id);
    else
        return false;
    return true;
}

int print_blocked() {
    if (getenv(SIM_ROUTER_VARIABLE) == nullptr)
        return usage();
    scenario scene;
    std::string error;
    if (!scenario_read(sim_router_file("scenario").text, &scene, &error))
        fprintf(stderr, "%s\n", error.c_str());
    bool any = false;
    for (const std::string &fact : facts())
        any = print_block(scene, fact) || any;
    if (!any)
        puts("nothing is blocked");
    puts(sim_router_holds(SIM_GUARD_FACT) ? "the application guard is on"
                                          : "the application guard is off: no application is held");
    return 0;
}

int check(const char *path) {
    scenario scene;
    std::string error;
    if (access(path, R_OK) != 0)
        error = std::string(path) + ": cannot be read";
    else if (scenario_read(path, &scene, &error)) {
        printf("%zu people, %zu devices, %zu apps, %zu stretches of use\n", scene.people.size(),
               scene.devices.size(), scene.apps.size(), scene.uses.size());
        return 0;
    }
    fprintf(stderr, "%s\n", error.c_str());
    return 1;
}

} // namespace

int main(int argc, char **argv) {
    std::string command = argc > 1 ? argv[1] : "";
    if (command == "blocked" && argc == 2)
        return print_blocked();
    if (command == "check" && argc == 3)
        return check(argv[2]);
    if (command == "accept" && argc == 3)
        return sim_accept(argv[2]);
    return usage();
}

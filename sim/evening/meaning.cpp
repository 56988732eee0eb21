#include "sim/evening/meaning.h"

#include <cstdio>
#include <cstring>

namespace {

std::string person_name(const scenario &scene, int profile_id) {
    for (const scenario_person &person : scene.people)
        if (person.profile_id == profile_id)
            return person.name;
    return "profile " + std::to_string(profile_id);
}

std::string device_name(const scenario &scene, const std::string &mac) {
    for (const scenario_device &device : scene.devices)
        if (device.mac == mac)
            return device.name;
    return mac;
}

std::string app_name(const scenario &scene, int app_id) {
    for (const scenario_app &app : scene.apps)
        if (app.id == app_id)
            return app.name;
    return "application " + std::to_string(app_id);
}

bool starts_with(const std::string &line, const char *start) {
    return line.compare(0, strlen(start), start) == 0;
}

router_line read_rule(const scenario &scene, const std::string &line) {
    char mac[18] = {};
    int app_id = 0;
    if (sscanf(line.c_str(), "lcsh apg acl set %17s %d", mac, &app_id) == 2)
        return {"applications blocked on a device",
                "no " + app_name(scene, app_id) + " on " + device_name(scene, mac)};
    if (sscanf(line.c_str(), "lcsh apg acl del %17s %d", mac, &app_id) == 2)
        return {"applications released on a device",
                device_name(scene, mac) + " may use " + app_name(scene, app_id) + " again"};
    sscanf(line.c_str(), "lcsh apg acl reset %17s", mac);
    return {"devices released from all rules", "no rule left for " + device_name(scene, mac)};
}

router_line read_event(const scenario &scene, const std::string &line) {
    int profile_id = 0;
    if (sscanf(line.c_str(), "notify block profile %d", &profile_id) == 1)
        return {"people cut off", person_name(scene, profile_id) + " is offline"};
    if (sscanf(line.c_str(), "notify unblock profile %d", &profile_id) == 1)
        return {"people let in", person_name(scene, profile_id) + " may go online"};
    return {"announcements of the feature switch", ""};
}

} // namespace

router_line meaning_of(const scenario &scene, const std::string &line) {
    if (starts_with(line, "ubus "))
        return {ROUTER_QUERY, ""};
    if (starts_with(line, "refused "))
        return {ROUTER_REFUSED, ""};
    if (starts_with(line, "lcsh apg acl "))
        return read_rule(scene, line);
    if (starts_with(line, "notify "))
        return read_event(scene, line);
    return {"switchings of the access rules as a whole, and other commands", ""};
}

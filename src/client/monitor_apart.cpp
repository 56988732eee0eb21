#include "client/monitor.h"

#include "client/verbs.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <unistd.h>

namespace {

/// Where it is, from utm_appctl's own folder: as installed, and in a build's folder.
constexpr const char *places[] = {UTM_APPCTL_TO_MONITOR, "utm_appctl_monitor"};

/// @return the end of the path of this program's folder, where a name can be put; null on failure
char *find_own_folder(char *path, size_t size) {
    const ssize_t length = readlink("/proc/self/exe", path, size - 1);
    if (length <= 0)
        return nullptr;
    path[length] = '\0';
    char *slash = strrchr(path, '/');
    return slash == nullptr ? nullptr : slash + 1;
}

} // namespace

const bool ctl_monitor_is_apart = true;

ctl_exit ctl_monitor(const ctl_call &call) {
    char path[PATH_MAX];
    char *name = find_own_folder(path, sizeof(path));
    if (name == nullptr)
        return ctl_fail(CTL_USAGE, "/proc/self/exe cannot be read (%s)\nIs /proc mounted?",
                        strerror(errno));
    int reason = ENOENT;
    for (const char *place : places) {
        const size_t room = static_cast<size_t>(path + sizeof(path) - name);
        if (strlen(place) >= room)
            continue;
        strcpy(name, place);
        execv(path, call.options.words);
        if (errno != ENOENT)
            reason = errno;
    }
    if (reason == ENOENT)
        return ctl_fail(CTL_USAGE,
                        "\"%s\" needs the program utm_appctl_monitor, which is not installed\n"
                        "On OpenWrt, install the package utm_appctl-monitor",
                        call.verb.noun);
    return ctl_fail(CTL_USAGE, "utm_appctl_monitor cannot be started (%s)\nInstall it anew",
                    strerror(reason));
}

#include "sim/harness/preload.h"

#include "sim/preload/redirect.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

std::string sim_built_preload() {
    return SIM_BUILT_PRELOAD;
}

void sim_add_to_variable(const char *name, char separator, const std::string &text) {
    const char *old = getenv(name);
    const std::string value = old != nullptr && *old != '\0' ? old + (separator + text) : text;
    setenv(name, value.c_str(), 1);
}

void sim_accept_preload() {
    sim_add_to_variable("ASAN_OPTIONS", ':', "verify_asan_link_order=0");
}

void sim_preload(const std::string &library, const std::string &link) {
    const bool is_redirected = getenv(SIM_SANDBOX_ROOT) != nullptr;
    // The sandbox's own is there already.
    if (is_redirected && library == sim_built_preload())
        return;
    std::error_code none_yet;
    // One that is right stays: programs that a running daemon starts go by it.
    if (std::filesystem::read_symlink(link, none_yet) != library) {
        unlink(link.c_str());
        if (symlink(library.c_str(), link.c_str()) != 0)
            perror(link.c_str());
    }
    if (!is_redirected)
        unsetenv("LD_PRELOAD");
    sim_add_to_variable("LD_PRELOAD", ' ', sim_outside(link));
}

std::string sim_outside(const std::string &path) {
    return static_cast<const char *>(sim_redirected(path.c_str()));
}

#pragma once
/// What the substitute library tells a simulated router: the directory that it lives in, its
/// journal and the facts of its state, each a file of its own that exists or not.
///
/// Header-only and libc-only: the library is part of the daemon's process, which has no C++
/// runtime.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

/// Names the directory; unset, there is no simulated router.
inline constexpr char SIM_ROUTER_VARIABLE[] = "UTM_SIM_DIR";

struct sim_router_path {
    char text[1024];
};

/// @return the path of a file in the router's directory; empty without a router
inline sim_router_path sim_router_file(const char *name) {
    sim_router_path path = {};
    const char *directory = getenv(SIM_ROUTER_VARIABLE);
    if (directory != nullptr)
        snprintf(path.text, sizeof(path.text), "%s/%s", directory, name);
    return path;
}

/// Appends one line to the journal with one write, so that lines of different processes and
/// threads never mix.
/// @param line  the text, which ends with a line feed
inline void sim_journal_append(const char *line) {
    int fd = open(sim_router_file("journal").text, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (fd < 0)
        return;
    if (write(fd, line, strlen(line)) < 0)
        perror("journal");
    close(fd);
}

/// Makes a fact true or false.
inline void sim_router_set(const char *name, bool holds) {
    sim_router_path path = sim_router_file(name);
    if (!holds) {
        unlink(path.text);
        return;
    }
    int fd = open(path.text, O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (fd >= 0)
        close(fd);
}

/// The name of a fact.
struct sim_fact {
    char name[64];
};

inline sim_fact sim_blocked_fact(int32_t profile_id) {
    sim_fact fact = {};
    snprintf(fact.name, sizeof(fact.name), "profile.%d.blocked", profile_id);
    return fact;
}

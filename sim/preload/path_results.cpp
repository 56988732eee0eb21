/// The calls that answer with a path, for the sandbox without namespaces (redirect.h): what lies
/// below the root is told by the name that the program knows it by.

#include "sim/preload/call.h"
#include "sim/preload/redirect.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/types.h>

namespace {

char *shown(char *path) {
    if (path != nullptr)
        path[sim_shown_path(path, strlen(path))] = '\0';
    return path;
}

/// A link's target, read whole before it is cut to what the caller has room for.
template <class Read>
ssize_t shown_target(char *target, size_t size, const Read &read) {
    char whole[PATH_MAX];
    ssize_t length = read(whole, sizeof(whole));
    if (length <= 0)
        return length;
    length = static_cast<ssize_t>(sim_shown_path(whole, static_cast<size_t>(length)));
    if (static_cast<size_t>(length) > size)
        length = static_cast<ssize_t>(size);
    memcpy(target, whole, static_cast<size_t>(length));
    return length;
}

/// A name that the call completes: only its last part changes, so that goes back into the caller's.
template <class Make>
auto completed(char *name, const Make &make) {
    char path[PATH_MAX];
    const sim_redirected redirected(name);
    const char *wanted = redirected;
    const size_t length = strlen(wanted);
    strcpy(path, length < sizeof(path) ? wanted : "");
    const auto made = make(path);
    const char *last = strrchr(path, '/');
    char *own_last = strrchr(name, '/');
    strcpy(own_last != nullptr ? own_last + 1 : name, last != nullptr ? last + 1 : path);
    return made;
}

} // namespace

SIM_DEFINE(char *, getcwd, (char *path, size_t size)) {
    const auto next = sim_next<char *(*)(char *, size_t)>("getcwd");
    if (path == nullptr && size == 0)
        return shown(next(path, size));
    // The caller's room is for what it is told, which is shorter.
    char whole[PATH_MAX];
    if (next(whole, sizeof(whole)) == nullptr)
        return nullptr;
    if (strlen(shown(whole)) >= size) {
        errno = size == 0 ? EINVAL : ERANGE;
        return nullptr;
    }
    char *told = path != nullptr ? path : static_cast<char *>(malloc(size));
    return told != nullptr ? strcpy(told, whole) : nullptr;
}

SIM_DEFINE(char *, get_current_dir_name, ()) {
    return shown(sim_next<char *(*)()>("get_current_dir_name")());
}

SIM_DEFINE(char *, realpath, (const char *path, char *resolved)) {
    const auto next = sim_next<char *(*)(const char *, char *)>("realpath");
    return shown(next(sim_redirected(path), resolved));
}

SIM_DEFINE(char *, canonicalize_file_name, (const char *path)) {
    const auto next = sim_next<char *(*)(const char *)>("canonicalize_file_name");
    return shown(next(sim_redirected(path)));
}

SIM_DEFINE(ssize_t, readlink, (const char *path, char *target, size_t size)) {
    const auto next = sim_next<ssize_t (*)(const char *, char *, size_t)>("readlink");
    return shown_target(target, size, [&](char *whole, size_t room) {
        return next(sim_redirected(path), whole, room);
    });
}

SIM_DEFINE(ssize_t, readlinkat, (int at, const char *path, char *target, size_t size)) {
    const auto next = sim_next<ssize_t (*)(int, const char *, char *, size_t)>("readlinkat");
    return shown_target(target, size, [&](char *whole, size_t room) {
        return next(at, sim_redirected(path, at), whole, room);
    });
}

// Fortified programs call these; the size of the caller's buffer was checked by the compiler.
#ifdef __GLIBC__
SIM_DEFINE(char *, __getcwd_chk, (char *path, size_t size, size_t)) {
    return sim_getcwd(path, size);
}
SIM_DEFINE(char *, __realpath_chk, (const char *path, char *resolved, size_t)) {
    return sim_realpath(path, resolved);
}
SIM_DEFINE(ssize_t, __readlink_chk, (const char *path, char *target, size_t size, size_t)) {
    return sim_readlink(path, target, size);
}
SIM_DEFINE(ssize_t, __readlinkat_chk,
           (int at, const char *path, char *target, size_t size, size_t)) {
    return sim_readlinkat(at, path, target, size);
}
#endif

/// Defines one of the calls that complete a name, with what it takes besides.
#define SIM_COMPLETE(result, name, parameters, arguments)                                          \
    SIM_DEFINE(result, name, parameters) {                                                         \
        const auto next = sim_next<result(*) parameters>(#name);                                   \
        return completed(path_in, [&](char *path) { return next arguments; });                     \
    }

SIM_COMPLETE(int, mkstemp, (char *path_in), (path))
SIM_COMPLETE(int, mkostemp, (char *path_in, int flags), (path, flags))
SIM_COMPLETE(int, mkstemps, (char *path_in, int suffix), (path, suffix))
SIM_COMPLETE(int, mkostemps, (char *path_in, int suffix, int flags), (path, suffix, flags))
#ifdef __GLIBC__
SIM_COMPLETE(int, mkstemp64, (char *path_in), (path))
SIM_COMPLETE(int, mkostemp64, (char *path_in, int flags), (path, flags))
SIM_COMPLETE(int, mkstemps64, (char *path_in, int suffix), (path, suffix))
SIM_COMPLETE(int, mkostemps64, (char *path_in, int suffix, int flags), (path, suffix, flags))
#endif

SIM_DEFINE(char *, mkdtemp, (char *path_in)) {
    const auto next = sim_next<char *(*)(char *)>("mkdtemp");
    return completed(path_in, [&](char *path) { return next(path); }) != nullptr ? path_in
                                                                                 : nullptr;
}

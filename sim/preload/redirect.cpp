#include "sim/preload/redirect.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct text_piece {
    const char *start;
    size_t length;
};

/// Both variables as they were at the first look: `setenv` may move what `getenv` answered.
struct sandbox_settings {
    bool known;
    char root[PATH_MAX];
    char kept[4 * PATH_MAX];
};

sandbox_settings settings;

void copy_variable(const char *name, char *to, size_t size) {
    const char *value = getenv(name);
    if (value == nullptr)
        return;
    if (strlen(value) >= size) {
        fprintf(stderr, "%s is too long\n", name);
        abort();
    }
    strcpy(to, value);
}

/// Run when the library is loaded, and before that if somebody asks earlier: there is one thread
/// then. A sanitizer's runtime asks before there is an environment.
__attribute__((constructor)) void read_settings() {
    if (settings.known || environ == nullptr)
        return;
    copy_variable(SIM_SANDBOX_ROOT, settings.root, sizeof(settings.root));
    copy_variable(SIM_SANDBOX_KEPT, settings.kept, sizeof(settings.kept));
    settings.known = true;
}

/// @return whether the path is the folder, or below it
bool is_within(const char *path, text_piece folder) {
    return strncmp(path, folder.start, folder.length) == 0 &&
           (path[folder.length] == '/' || path[folder.length] == '\0');
}

bool is_kept(const char *path) {
    if (is_within(path, {settings.root, strlen(settings.root)}))
        return true;
    for (const char *folder = settings.kept; *folder != '\0';) {
        const size_t length = strcspn(folder, "\n");
        if (is_within(path, {folder, length}))
            return true;
        folder += length + (folder[length] != '\0' ? 1 : 0);
    }
    return false;
}

/// @param path  absolute and clean
bool is_redirected(const char *path) {
    const bool is_private = is_within(path, {"/tmp", 4}) || strncmp(path, "/dev/utm_", 9) == 0;
    return is_private && !is_kept(path);
}

/// An absolute path without ".", ".." and doubled slashes, made piece by piece. Links are not
/// looked at: it is only good for telling whether a path leads into the sandbox.
struct clean_path {
    char text[PATH_MAX] = "";
    size_t length = 0;
    bool fits = true;

    void add(const char *path) {
        while (*path != '\0') {
            const size_t piece = strcspn(path, "/");
            add_piece({path, piece});
            path += piece + (path[piece] == '/' ? 1 : 0);
        }
    }

    const char *get() const { return length > 0 ? text : "/"; }

private:
    void add_piece(text_piece piece) {
        if (piece.length == 0 || (piece.length == 1 && piece.start[0] == '.'))
            return;
        if (piece.length == 2 && strncmp(piece.start, "..", 2) == 0)
            return leave();
        if (length + 1 + piece.length >= sizeof(text)) {
            fits = false;
            return;
        }
        text[length] = '/';
        memcpy(text + length + 1, piece.start, piece.length);
        length += 1 + piece.length;
        text[length] = '\0';
    }

    void leave() {
        while (length > 0 && text[--length] != '/') {
        }
        text[length] = '\0';
    }
};

/// Starts a relative path.
/// @return whether the working directory is below the root
bool add_working_directory(clean_path *path) {
    char directory[PATH_MAX];
    // The system call itself: the library's own call answers what a program is meant to see.
    const long size = syscall(SYS_getcwd, directory, sizeof(directory));
    if (size <= 0)
        return false;
    const size_t length = static_cast<size_t>(size) - 1;
    const size_t shown = sim_shown_path(directory, length);
    directory[shown] = '\0';
    path->add(directory);
    return shown != length;
}

} // namespace

sim_redirected::sim_redirected(const char *path, int directory) : chosen_(path) {
    read_settings();
    if (settings.root[0] == '\0' || path == nullptr || path[0] == '\0')
        return;
    const bool is_relative = path[0] != '/';
    // From another directory than the working one nobody reaches the sandbox by accident.
    if (is_relative && directory != AT_FDCWD)
        return;
    clean_path clean;
    const bool is_inside = is_relative && add_working_directory(&clean);
    clean.add(path);
    if (!clean.fits)
        return;
    const bool is_private = is_redirected(clean.get());
    // From inside, a relative path that stays inside is right as it is; one that leaves is not.
    if (is_private == is_inside)
        return;
    const bool ends_with_slash = path[strlen(path) - 1] == '/';
    const int length = snprintf(text_, sizeof(text_), "%s%s%s", is_private ? settings.root : "",
                                clean.get(), ends_with_slash ? "/" : "");
    if (static_cast<size_t>(length) >= sizeof(text_))
        text_[0] = '\0'; // too long for the system: no such file
    chosen_ = text_;
}

const char *sim_sandbox_root() {
    read_settings();
    return settings.root;
}

size_t sim_shown_path(char *path, size_t length) {
    read_settings();
    const size_t root = strlen(settings.root);
    const bool is_below =
        root > 0 && length > root && memcmp(path, settings.root, root) == 0 && path[root] == '/';
    if (!is_below)
        return length;
    memmove(path, path + root, length - root);
    return length - root;
}

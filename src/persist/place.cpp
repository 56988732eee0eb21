#include "persist/place.h"

#include "core/own_folder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// Links in a row, as the kernel counts them.
constexpr int hops_max = 40;

bool fail(int error) {
    errno = error;
    return false;
}

/// What is still to be walked.
struct walk_t {
    fd_guard from; ///< what a relative path begins at; none for the working directory
    char path[PATH_MAX];

    int start() const { return from.get() < 0 ? AT_FDCWD : from.get(); }
};

bool is_a_name(const char *name) {
    return name[0] != '\0' && strcmp(name, ".") != 0 && strcmp(name, "..") != 0;
}

/// Opens one of our own folders.
bool open_own(own_folder_t *own, fd_guard *folder) {
    folder->reset(utm_app_open_own_folder(*own));
    const int error = folder->get() < 0 ? errno : 0;
    utm_app_report_own_folder(own, error);
    return error == 0 || fail(error);
}

own_folder_t *const own_folders[] = {&utm_app_log_folder, &utm_app_usage_folder};

/// Begins a path that names one of our own folders in that folder, so that nobody can put another
/// one in its place between the look at it and its use.
bool begin_in_own_folder(walk_t *walk) {
    for (own_folder_t *own : own_folders) {
        const size_t length = strlen(own->path);
        if (strncmp(walk->path, own->path, length) != 0 || walk->path[length] != '/')
            continue;
        const char *rest = walk->path + length + strspn(walk->path + length, "/");
        memmove(walk->path, rest, strlen(rest) + 1);
        return open_own(own, &walk->from);
    }
    return true;
}

/// Tells our own folders from others, by whatever path somebody came.
bool recognize(place_t *place) {
    struct stat folder = {};
    place->is_ours = false;
    if (fstat(place->folder.get(), &folder) != 0)
        return false;
    for (own_folder_t *own : own_folders) {
        struct stat status = {};
        if (stat(own->path, &status) != 0 || status.st_dev != folder.st_dev ||
            status.st_ino != folder.st_ino)
            continue;
        fd_guard checked;
        if (!open_own(own, &checked))
            return false;
        place->is_ours = true;
    }
    return true;
}

/// Opens the folder that the path names and takes over its last part.
bool enter(walk_t *walk, place_t *place) {
    if (!begin_in_own_folder(walk))
        return false;
    char *slash = strrchr(walk->path, '/');
    char *name = slash == nullptr ? walk->path : slash + 1;
    if (!is_a_name(name))
        return fail(EISDIR);
    if (strlen(name) >= sizeof(place->name))
        return fail(ENAMETOOLONG);
    strcpy(place->name, name);
    // The full stop keeps a link to the folder from being the last part of its path: the kernel
    // protects only those.
    strcpy(name, ".");
    place->folder.reset(openat(walk->start(), walk->path, O_PATH | O_DIRECTORY | O_CLOEXEC));
    return place->folder.get() >= 0 && recognize(place);
}

/// Everybody may put a link into such a folder, and only its owner may be believed.
bool may_follow(const struct stat &link, const struct stat &folder) {
    constexpr mode_t shared = S_ISVTX | S_IWOTH;
    return (folder.st_mode & shared) != shared || link.st_uid == geteuid() ||
           link.st_uid == folder.st_uid;
}

/// Looks at what has the place's name.
/// @param link  out: open when it is a link
bool look(const place_t &place, fd_guard *link) {
    link->reset(openat(place.folder.get(), place.name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    struct stat folder = {};
    if (link->get() < 0)
        return errno == ENOENT;
    if (fstat(link->get(), &status) != 0 || fstat(place.folder.get(), &folder) != 0)
        return false;
    if (!S_ISLNK(status.st_mode)) {
        link->reset(-1);
        return true;
    }
    if (place.is_ours)
        return fail(ELOOP);
    return may_follow(status, folder) || fail(EACCES);
}

/// Goes on with a link's target, from the link's folder.
bool follow(const fd_guard &link, place_t *place, walk_t *walk) {
    const ssize_t length = readlinkat(link.get(), "", walk->path, sizeof(walk->path));
    if (length < 0)
        return false;
    if (static_cast<size_t>(length) == sizeof(walk->path))
        return fail(ENAMETOOLONG);
    walk->path[length] = '\0';
    walk->from.reset(place->folder.release());
    return true;
}

} // namespace

bool utm_app_find_place(const char *path, place_t *place) {
    walk_t walk;
    if (strlen(path) >= sizeof(walk.path))
        return fail(ENAMETOOLONG);
    strcpy(walk.path, path);
    for (int hop = 0; hop <= hops_max; ++hop) {
        fd_guard link;
        if (!enter(&walk, place) || !look(*place, &link))
            return false;
        if (link.get() < 0)
            return true;
        if (!follow(link, place, &walk))
            return false;
    }
    return fail(ELOOP);
}

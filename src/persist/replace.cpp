#include "persist/replace.h"

#include "persist/place.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace {

constexpr mode_t usage_file_mode = 0644;
/// Until the owner of the old file is the new one's too, nobody else may look.
constexpr mode_t private_mode = 0600;
constexpr mode_t permission_bits = 0777;

enum class outcome_t {
    written,
    failed,
    refused, ///< the folder takes no new file, or not in the old one's place
};

/// Room that is lacking is no refusal: to write into the old file would destroy it.
outcome_t outcome_of_error() {
    switch (errno) {
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY: // the file is a mount point
        return outcome_t::refused;
    default:
        return outcome_t::failed;
    }
}

bool is_same_file(const struct stat &a, const struct stat &b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// What a new file is called until it is whole.
struct new_name_t {
    char text[32];
};

/// The usual name is always the same: what a killed export has left is in its way and goes first,
/// so leftovers do not pile up. Only a folder that somebody has laid there does not go, and then
/// the name is one that nobody can guess.
/// @return false with `errno` set when the folder takes no other name either
bool take_new_name(int folder, const char *old_name, new_name_t *name) {
    const bool is_taken = strcmp(old_name, usage_file_new_name) == 0;
    strcpy(name->text, is_taken ? usage_file_other_new_name : usage_file_new_name);
    if (unlinkat(folder, name->text, 0) == 0 || errno == ENOENT)
        return true;
    if (errno != EISDIR)
        return false;
    uint64_t random = 0;
    if (getrandom(&random, sizeof(random), GRND_NONBLOCK) != sizeof(random))
        return false;
    snprintf(name->text, sizeof(name->text), "%s.%016" PRIx64, usage_file_new_name, random);
    return true;
}

/// @return whether the name still leads to the file: another daemon may have taken it meanwhile
bool is_named(int folder, const char *name, int fd) {
    struct stat file = {};
    struct stat named = {};
    return fstat(fd, &file) == 0 && fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           is_same_file(file, named);
}

/// Gives a file the owner and the mode of another one.
bool take_over(int fd, const struct stat &old) {
    struct stat now = {};
    if (fstat(fd, &now) != 0)
        return false;
    const bool is_owned = now.st_uid == old.st_uid && now.st_gid == old.st_gid;
    return (is_owned || fchown(fd, old.st_uid, old.st_gid) == 0) &&
           fchmod(fd, old.st_mode & permission_bits) == 0;
}

bool write_and_flush(int fd, const usage_text_t &text) {
    return usage_text_write(text, fd) && fsync(fd) == 0;
}

/// @param old  null when there is no file yet
outcome_t fill(int fd, const struct stat *old, const usage_text_t &text) {
    // Whoever may not give the new file away leaves the old one where it is.
    if (old != nullptr && !take_over(fd, *old))
        return outcome_t::refused;
    return write_and_flush(fd, text) ? outcome_t::written : outcome_t::failed;
}

outcome_t write_new(const place_t &place, const struct stat *old, const usage_text_t &text) {
    const int folder = place.folder.get();
    new_name_t name;
    if (!take_new_name(folder, place.name, &name))
        return outcome_of_error();
    const fd_guard file(openat(folder, name.text,
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                               old == nullptr ? usage_file_mode : private_mode));
    if (file.get() < 0)
        return outcome_of_error();
    outcome_t outcome = fill(file.get(), old, text);
    if (outcome == outcome_t::written && !is_named(folder, name.text, file.get()))
        return outcome_t::failed;
    if (outcome == outcome_t::written && renameat(folder, name.text, folder, place.name) != 0)
        outcome = outcome_of_error();
    if (outcome != outcome_t::written)
        unlinkat(folder, name.text, 0);
    return outcome;
}

bool overwrite(const place_t &place, const struct stat &old, const usage_text_t &text) {
    constexpr int flags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const fd_guard file(openat(place.folder.get(), place.name, flags));
    struct stat now = {};
    return file.get() >= 0 && fstat(file.get(), &now) == 0 && S_ISREG(now.st_mode) &&
           is_same_file(now, old) && ftruncate(file.get(), 0) == 0 &&
           write_and_flush(file.get(), text);
}

bool is_device(const struct stat &status) {
    return S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

/// Looks before it opens, because opening may already do something, and once more afterwards,
/// because something else may have taken the device's place.
bool write_to_device(const char *path, const struct stat &found, const usage_text_t &text) {
    if (!is_device(found))
        return false;
    const fd_guard device(open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat now = {};
    return device.get() >= 0 && fstat(device.get(), &now) == 0 && is_device(now) &&
           usage_text_write(text, device.get());
}

/// @param seen  what the path led to a moment ago, null for nothing
bool replace_at(const place_t &place, const struct stat *seen, const usage_text_t &text) {
    struct stat old = {};
    const bool exists = fstatat(place.folder.get(), place.name, &old, AT_SYMLINK_NOFOLLOW) == 0;
    if (exists ? !S_ISREG(old.st_mode) : errno != ENOENT)
        return false;
    if (seen != nullptr && (!exists || !is_same_file(*seen, old)))
        return false;
    const outcome_t outcome = write_new(place, exists ? &old : nullptr, text);
    if (outcome == outcome_t::refused && exists)
        return overwrite(place, old, text);
    return outcome == outcome_t::written;
}

} // namespace

bool utm_app_replace_usage_file(const char *path, const usage_text_t &text) {
    place_t place;
    if (!utm_app_find_place(path, &place))
        return false;
    struct stat found = {};
    const bool exists = stat(path, &found) == 0;
    if (!exists && errno != ENOENT)
        return false;
    if (exists && !S_ISREG(found.st_mode))
        return !place.is_ours && write_to_device(path, found, text);
    return replace_at(place, exists ? &found : nullptr, text);
}

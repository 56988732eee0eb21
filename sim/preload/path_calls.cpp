/// The calls that take a path, for the sandbox without namespaces (redirect.h): each leads its
/// path and passes everything else on.
///
/// Left alone: what only a privileged program calls (mount, chroot, swapon), and `dlopen`, which
/// looks at who calls it.

#include "sim/preload/call.h"
#include "sim/preload/redirect.h"

#include <cstdio>
#include <dirent.h>
#include <sys/time.h>
#include <sys/types.h>
#include <utime.h>

using to = sim_redirected;

// ---- Opening. A mode that nobody gave is passed on too, and read by nobody. ------------------
SIM_CALL_64(int, open, (const char *path, int flags, mode_t mode), (to(path), flags, mode))
SIM_CALL_64(int, openat, (int at, const char *path, int flags, mode_t mode),
            (at, to(path, at), flags, mode))
SIM_CALL_64(int, creat, (const char *path, mode_t mode), (to(path), mode))
SIM_CALL_64(FILE *, fopen, (const char *path, const char *mode), (to(path), mode))
SIM_CALL_64(FILE *, freopen, (const char *path, const char *mode, FILE *file),
            (to(path), mode, file))
SIM_CALL(DIR *, opendir, (const char *path), (to(path)))
SIM_CALL_64(int, truncate, (const char *path, off_t size), (to(path), size))

// ---- Looking -----------------------------------------------------------------------------
SIM_CALL(int, access, (const char *path, int mode), (to(path), mode))
SIM_CALL(int, eaccess, (const char *path, int mode), (to(path), mode))
SIM_CALL(int, euidaccess, (const char *path, int mode), (to(path), mode))
SIM_CALL(int, faccessat, (int at, const char *path, int mode, int flags),
         (at, to(path, at), mode, flags))
SIM_CALL_64(int, stat, (const char *path, void *status), (to(path), status))
SIM_CALL_64(int, lstat, (const char *path, void *status), (to(path), status))
SIM_CALL_64(int, fstatat, (int at, const char *path, void *status, int flags),
            (at, to(path, at), status, flags))
SIM_CALL(int, statx, (int at, const char *path, int flags, unsigned mask, void *status),
         (at, to(path, at), flags, mask, status))
SIM_CALL_64(int, statfs, (const char *path, void *status), (to(path), status))
SIM_CALL_64(int, statvfs, (const char *path, void *status), (to(path), status))
SIM_CALL(long, pathconf, (const char *path, int name), (to(path), name))
SIM_CALL(ssize_t, getxattr, (const char *path, const char *name, void *value, size_t size),
         (to(path), name, value, size))
SIM_CALL(ssize_t, lgetxattr, (const char *path, const char *name, void *value, size_t size),
         (to(path), name, value, size))
SIM_CALL(ssize_t, listxattr, (const char *path, char *list, size_t size), (to(path), list, size))
SIM_CALL(ssize_t, llistxattr, (const char *path, char *list, size_t size), (to(path), list, size))
SIM_CALL(int, inotify_add_watch, (int fd, const char *path, unsigned mask), (fd, to(path), mask))
SIM_CALL_64(int, ftw, (const char *path, void *visit, int descriptors),
            (to(path), visit, descriptors))
SIM_CALL_64(int, nftw, (const char *path, void *visit, int descriptors, int flags),
            (to(path), visit, descriptors, flags))
SIM_CALL_64(int, scandir, (const char *path, dirent ***entries, void *filter, void *order),
            (to(path), entries, filter, order))
SIM_CALL_64(int, scandirat,
            (int at, const char *path, dirent ***entries, void *filter, void *order),
            (at, to(path, at), entries, filter, order))

// ---- Changing ------------------------------------------------------------------------------
SIM_CALL(int, mkdir, (const char *path, mode_t mode), (to(path), mode))
SIM_CALL(int, mkdirat, (int at, const char *path, mode_t mode), (at, to(path, at), mode))
SIM_CALL(int, mkfifo, (const char *path, mode_t mode), (to(path), mode))
SIM_CALL(int, mkfifoat, (int at, const char *path, mode_t mode), (at, to(path, at), mode))
SIM_CALL(int, mknod, (const char *path, mode_t mode, dev_t device), (to(path), mode, device))
SIM_CALL(int, mknodat, (int at, const char *path, mode_t mode, dev_t device),
         (at, to(path, at), mode, device))
SIM_CALL(int, rmdir, (const char *path), (to(path)))
SIM_CALL(int, unlink, (const char *path), (to(path)))
SIM_CALL(int, unlinkat, (int at, const char *path, int flags), (at, to(path, at), flags))
SIM_CALL(int, remove, (const char *path), (to(path)))
SIM_CALL(int, rename, (const char *old, const char *path), (to(old), to(path)))
SIM_CALL(int, renameat, (int old_at, const char *old, int at, const char *path),
         (old_at, to(old, old_at), at, to(path, at)))
SIM_CALL(int, renameat2, (int old_at, const char *old, int at, const char *path, unsigned flags),
         (old_at, to(old, old_at), at, to(path, at), flags))
SIM_CALL(int, link, (const char *old, const char *path), (to(old), to(path)))
SIM_CALL(int, linkat, (int old_at, const char *old, int at, const char *path, int flags),
         (old_at, to(old, old_at), at, to(path, at), flags))
SIM_CALL(int, chmod, (const char *path, mode_t mode), (to(path), mode))
SIM_CALL(int, lchmod, (const char *path, mode_t mode), (to(path), mode))
SIM_CALL(int, fchmodat, (int at, const char *path, mode_t mode, int flags),
         (at, to(path, at), mode, flags))
SIM_CALL(int, chown, (const char *path, uid_t user, gid_t group), (to(path), user, group))
SIM_CALL(int, lchown, (const char *path, uid_t user, gid_t group), (to(path), user, group))
SIM_CALL(int, fchownat, (int at, const char *path, uid_t user, gid_t group, int flags),
         (at, to(path, at), user, group, flags))
SIM_CALL(int, utime, (const char *path, const utimbuf *times), (to(path), times))
SIM_CALL(int, utimes, (const char *path, const timeval *times), (to(path), times))
SIM_CALL(int, lutimes, (const char *path, const timeval *times), (to(path), times))
SIM_CALL(int, futimesat, (int at, const char *path, const timeval *times),
         (at, to(path, at), times))
SIM_CALL(int, utimensat, (int at, const char *path, const timespec *times, int flags),
         (at, to(path, at), times, flags))
SIM_CALL(int, setxattr,
         (const char *path, const char *name, const void *value, size_t size, int flags),
         (to(path), name, value, size, flags))
SIM_CALL(int, lsetxattr,
         (const char *path, const char *name, const void *value, size_t size, int flags),
         (to(path), name, value, size, flags))
SIM_CALL(int, removexattr, (const char *path, const char *name), (to(path), name))
SIM_CALL(int, lremovexattr, (const char *path, const char *name), (to(path), name))
SIM_CALL(int, chdir, (const char *path), (to(path)))

// ---- Links: a target is followed by the kernel itself, a relative one from the link's folder ---
static constexpr int no_directory = -1;
SIM_CALL(int, symlink, (const char *target, const char *path), (to(target, no_directory), to(path)))
SIM_CALL(int, symlinkat, (const char *target, int at, const char *path),
         (to(target, no_directory), at, to(path, at)))

// ---- What glibc calls by other names: fortified programs, and those built against an old one --
#ifdef __GLIBC__
SIM_CALL(int, __open_2, (const char *path, int flags), (to(path), flags))
SIM_CALL(int, __open64_2, (const char *path, int flags), (to(path), flags))
SIM_CALL(int, __openat_2, (int at, const char *path, int flags), (at, to(path, at), flags))
SIM_CALL(int, __openat64_2, (int at, const char *path, int flags), (at, to(path, at), flags))
SIM_CALL_64(int, __xstat, (int version, const char *path, void *status),
            (version, to(path), status))
SIM_CALL_64(int, __lxstat, (int version, const char *path, void *status),
            (version, to(path), status))
SIM_CALL_64(int, __fxstatat, (int version, int at, const char *path, void *status, int flags),
            (version, at, to(path, at), status, flags))
SIM_CALL(int, __xmknod, (int version, const char *path, mode_t mode, dev_t *device),
         (version, to(path), mode, device))
SIM_CALL(int, __xmknodat, (int version, int at, const char *path, mode_t mode, dev_t *device),
         (version, at, to(path, at), mode, device))
#endif

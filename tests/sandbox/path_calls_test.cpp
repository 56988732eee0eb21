/// Every call that takes a path acts on the private file, and never on the machine's.
///
/// For each call there is, in the sandbox alone, what it needs: an unredirected call would find
/// nothing, or find in its way what is on the machine.

#include "sim/harness/files.h"
#include "tests/sandbox/support.h"

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <ftw.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

namespace {

namespace fs = std::filesystem;

enum class need { nothing, file, folder, link };

/// @param name  the call's
using attempt = std::function<bool(const char *name, const char *path)>;

struct path_call {
    const char *name;
    need needs;
    attempt works;
};

void PrintTo(const path_call &row, std::ostream *out) {
    *out << row.name;
}

bool went_well(long result) {
    if (result > STDERR_FILENO)
        close(static_cast<int>(result));
    return result >= 0;
}

bool went_well(int result) {
    return went_well(long{result});
}

bool went_well(FILE *file) {
    return file != nullptr && fclose(file) == 0;
}

bool went_well(DIR *folder) {
    return folder != nullptr && closedir(folder) == 0;
}

/// @return an attempt with the path as first argument, and these behind it
template <class Result, class... More>
attempt path_and(More... more) {
    return [=](const char *name, const char *path) {
        return went_well(call<Result(const char *, More...)>(name)(path, more...));
    };
}

/// The same with the working directory's descriptor before it.
template <class Result, class... More>
attempt at_path_and(More... more) {
    return [=](const char *name, const char *path) {
        return went_well(call<Result(int, const char *, More...)>(name)(AT_FDCWD, path, more...));
    };
}

/// The same with the version of old programs' structs before it.
template <class Result, class... More>
attempt version_path_and(More... more) {
    return [=](const char *name, const char *path) {
        return went_well(call<Result(int, const char *, More...)>(name)(1, path, more...));
    };
}

/// Has room for any of the structs that these calls fill.
alignas(16) char answer[4096];
void *const filled = answer;

constexpr int make = O_CREAT | O_EXCL | O_WRONLY;
constexpr mode_t mode = 0640;
constexpr dev_t no_device = 0;
dev_t own_no_device = 0;
constexpr utimbuf new_times = {1'000'000, 1'000'000};
constexpr timeval new_timevals[2] = {{1'000'000, 0}, {1'000'000, 0}};
constexpr timespec new_timespecs[2] = {{1'000'000, 0}, {1'000'000, 0}};
const uid_t user = getuid();
const gid_t group = getgid();

/// With a stream that nobody has to give back: libc keeps the memory of one that it cannot reopen.
bool reopens(const char *name, const char *path) {
    const bool is_open =
        call<FILE *(const char *, const char *, FILE *)>(name)(path, "r", stdin) != nullptr;
    const int reason = errno;
    EXPECT_NE(freopen("/dev/null", "r", stdin), nullptr);
    errno = reason;
    return is_open;
}

size_t visited;
int visit(const char *, const void *, int) {
    ++visited;
    return 0;
}

/// ftw and nftw, with libc's own visitor types left aside.
template <class... More>
attempt walks(More... more) {
    return [=](const char *name, const char *path) {
        visited = 0;
        const int result =
            call<int(const char *, int (*)(const char *, const void *, int), More...)>(name)(
                path, visit, more...);
        return result == 0 && visited == 1;
    };
}

bool frees(dirent **entries, int count) {
    for (int i = 0; i < count; ++i)
        free(entries[i]);
    free(entries);
    return count == 2; // the folder's own two names
}

bool scans(const char *name, const char *path) {
    dirent **entries = nullptr;
    const int count =
        call<int(const char *, dirent ***, void *, void *)>(name)(path, &entries, nullptr, nullptr);
    return count >= 0 && frees(entries, count);
}

bool scans_at(const char *name, const char *path) {
    dirent **entries = nullptr;
    const int count = call<int(int, const char *, dirent ***, void *, void *)>(name)(
        AT_FDCWD, path, &entries, nullptr, nullptr);
    return count >= 0 && frees(entries, count);
}

bool watches(const char *name, const char *path) {
    const int fd = inotify_init();
    const bool is_watched = call<int(int, const char *, unsigned)>(name)(fd, path, IN_MODIFY) >= 0;
    close(fd);
    return is_watched;
}

/// A file system without extended attributes has to be reached all the same.
bool reached(ssize_t result) {
    return result >= 0 || errno == ENODATA || errno == EOPNOTSUPP || errno == EPERM;
}

bool reads_attribute(const char *name, const char *path) {
    return reached(call<ssize_t(const char *, const char *, void *, size_t)>(name)(
        path, "user.it", answer, sizeof(answer)));
}

bool lists_attributes(const char *name, const char *path) {
    return reached(call<ssize_t(const char *, char *, size_t)>(name)(path, answer, sizeof(answer)));
}

bool sets_attribute(const char *name, const char *path) {
    return reached(call<int(const char *, const char *, const void *, size_t, int)>(name)(
        path, "user.it", "1", 1, 0));
}

bool removes_attribute(const char *name, const char *path) {
    return reached(call<int(const char *, const char *)>(name)(path, "user.it"));
}

bool changes_mode_of_link(const char *name, const char *path) {
    return call<int(const char *, mode_t)>(name)(path, mode) == 0 || errno == EOPNOTSUPP;
}

/// A second name in the same folder, for calls that take two.
std::string second(const char *path) {
    return std::string(path) + ".second";
}

bool leads_to_second(int result, const char *path) {
    return result == 0 && exists(in_private(second(path))) && !exists(on_machine(second(path)));
}

bool takes_second(const char *name, const char *path) {
    return leads_to_second(call<int(const char *, const char *)>(name)(path, second(path).c_str()),
                           path);
}

/// @param flags  0, or nothing for a call that takes none: a further argument is read by nobody
bool takes_second_at(const char *name, const char *path) {
    return leads_to_second(call<int(int, const char *, int, const char *, unsigned)>(name)(
                               AT_FDCWD, path, AT_FDCWD, second(path).c_str(), 0),
                           path);
}

bool links_at(const char *name, const char *path) {
    return call<int(const char *, int, const char *)>(name)("/nowhere", AT_FDCWD, path) == 0;
}

bool links_to(const char *name, const char *path) {
    return call<int(const char *, const char *)>(name)("/nowhere", path) == 0;
}

bool enters(const char *name, const char *path) {
    return call<int(const char *)>(name)(path) == 0 && chdir("/") == 0;
}

using text = const char *;
const std::vector<path_call> path_calls = {
    {"__fxstatat", need::file,
     [](text name, text path) {
         return call<int(int, int, text, void *, int)>(name)(1, AT_FDCWD, path, answer, 0) == 0;
     }},
    {"__fxstatat64", need::file,
     [](text name, text path) {
         return call<int(int, int, text, void *, int)>(name)(1, AT_FDCWD, path, answer, 0) == 0;
     }},
    {"__lxstat", need::link, version_path_and<int>(filled)},
    {"__lxstat64", need::link, version_path_and<int>(filled)},
    {"__open64_2", need::file, path_and<int>(O_RDWR)},
    {"__open_2", need::file, path_and<int>(O_RDWR)},
    {"__openat64_2", need::file, at_path_and<int>(O_RDWR)},
    {"__openat_2", need::file, at_path_and<int>(O_RDWR)},
    {"__xmknod", need::nothing,
     [](text name, text path) {
         return call<int(int, text, mode_t, dev_t *)>(name)(0, path, S_IFIFO | mode,
                                                            &own_no_device) == 0;
     }},
    {"__xmknodat", need::nothing,
     [](text name, text path) {
         return call<int(int, int, text, mode_t, dev_t *)>(name)(0, AT_FDCWD, path, S_IFIFO | mode,
                                                                 &own_no_device) == 0;
     }},
    {"__xstat", need::file, version_path_and<int>(filled)},
    {"__xstat64", need::file, version_path_and<int>(filled)},
    {"access", need::file, path_and<int>(R_OK)},
    {"chdir", need::folder, enters},
    {"chmod", need::file, path_and<int>(mode)},
    {"chown", need::file, path_and<int>(user, group)},
    {"creat", need::nothing, path_and<int>(mode)},
    {"creat64", need::nothing, path_and<int>(mode)},
    {"eaccess", need::file, path_and<int>(R_OK)},
    {"euidaccess", need::file, path_and<int>(R_OK)},
    {"faccessat", need::file, at_path_and<int>(R_OK, 0)},
    {"fchmodat", need::file, at_path_and<int>(mode, 0)},
    {"fchownat", need::file, at_path_and<int>(user, group, 0)},
    {"fopen", need::file, path_and<FILE *>("r+")},
    {"fopen64", need::file, path_and<FILE *>("r+")},
    {"freopen", need::file, reopens},
    {"freopen64", need::file, reopens},
    {"fstatat", need::file, at_path_and<int>(filled, 0)},
    {"fstatat64", need::file, at_path_and<int>(filled, 0)},
    {"ftw", need::folder, walks(8)},
    {"ftw64", need::folder, walks(8)},
    {"futimesat", need::file, at_path_and<int>(+new_timevals)},
    {"getxattr", need::file, reads_attribute},
    {"inotify_add_watch", need::file, watches},
    {"lchmod", need::link, changes_mode_of_link},
    {"lchown", need::link, path_and<int>(user, group)},
    {"lgetxattr", need::link, reads_attribute},
    {"link", need::file, takes_second},
    {"linkat", need::file, takes_second_at},
    {"listxattr", need::file, lists_attributes},
    {"llistxattr", need::link, lists_attributes},
    {"lremovexattr", need::file, removes_attribute},
    {"lsetxattr", need::file, sets_attribute},
    {"lstat", need::link, path_and<int>(filled)},
    {"lstat64", need::link, path_and<int>(filled)},
    {"lutimes", need::link, path_and<int>(+new_timevals)},
    {"mkdir", need::nothing, path_and<int>(mode)},
    {"mkdirat", need::nothing, at_path_and<int>(mode)},
    {"mkfifo", need::nothing, path_and<int>(mode)},
    {"mkfifoat", need::nothing, at_path_and<int>(mode)},
    {"mknod", need::nothing, path_and<int>(S_IFIFO | mode, no_device)},
    {"mknodat", need::nothing, at_path_and<int>(S_IFIFO | mode, no_device)},
    {"nftw", need::folder, walks(8, 0)},
    {"nftw64", need::folder, walks(8, 0)},
    {"open", need::nothing, path_and<int>(make, mode)},
    {"open64", need::nothing, path_and<int>(make, mode)},
    {"openat", need::nothing, at_path_and<int>(make, mode)},
    {"openat64", need::nothing, at_path_and<int>(make, mode)},
    {"opendir", need::folder, path_and<DIR *>()},
    {"pathconf", need::file,
     [](text name, text path) { return call<long(text, int)>(name)(path, _PC_NAME_MAX) > 0; }},
    {"remove", need::file, path_and<int>()},
    {"removexattr", need::file, removes_attribute},
    {"rename", need::file, takes_second},
    {"renameat", need::file, takes_second_at},
    {"renameat2", need::file, takes_second_at},
    {"rmdir", need::folder, path_and<int>()},
    {"scandir", need::folder, scans},
    {"scandir64", need::folder, scans},
    {"scandirat", need::folder, scans_at},
    {"scandirat64", need::folder, scans_at},
    {"setxattr", need::file, sets_attribute},
    {"stat", need::file, path_and<int>(filled)},
    {"stat64", need::file, path_and<int>(filled)},
    {"statfs", need::file, path_and<int>(filled)},
    {"statfs64", need::file, path_and<int>(filled)},
    {"statvfs", need::file, path_and<int>(filled)},
    {"statvfs64", need::file, path_and<int>(filled)},
    {"statx", need::file, at_path_and<int>(0, 0U, filled)},
    {"symlink", need::nothing, links_to},
    {"symlinkat", need::nothing, links_at},
    {"truncate", need::file, path_and<int>(off_t{0})},
    {"truncate64", need::file, path_and<int>(off_t{0})},
    {"unlink", need::file, path_and<int>()},
    {"unlinkat", need::file, at_path_and<int>(0)},
    {"utime", need::file, path_and<int>(&new_times)},
    {"utimensat", need::file, at_path_and<int>(+new_timespecs, 0)},
    {"utimes", need::file, path_and<int>(+new_timevals)},
};

void provide(need what, const std::string &path) {
    if (what == need::file) {
        ASSERT_TRUE(sim_write_file(path, "text"));
    }
    if (what == need::folder)
        fs::create_directory(path);
    if (what == need::link)
        fs::create_symlink("/nowhere", path);
}

class PathCalls : public testing::TestWithParam<path_call> {};

INSTANTIATE_TEST_SUITE_P(Redirected, PathCalls, testing::ValuesIn(path_calls),
                         [](const auto &row) { return std::string("Of_") + row.param.name; });

} // namespace

const std::set<std::string> &path_call_names() {
    static const std::set<std::string> names = [] {
        std::set<std::string> all;
        for (const path_call &row : path_calls)
            all.insert(row.name);
        return all;
    }();
    return names;
}

TEST_P(PathCalls, ActOnThePrivateFile) {
    const place here;
    provide(GetParam().needs, in_private(here.path));
    // A file is in the way of a call that makes something.
    if (GetParam().needs == need::nothing)
        provide(need::file, on_machine(here.path));
    const std::string machine_before = described(on_machine(here.path));

    EXPECT_TRUE(GetParam().works(GetParam().name, here.path.c_str())) << strerror(errno);

    EXPECT_EQ(described(on_machine(here.path)), machine_before);
    if (GetParam().needs == need::nothing) {
        EXPECT_TRUE(exists(in_private(here.path)));
    }
}

TEST_P(PathCalls, DoNotReachTheMachinesFile) {
    if (GetParam().needs == need::nothing)
        return;
    const place here;
    provide(GetParam().needs, on_machine(here.path));
    const std::string machine_before = described(on_machine(here.path));

    EXPECT_FALSE(GetParam().works(GetParam().name, here.path.c_str()));
    EXPECT_EQ(errno, ENOENT);

    EXPECT_EQ(described(on_machine(here.path)), machine_before);
}

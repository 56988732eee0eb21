/// What programs are told: the sandbox's names, never the private folder's.

#include "sim/harness/files.h"
#include "tests/sandbox/support.h"

#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string freed(char *text) {
    const std::string copy = text != nullptr ? text : strerror(errno);
    free(text);
    return copy;
}

/// In a working directory of /tmp for as long as it lives.
struct working_directory {
    explicit working_directory(const std::string &path) { EXPECT_EQ(chdir(path.c_str()), 0); }
    ~working_directory() { EXPECT_EQ(chdir("/"), 0); }
};

/// One of the calls that complete a name ending in XXXXXX.
struct completing_call {
    const char *name;
    const char *suffix;
    std::function<int(const char *name, char *path)> make;
};

int make_plain(const char *name, char *path) {
    return call<int(char *)>(name)(path);
}
int make_with_flags(const char *name, char *path) {
    return call<int(char *, int)>(name)(path, O_APPEND);
}
int make_with_suffix(const char *name, char *path) {
    return call<int(char *, int)>(name)(path, 4);
}
int make_with_both(const char *name, char *path) {
    return call<int(char *, int, int)>(name)(path, 4, O_APPEND);
}
int make_folder(const char *name, char *path) {
    return call<char *(char *)>(name)(path) == path ? STDOUT_FILENO : -1;
}

const std::vector<completing_call> completing_calls = {
    {"mkstemp", "", make_plain},
    {"mkstemp64", "", make_plain},
    {"mkostemp", "", make_with_flags},
    {"mkostemp64", "", make_with_flags},
    {"mkstemps", ".txt", make_with_suffix},
    {"mkstemps64", ".txt", make_with_suffix},
    {"mkostemps", ".txt", make_with_both},
    {"mkostemps64", ".txt", make_with_both},
    {"mkdtemp", "", make_folder},
};

/// @return the name that was made, or why not
std::string completed(const completing_call &row, const std::string &start) {
    std::string path = start + "XXXXXX" + row.suffix;
    const int fd = row.make(row.name, path.data());
    if (fd < 0)
        return strerror(errno);
    if (fd > STDERR_FILENO)
        close(fd);
    return path;
}

void expect_made_in_private(const std::string &path, const std::string &start) {
    EXPECT_EQ(path.rfind(start, 0), 0U) << path;
    EXPECT_EQ(path.find("XXXXXX"), std::string::npos) << path;
    EXPECT_TRUE(exists(in_private(path))) << path;
    EXPECT_FALSE(exists(on_machine(path))) << path;
}

} // namespace

const std::set<std::string> &answering_call_names() {
    static const std::set<std::string> names = [] {
        std::set<std::string> all = {
            "getcwd",         "get_current_dir_name", "realpath",     "canonicalize_file_name",
            "readlink",       "readlinkat",           "__getcwd_chk", "__realpath_chk",
            "__readlink_chk", "__readlinkat_chk"};
        for (const completing_call &row : completing_calls)
            all.insert(row.name);
        return all;
    }();
    return names;
}

TEST(Answers, TellTheWorkingDirectory) {
    fs::create_directories("/tmp/folder");
    const working_directory inside("/tmp/folder");
    char path[PATH_MAX];

    EXPECT_STREQ(getcwd(path, sizeof(path)), "/tmp/folder");
    EXPECT_EQ(freed(getcwd(nullptr, 0)), "/tmp/folder");
    EXPECT_EQ(freed(get_current_dir_name()), "/tmp/folder");
    EXPECT_STREQ(
        (call<char *(char *, size_t, size_t)>("__getcwd_chk")(path, sizeof(path), sizeof(path))),
        "/tmp/folder");
}

TEST(Answers, TellTheWorkingDirectoryWhereThereIsRoomForJustThat) {
    fs::create_directories("/tmp/folder");
    const working_directory inside("/tmp/folder");
    char path[sizeof("/tmp/folder")];

    EXPECT_STREQ(getcwd(path, sizeof(path)), "/tmp/folder");
    EXPECT_EQ(freed(getcwd(nullptr, sizeof(path))), "/tmp/folder");
    EXPECT_EQ(getcwd(path, sizeof(path) - 1), nullptr);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(getcwd(path, 0), nullptr);
    EXPECT_EQ(errno, EINVAL);
}

TEST(Answers, TellRealPaths) {
    fs::create_directories("/tmp/folder");
    ASSERT_TRUE(sim_write_file("/tmp/folder/it", "text"));
    const working_directory inside("/tmp/folder");
    char path[PATH_MAX];

    EXPECT_STREQ(realpath("/tmp/./folder/../folder/it", path), "/tmp/folder/it");
    EXPECT_STREQ(realpath("it", path), "/tmp/folder/it");
    EXPECT_EQ(freed(realpath("it", nullptr)), "/tmp/folder/it");
    EXPECT_EQ(freed(canonicalize_file_name("it")), "/tmp/folder/it");
    EXPECT_STREQ(
        (call<char *(const char *, char *, size_t)>("__realpath_chk")("it", path, sizeof(path))),
        "/tmp/folder/it");
    EXPECT_STREQ(realpath("..", path), "/tmp");
    EXPECT_STREQ(realpath("../..", path), "/");
    EXPECT_EQ(realpath("/tmp/none", path), nullptr);
}

TEST(Answers, TellALinksTarget) {
    const place here;
    for (const std::string target :
         {"/tmp/target", "/dev/utm_it", "/etc/hostname", "target", "../target", "/dev/null"}) {
        char path[PATH_MAX] = {};
        ASSERT_EQ(symlink(target.c_str(), here.path.c_str()), 0);

        EXPECT_EQ(readlink(here.path.c_str(), path, sizeof(path)), ssize_t(target.size()));
        EXPECT_EQ(path, target);
        EXPECT_EQ(readlinkat(AT_FDCWD, here.path.c_str(), path, 3), 3);
        EXPECT_EQ((call<ssize_t(const char *, char *, size_t, size_t)>("__readlink_chk")(
                      here.path.c_str(), path, sizeof(path), sizeof(path))),
                  ssize_t(target.size()));
        EXPECT_EQ((call<ssize_t(int, const char *, char *, size_t, size_t)>("__readlinkat_chk")(
                      AT_FDCWD, here.path.c_str(), path, sizeof(path), sizeof(path))),
                  ssize_t(target.size()));
        EXPECT_EQ(path, target);

        unlink(here.path.c_str());
    }
}

TEST(Answers, LeadThroughALinkToAnAbsoluteTarget) {
    const place here;
    const std::string target = here.folder + "/target";
    ASSERT_TRUE(sim_write_file(target, "private"));
    ASSERT_TRUE(sim_write_file(on_machine(target), "the machine's"));
    ASSERT_EQ(symlink(target.c_str(), here.path.c_str()), 0);

    EXPECT_EQ(sim_read_file(here.path), "private");
}

TEST(Answers, TellTheDirectoryThatProcNames) {
    fs::create_directories("/tmp/folder");
    const working_directory inside("/tmp/folder");

    EXPECT_EQ(fs::read_symlink("/proc/self/cwd"), "/tmp/folder");
}

TEST(Answers, CompleteANameInThePrivateFolder) {
    const place here;
    for (const completing_call &row : completing_calls) {
        SCOPED_TRACE(row.name);
        expect_made_in_private(completed(row, here.path), here.path);
    }
}

TEST(Answers, CompleteARelativeName) {
    const place here;
    for (const completing_call &row : completing_calls) {
        SCOPED_TRACE(row.name);
        std::string made;
        {
            const working_directory inside(here.folder);
            made = completed(row, "it.");
        }
        expect_made_in_private(here.folder + "/" + made, here.folder + "/it.");
    }
}

TEST(Answers, CompleteANameThatIsPrivateByItsStart) {
    for (const completing_call &row : completing_calls) {
        SCOPED_TRACE(row.name);
        std::string made;
        {
            const working_directory outside("/dev");
            made = completed(row, "utm_it.");
        }
        expect_made_in_private("/dev/" + made, "/dev/utm_it.");
    }
}

TEST(Answers, RefuseANameThatCannotBeCompleted) {
    char path[] = "/tmp/folder/XXX";
    EXPECT_EQ(mkstemp(path), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(mkdtemp(path), nullptr);
    EXPECT_EQ(errno, EINVAL);
}

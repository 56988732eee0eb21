/// What an export may and may not write to, and that there is a whole file at any moment.

#include "persist/export.h"

#include "core/debug_log.h"
#include "persist/export_schedule.h"
#include "tests/lib/needs.h"
#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "tests/unit/support/usage_file_special.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const std::string empty_document =
    "{\"user_profile_list\":[],\"timestamp\":1772625600,\"global_stat\":[]}";
constexpr char new_file[] = "/tmp/usage/.utm_appd.new";

/// No file of this process grows beyond so many bytes: what a full disk looks like.
class file_size_limit_t {
public:
    explicit file_size_limit_t(rlim_t bytes) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit lower = {bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lower);
    }
    ~file_size_limit_t() {
        setrlimit(RLIMIT_FSIZE, &before_);
        signal(SIGXFSZ, SIG_DFL);
    }
    file_size_limit_t(const file_size_limit_t &) = delete;
    file_size_limit_t &operator=(const file_size_limit_t &) = delete;

private:
    rlimit before_ = {};
};

struct stat status_of(const std::string &path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

bool may_give_files_away() {
    std::ofstream{new_file};
    const bool may = chown(new_file, 12345, 12346) == 0;
    fs::remove(new_file);
    return may;
}

class ExportTarget : public usage_file_fixture {
protected:
    /// Expects that an export to a path fails as every export does.
    static void expect_refused(const std::string &path) {
        set_last_export(5);
        EXPECT_EQ(utm_app_export_statistics_to(path.c_str()), -1);
        EXPECT_EQ(world::trace(), "log export to " + path + " failed\n");
        EXPECT_EQ(last_export_statistics_ts, world::default_now);
    }

    static void expect_written(const std::string &path) {
        EXPECT_EQ(utm_app_export_statistics_to(path.c_str()), 0) << path;
        EXPECT_EQ(read_file(path), empty_document) << path;
    }

    /// @return the names in the folder, one a line
    static std::string names() {
        std::set<std::string> sorted;
        for (const auto &entry : fs::directory_iterator(folder))
            sorted.insert(entry.path().filename());
        std::string text;
        for (const std::string &name : sorted)
            text += name + "\n";
        return text;
    }
};

// ---- The new file in the old one's place ---------------------------------------------------

TEST_F(ExportTarget, IsTheOldFileUntilTheNewOneIsWholeAndFlushed) {
    const auto expect_old = [](const std::string &word) {
        if (word != ")" && word != "debug(" && word != "log") {
            EXPECT_EQ(read_file(export_path), "old") << word;
        }
    };
    write_file(export_path, "old");
    EXPECT_EQ(
        call_trace::of([] { EXPECT_EQ(utm_app_export_statistics_to(export_path), 0); }, expect_old),
        "store() file(clock store() write flush rename) debug() log");
    EXPECT_EQ(names(), "export.json\n");
}

TEST_F(ExportTarget, LeavesTheOldFileWhenTheDiskIsFull) {
    write_file(export_path, "old");
    {
        const file_size_limit_t full(20);
        world::quietly([] { EXPECT_EQ(utm_app_export_statistics_to(export_path), -1); });
    }
    EXPECT_EQ(read_file(export_path), "old");
    EXPECT_EQ(names(), "export.json\n");
    expect_written(export_path);
}

TEST_F(ExportTarget, CreatesAFileThatOnlyItsOwnerMayWrite) {
    const mode_t before = umask(0);
    expect_written(export_path);
    umask(before);
    EXPECT_EQ(status_of(export_path).st_mode, static_cast<mode_t>(S_IFREG | 0644));
}

TEST_F(ExportTarget, KeepsTheOldFilesModeWhateverTheUmask) {
    for (const mode_t mode : {0600U, 0640U, 0666U}) {
        write_file(export_path, "old");
        ASSERT_EQ(chmod(export_path, mode), 0);
        const ino_t old = status_of(export_path).st_ino;
        expect_written(export_path);
        EXPECT_EQ(status_of(export_path).st_mode, S_IFREG | mode);
        EXPECT_NE(status_of(export_path).st_ino, old);
    }
}

TEST_F(ExportTarget, KeepsTheOldFilesOwner) {
    UTM_NEEDS("other-owners", may_give_files_away());
    write_file(export_path, "old");
    ASSERT_EQ(chown(export_path, 12345, 12346), 0);
    expect_written(export_path);
    EXPECT_EQ(status_of(export_path).st_uid, 12345U);
    EXPECT_EQ(status_of(export_path).st_gid, 12346U);
}

/// What an export that was killed has left, or somebody has laid in the way.
TEST_F(ExportTarget, ReplacesALeftover) {
    write_file("/tmp/usage/victim", "theirs");
    const std::function<void()> leave[] = {
        [] { write_file(new_file, std::string(100'000, 'x')); },
        [] { fs::create_symlink("victim", new_file); },
        [] { fs::create_symlink("none", new_file); },
        [] { fs::create_hard_link("/tmp/usage/victim", new_file); },
        [] { ASSERT_EQ(mkfifo(new_file, 0666), 0); },
    };
    for (const auto &act : leave) {
        write_file(export_path, "old");
        act();
        expect_written(export_path);
        EXPECT_EQ(names(), "export.json\nvictim\n");
        EXPECT_EQ(read_file("/tmp/usage/victim"), "theirs");
    }
}

TEST_F(ExportTarget, WritesAFileThatHasTheNewOnesName) {
    write_file(new_file, "old");
    const auto expect_old = [](const std::string &word) {
        if (word == "write" || word == "rename") {
            EXPECT_EQ(read_file(new_file), "old");
        }
    };
    call_trace::of([] { EXPECT_EQ(utm_app_export_statistics_to(new_file), 0); }, expect_old);
    EXPECT_EQ(read_file(new_file), empty_document);
    EXPECT_EQ(names(), ".utm_appd.new\n");
}

TEST_F(ExportTarget, OverwritesInAFolderThatTakesNoNewFile) {
    write_file(export_path, std::string(1000, 'x'));
    const ino_t old = status_of(export_path).st_ino;
    ASSERT_EQ(chmod(folder, 0555), 0);
    {
        const usage_file::unprivileged_t eyes;
        world::quietly([] {
            EXPECT_EQ(utm_app_export_statistics_to(export_path), 0);
            EXPECT_EQ(utm_app_export_statistics_to("/tmp/usage/another"), -1);
        });
    }
    EXPECT_EQ(read_file(export_path), empty_document);
    EXPECT_EQ(status_of(export_path).st_ino, old);
    EXPECT_EQ(names(), "export.json\n");
    ASSERT_EQ(chmod(folder, 0755), 0);
}

TEST_F(ExportTarget, IsWrittenWhereAFolderHasTheNewOnesName) {
    write_file(export_path, "old");
    fs::create_directory(new_file);
    write_file(std::string(new_file) + "/theirs", "");
    expect_written(export_path);
    EXPECT_EQ(names(), ".utm_appd.new\nexport.json\n");
}

TEST_F(ExportTarget, PutsNoFileInPlaceThatAnotherExportHasBegun) {
    write_file(export_path, "old");
    const auto begin_another = [](const std::string &word) {
        if (word != "flush")
            return;
        fs::remove(new_file);
        write_file(new_file, "half");
    };
    call_trace::of([] { EXPECT_EQ(utm_app_export_statistics_to(export_path), -1); }, begin_another);
    EXPECT_EQ(read_file(export_path), "old");
    EXPECT_EQ(read_file(new_file), "half");
}

// ---- Links ---------------------------------------------------------------------------------

TEST_F(ExportTarget, FollowsLinksToTheirEnd) {
    fs::create_directory("/tmp/usage/sub");
    const struct {
        const char *link, *target, *file;
    } table[] = {
        {"/tmp/usage/to_none", "target.json", "/tmp/usage/target.json"},
        {"/tmp/usage/to_that", "target.json", "/tmp/usage/target.json"},
        {"/tmp/usage/absolute", "/tmp/usage/sub/a.json", "/tmp/usage/sub/a.json"},
        {"/tmp/usage/sub/up", "../sub/../u.json", "/tmp/usage/u.json"},
        {"/tmp/usage/twice", "to_that", "/tmp/usage/target.json"},
    };
    for (const auto &row : table) {
        fs::create_symlink(row.target, row.link);
        expect_written(row.link);
        EXPECT_TRUE(fs::is_symlink(row.link)) << row.link;
        EXPECT_FALSE(fs::is_symlink(row.file)) << row.link;
        EXPECT_EQ(read_file(row.file), empty_document) << row.link;
        write_file(row.file, "old");
    }
    fs::create_directory_symlink("sub", "/tmp/usage/folder");
    expect_written("/tmp/usage/folder/b.json");
    EXPECT_EQ(read_file("/tmp/usage/sub/b.json"), empty_document);
}

TEST_F(ExportTarget, RefusesLinksThatLeadNowhere) {
    fs::create_symlink("round", "/tmp/usage/round");
    fs::create_symlink("none/file", "/tmp/usage/astray");
    fs::create_symlink("/tmp/usage", "/tmp/usage/home");
    for (const char *link : {"/tmp/usage/round", "/tmp/usage/astray", "/tmp/usage/home"})
        expect_refused(link);
}

TEST_F(ExportTarget, FollowsNobodysLinkInAFolderThatEverybodyMayWrite) {
    UTM_NEEDS("other-owners", may_give_files_away());
    write_file("/tmp/usage/victim", "theirs");
    fs::create_directory("/tmp/usage/shared");
    ASSERT_EQ(chmod("/tmp/usage/shared", 01777), 0);
    fs::create_symlink("../victim", "/tmp/usage/shared/theirs");
    ASSERT_EQ(lchown("/tmp/usage/shared/theirs", 12345, 12345), 0);
    expect_refused("/tmp/usage/shared/theirs");
    EXPECT_EQ(read_file("/tmp/usage/victim"), "theirs");
    fs::create_symlink("../mine", "/tmp/usage/shared/mine");
    expect_written("/tmp/usage/shared/mine");
}

// ---- Other things than files ---------------------------------------------------------------

TEST_F(ExportTarget, RefusesWhatIsNoFile) {
    write_file("/tmp/usage/file", "");
    ASSERT_EQ(mkfifo("/tmp/usage/lonely", 0600), 0);
    const usage_file::pipe_reader_t reader("/tmp/usage/pipe");
    const usage_file::bound_socket_t socket("/tmp/usage/socket");
    const std::string before = names();
    for (const char *path :
         {"/tmp/usage/lonely", "/tmp/usage/pipe", "/tmp/usage/socket", folder, "/tmp/usage/.",
          "/tmp/usage/", "/tmp/usage/none/file.json", "/tmp/usage/none/", "/tmp/usage/new/..",
          "/tmp/usage/file/file.json", "/tmp/usage/file/"})
        expect_refused(path);
    expect_refused("/tmp/usage/" + std::string(300, 'n'));
    expect_refused("/tmp/usage/" + std::string(3000, 'n'));
    EXPECT_EQ(reader.available(), "");
    EXPECT_EQ(names(), before);
}

TEST_F(ExportTarget, WritesToADeviceAsItStands) {
    EXPECT_EQ(utm_app_export_statistics_to("/dev/null"), 0);
    EXPECT_EQ(world::trace(), "log export to /dev/null success\n");
    expect_refused("/dev/full");
}

TEST_F(ExportTarget, LeavesNoDescriptorBehind) {
    ASSERT_EQ(mkfifo("/tmp/usage/pipe", 0600), 0);
    fs::create_symlink("linked.json", "/tmp/usage/link");
    const size_t before = usage_file::open_descriptors();
    for (const char *path :
         {export_path, "/tmp/usage/pipe", "/dev/full", folder, "/tmp/usage/link"})
        utm_app_export_statistics_to(path);
    EXPECT_EQ(usage_file::open_descriptors(), before);
}

} // namespace

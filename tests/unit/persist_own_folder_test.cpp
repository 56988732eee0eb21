/// The usage file's own folder lies in /tmp: what others lay there is not believed.

#include "persist/export.h"
#include "persist/import.h"

#include "format/usage_file.h"
#include "tests/lib/needs.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "tests/unit/support/usage_file_special.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char own_folder[] = "/tmp/ApplicationData";

bool may_give_folders_away() {
    fs::create_directory("/tmp/usage/given");
    return chown("/tmp/usage/given", 12345, 12345) == 0;
}

class OwnFolder : public usage_file_fixture {
protected:
    void SetUp() override {
        usage_file_fixture::SetUp();
        write_file("/tmp/usage/victim", "theirs");
        make_folder(own_folder);
        // What an earlier test has found is forgotten.
        world::quietly([] { EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), 0); });
        fs::remove_all(own_folder);
    }

    static void make_folder(const std::string &path, mode_t mode = 0755) {
        fs::create_directory(path);
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }

    /// Expects that the folder is not used, whatever way leads there, and that this is said once.
    static void expect_unused() {
        const std::string aliases[] = {usage_file_path, "/tmp//ApplicationData/app_usage.json",
                                       "/tmp/ApplicationData/../ApplicationData/app_usage.json"};
        std::string log;
        for (const std::string &path : aliases) {
            EXPECT_EQ(utm_app_export_statistics_to(path.c_str()), -1) << path;
            EXPECT_EQ(utm_app_import_statistics(path.c_str()), -1) << path;
            log += "log export to " + path + " failed\nlog import from " + path + " failed\n";
        }
        EXPECT_EQ(world::trace(), said() + log);
        EXPECT_EQ(read_file("/tmp/usage/victim"), "theirs");
    }

    /// Expects that the folder is used and what is in place of the file is not.
    static void expect_refused() {
        for (const char *path : {usage_file_path, "/tmp//ApplicationData/app_usage.json"}) {
            EXPECT_EQ(utm_app_export_statistics_to(path), -1);
            EXPECT_EQ(utm_app_import_statistics(path), -1);
        }
        EXPECT_EQ(world::trace().find("syslog"), std::string::npos);
        EXPECT_EQ(read_file("/tmp/usage/victim"), "theirs");
    }

    static std::string said() {
        return "syslog /tmp/ApplicationData is not used: it has to be a folder of user " +
               std::to_string(geteuid()) + " that nobody else may write\n";
    }
};

/// With a slash at its end a path leads through a link there, whoever laid it.
TEST_F(OwnFolder, IsNotReachedThroughAStrangersLinkBehindALinkWithASlash) {
    UTM_NEEDS("other-owners", may_give_folders_away);
    make_folder("/tmp/usage/secret");
    fs::create_symlink("/tmp/usage/secret", "/tmp/usage/theirs");
    ASSERT_EQ(lchown("/tmp/usage/theirs", 12345, 12345), 0);
    for (const char *target : {"/tmp/usage/theirs", "/tmp/usage/theirs/", "/tmp/usage/theirs//",
                               "/tmp/usage/theirs/.", "/tmp/usage/theirs/./"}) {
        fs::create_symlink(target, own_folder);
        expect_unused();
        fs::remove(own_folder);
        make_folder(own_folder); // found good in between, so that the next is said again
        world::quietly([] { EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), 0); });
        fs::remove_all(own_folder);
    }
    fs::create_symlink("/tmp/usage/secret/", own_folder);
    EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), 0);
}

TEST_F(OwnFolder, IsUsedWhereNobodyElseMayWrite) {
    for (const mode_t mode : {0700U, 0755U, 0711U}) {
        make_folder(own_folder, mode);
        EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), 0) << mode;
        EXPECT_EQ(utm_app_import_statistics(usage_file_path), 0) << mode;
        fs::remove_all(own_folder);
    }
}

TEST_F(OwnFolder, IsUsedBehindALinkOfOurOwn) {
    make_folder("/tmp/usage/data");
    for (const char *target : {"/tmp/usage/data", "usage/data", "link"}) {
        fs::create_directory_symlink("usage/data", "/tmp/link");
        fs::create_directory_symlink(target, own_folder);
        EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), 0) << target;
        EXPECT_TRUE(fs::remove("/tmp/usage/data/app_usage.json")) << target;
        fs::remove(own_folder);
        fs::remove("/tmp/link");
    }
}

TEST_F(OwnFolder, IsNotUsedWhereOthersMayWrite) {
    for (const mode_t mode : {0777U, 01777U, 0775U, 0757U}) {
        make_folder(own_folder, mode);
        write_file(usage_file_path, "{\"user_profile_list\":[],\"global_stat\":[]}");
        expect_unused();
        EXPECT_EQ(std::distance(fs::directory_iterator(own_folder), {}), 1);
        // Once it may be used again, a later change for the worse is said again.
        ASSERT_EQ(chmod(own_folder, 0755), 0);
        EXPECT_EQ(utm_app_import_statistics(usage_file_path), 0);
        world::trace();
        fs::remove_all(own_folder);
    }
}

TEST_F(OwnFolder, IsNotUsedWhereOursIsALinkToWhatIsNot) {
    make_folder("/tmp/usage/data", 0777);
    fs::create_directory_symlink("/tmp/usage/data", own_folder);
    expect_unused();
    EXPECT_TRUE(fs::is_empty("/tmp/usage/data"));
}

TEST_F(OwnFolder, IsNotUsedWhereItIsNoFolder) {
    write_file(own_folder, "");
    EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), -1);
    EXPECT_EQ(world::trace(), said() + "log export to " + usage_file_path + " failed\n");
}

TEST_F(OwnFolder, IsNotUsedWhereItIsSomebodyElses) {
    UTM_NEEDS("other-owners", may_give_folders_away());
    make_folder(own_folder);
    ASSERT_EQ(chown(own_folder, 12345, 0), 0);
    fs::create_symlink("/tmp/usage/victim", usage_file_path);
    expect_unused();
}

TEST_F(OwnFolder, IsNotUsedBehindSomebodyElsesLink) {
    UTM_NEEDS("other-owners", may_give_folders_away());
    make_folder("/tmp/usage/data");
    fs::create_directory_symlink("/tmp/usage/data", own_folder);
    ASSERT_EQ(lchown(own_folder, 12345, 12345), 0);
    expect_unused();
    EXPECT_TRUE(fs::is_empty("/tmp/usage/data"));
}

TEST_F(OwnFolder, IsNotMissedInTheSystemsLog) {
    EXPECT_EQ(utm_app_export_statistics_to(usage_file_path), -1);
    EXPECT_EQ(world::trace(), std::string("log export to ") + usage_file_path + " failed\n");
}

TEST_F(OwnFolder, HoldsFilesAndNothingElse) {
    make_folder(own_folder);
    fs::create_symlink("/tmp/usage/victim", usage_file_path);
    expect_refused();
    fs::remove(usage_file_path);
    fs::create_symlink("/tmp/usage/none", usage_file_path);
    expect_refused();
    EXPECT_FALSE(fs::exists("/tmp/usage/none"));
    fs::remove(usage_file_path);
    fs::create_symlink("/dev/null", usage_file_path);
    expect_refused();
    fs::remove(usage_file_path);
    const usage_file::pipe_reader_t pipe(usage_file_path);
    expect_refused();
    EXPECT_EQ(pipe.available(), "");
}

TEST_F(OwnFolder, IsReachedByALinkFromElsewhere) {
    make_folder(own_folder);
    fs::create_symlink(usage_file_path, "/tmp/usage/link");
    EXPECT_EQ(utm_app_export_statistics_to("/tmp/usage/link"), 0);
    EXPECT_EQ(utm_app_import_statistics("/tmp/usage/link"), 0);
    fs::remove(usage_file_path);
    fs::create_symlink("/tmp/usage/victim", usage_file_path);
    EXPECT_EQ(utm_app_export_statistics_to("/tmp/usage/link"), -1);
    EXPECT_EQ(read_file("/tmp/usage/victim"), "theirs");
}

TEST_F(OwnFolder, ShowsControlCharactersOfAPathInTheLog) {
    EXPECT_EQ(utm_app_export_statistics_to("/none/a\n* * * * * root sh\t\x1f\x7f\x80"), -1);
    EXPECT_EQ(utm_app_import_statistics("/none/\r\x01"), -1);
    EXPECT_EQ(utm_app_export_statistics_to("/tmp/usage/\n"), 0);
    EXPECT_EQ(world::trace(),
              "log export to /none/a\\x0A* * * * * root sh\\x09\\x1F\\x7F\x80 failed\n"
              "log import from /none/\\x0D\\x01 failed\n"
              "log export to /tmp/usage/\\x0A success\n");
}

} // namespace

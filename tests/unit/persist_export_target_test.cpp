/// What an export may and may not write to.

#include "persist/export.h"

#include "persist/export_schedule.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "tests/unit/support/usage_file_special.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const std::string empty_document =
    "{\"user_profile_list\":[],\"timestamp\":1772625600,\"global_stat\":[]}";

class ExportTarget : public usage_file_fixture {
protected:
    /// Expects that an export to a path fails as every export does.
    static void expect_refused(const std::string &path) {
        set_last_export(5);
        EXPECT_EQ(utm_app_export_statistics_to(path.c_str()), -1);
        EXPECT_EQ(world::trace(), "log export to " + path + " failed\n");
        EXPECT_EQ(last_export_statistics_ts, world::default_now);
    }
};

TEST_F(ExportTarget, CreatesAFileThatOnlyItsOwnerMayWrite) {
    const mode_t before = umask(0);
    EXPECT_EQ(utm_app_export_statistics_to(export_path), 0);
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(export_path, &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0644));
}

TEST_F(ExportTarget, FollowsALink) {
    std::filesystem::create_symlink("target.json", export_path);
    EXPECT_EQ(utm_app_export_statistics_to(export_path), 0);
    EXPECT_EQ(read_file("/tmp/usage/target.json"), empty_document);
    EXPECT_TRUE(std::filesystem::is_symlink(export_path));
}

TEST_F(ExportTarget, RefusesAPipeWithoutAReader) {
    ASSERT_EQ(mkfifo("/tmp/usage/pipe", 0600), 0);
    expect_refused("/tmp/usage/pipe");
}

TEST_F(ExportTarget, RefusesAPipeWithAReaderAndWritesNothingToIt) {
    const usage_file::pipe_reader_t reader("/tmp/usage/pipe");
    expect_refused("/tmp/usage/pipe");
    EXPECT_EQ(reader.available(), "");
}

TEST_F(ExportTarget, RefusesASocket) {
    const usage_file::bound_socket_t socket("/tmp/usage/socket");
    expect_refused("/tmp/usage/socket");
}

TEST_F(ExportTarget, RefusesAFolder) {
    expect_refused(folder);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(ExportTarget, FailsInAMissingFolder) {
    expect_refused("/tmp/usage/none/file.json");
    EXPECT_FALSE(std::filesystem::exists("/tmp/usage/none"));
}

TEST_F(ExportTarget, FailsBelowAFile) {
    write_file("/tmp/usage/file", "");
    expect_refused("/tmp/usage/file/file.json");
}

TEST_F(ExportTarget, FailsOnAFullDisk) {
    expect_refused("/dev/full");
}

TEST_F(ExportTarget, WritesToADeviceThatTakesEverything) {
    EXPECT_EQ(utm_app_export_statistics_to("/dev/null"), 0);
    EXPECT_EQ(world::trace(), "log export to /dev/null success\n");
}

TEST_F(ExportTarget, LeavesNoDescriptorBehind) {
    ASSERT_EQ(mkfifo("/tmp/usage/pipe", 0600), 0);
    const size_t before = usage_file::open_descriptors();
    for (const char *path : {export_path, "/tmp/usage/pipe", "/dev/full", folder})
        utm_app_export_statistics_to(path);
    EXPECT_EQ(usage_file::open_descriptors(), before);
}

} // namespace

/// What an import may and may not read from.

#include "persist/import.h"

#include "format/usage_file.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "tests/unit/support/usage_file_special.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

class ImportSource : public usage_file_fixture {
protected:
    void SetUp() override {
        usage_file_fixture::SetUp();
        make(usage_file::profile_t{3, 1, 2, 3, {{10, 4, 5, 6, 7}}});
        make_router_app({11, 8, 9, 10, 11});
        before_ = export_text();
    }

    /// Expects that an import from a path fails and leaves the store as it was.
    void expect_refused(const std::string &path) {
        EXPECT_EQ(utm_app_import_statistics(path.c_str()), -1);
        EXPECT_EQ(world::trace(), "log import from " + path + " failed\n");
        EXPECT_EQ(export_text(), before_);
    }

    static std::string document() {
        return usage_file::text(usage_file::document_t{{{3, 9}}, world::default_now, {}});
    }

    std::string before_;
};

TEST_F(ImportSource, FailsWithoutAPath) {
    EXPECT_EQ(utm_app_import_statistics(nullptr), -1);
    EXPECT_EQ(utm_app_import_statistics(""), -1);
    EXPECT_EQ(world::trace(), "log import from NULL failed\n"
                              "log import from  failed\n");
    EXPECT_EQ(export_text(), before_);
}

TEST_F(ImportSource, RefusesAMissingFile) {
    expect_refused("/tmp/usage/none.json");
    expect_refused("/tmp/usage/none/none.json");
}

TEST_F(ImportSource, RefusesAnEmptyFile) {
    write_file("/tmp/usage/empty.json", "");
    expect_refused("/tmp/usage/empty.json");
}

TEST_F(ImportSource, RefusesAFolder) {
    expect_refused(folder);
}

TEST_F(ImportSource, RefusesAPipeInsteadOfWaitingForIt) {
    ASSERT_EQ(mkfifo("/tmp/usage/pipe", 0600), 0);
    expect_refused("/tmp/usage/pipe");
}

TEST_F(ImportSource, RefusesASocket) {
    const usage_file::bound_socket_t socket("/tmp/usage/socket");
    expect_refused("/tmp/usage/socket");
}

TEST_F(ImportSource, RefusesDevices) {
    for (const char *device : {"/dev/null", "/dev/zero", "/dev/urandom"})
        expect_refused(device);
}

TEST_F(ImportSource, RefusesAFileThatItMayNotRead) {
    write_file(import_path, document());
    std::filesystem::permissions(import_path, std::filesystem::perms::none);
    world::quietly([] {
        const usage_file::unprivileged_t eyes;
        EXPECT_EQ(utm_app_import_statistics(import_path), -1);
    });
    EXPECT_EQ(export_text(), before_);
    std::filesystem::permissions(import_path, std::filesystem::perms::owner_read);
    EXPECT_EQ(utm_app_import_statistics(import_path), 0);
}

TEST_F(ImportSource, FollowsALinkToAFileButNotToSomethingElse) {
    write_file("/tmp/usage/file.json", document());
    std::filesystem::create_symlink("/dev/zero", "/tmp/usage/bad");
    expect_refused("/tmp/usage/bad");
    std::filesystem::create_symlink("file.json", "/tmp/usage/good");
    EXPECT_EQ(utm_app_import_statistics("/tmp/usage/good"), 0);
    EXPECT_EQ(world::trace(), "log import from /tmp/usage/good success\n");
}

/// Some say that they are empty and give without end.
TEST_F(ImportSource, RefusesAFileWithoutAnEnd) {
    write_file("/tmp/usage/large.json", document() + std::string(usage_file_size_limit, ' '));
    expect_refused("/tmp/usage/large.json");
    expect_refused("/proc/self/pagemap");
}

TEST_F(ImportSource, RefusesWhatJsonCWouldNeedGigabytesFor) {
    std::string text = "{\"user_profile_list\":[],\"global_stat\":[";
    while (text.size() < usage_file_size_limit - 10)
        text += "{},";
    write_file(import_path, text + "{}]}");
    expect_refused(import_path);
}

TEST_F(ImportSource, LeavesNoDescriptorBehind) {
    ASSERT_EQ(mkfifo("/tmp/usage/pipe", 0600), 0);
    write_file(import_path, document());
    write_file("/tmp/usage/bad.json", "{");
    const size_t before = usage_file::open_descriptors();
    for (const char *path : {import_path, "/tmp/usage/bad.json", "/tmp/usage/pipe", "/dev/null",
                             folder, "/tmp/usage/none.json"})
        utm_app_import_statistics(path);
    EXPECT_EQ(usage_file::open_descriptors(), before);
}

TEST_F(ImportSource, ShowsALongPathWhole) {
    const std::string path = "/tmp/usage/" + std::string(3000, 'x');
    expect_refused(path);
}

} // namespace

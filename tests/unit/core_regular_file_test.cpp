#include "core/regular_file.h"

#include "core/owners.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

class RegularFile : public testing::Test {
protected:
    void SetUp() override { fs::create_directory(folder_); }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const char *name) const { return folder_ + "/" + name; }

    /// @return 0 when the path was opened, else the error
    static int error_of(const std::string &path, int folder = regular_file_no_folder) {
        errno = 0;
        const fd_guard fd(regular_file_open(path.c_str(), folder));
        return fd.get() < 0 ? errno : 0;
    }

private:
    const std::string folder_ = "/tmp/regular_file_test";
};

TEST_F(RegularFile, IsReadFromItsStartAndClosedInOtherPrograms) {
    std::ofstream(path("file")) << "text";
    const fd_guard fd(regular_file_open(path("file").c_str()));
    ASSERT_GE(fd.get(), 0);
    char bytes[8] = {};
    EXPECT_EQ(read(fd.get(), bytes, sizeof(bytes)), 4);
    EXPECT_STREQ(bytes, "text");
    EXPECT_EQ(fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(RegularFile, IsFoundThroughALinkUnlessAFolderIsNamed) {
    std::ofstream(path("file")) << "text";
    fs::create_symlink("file", path("link"));
    const fd_guard folder(open(path(".").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(error_of(path("link")), 0);
    EXPECT_EQ(error_of("file", folder.get()), 0);
    EXPECT_EQ(error_of("link", folder.get()), ENOTSUP);
}

TEST_F(RegularFile, IsTheOnlyKindThatIsOpened) {
    // Nobody writes into the pipe: an open that waited for its other end would never return.
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    fs::create_symlink(path("pipe"), path("link"));
    EXPECT_EQ(error_of(path("pipe")), ENOTSUP);
    EXPECT_EQ(error_of(path("link")), ENOTSUP);
    EXPECT_EQ(error_of(path(".")), ENOTSUP);
    EXPECT_EQ(error_of("/dev/null"), ENOTSUP);
    EXPECT_EQ(error_of(path("nothing")), ENOENT);
}

} // namespace

/// The usage file in a world that changes between two calls, or does not take all at once.

#include "format/usage_file.h"

#include "core/debug_log.h"
#include "persist/export.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "tests/unit/support/usage_file_special.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>

namespace {

namespace fs = std::filesystem;

class UsageFileWorld : public usage_file_fixture {
protected:
    /// Does something once, right after the file's state was asked for the first time.
    static void after_first_look(const std::string &at, const std::function<void()> &act) {
        world::after_stat([=, done = false](const std::string &path) mutable {
            if (path != at || done)
                return;
            done = true;
            act();
        });
    }
};

TEST_F(UsageFileWorld, IsWrittenWholeThroughInterruptionsAndSmallPieces) {
    make(usage_file::profile_t{3, 1, 2, 3, {{10, 5}}});
    const std::string whole = export_text();
    ASSERT_EQ(utm_app_debug_set(0), 0);
    for (const size_t most : {size_t{0}, size_t{1}, size_t{7}}) {
        fs::remove(export_path);
        world::disturb_write(3, most);
        EXPECT_EQ(utm_app_export_statistics(export_path, 0), 0);
        world::disturb_write(0, 0);
        EXPECT_EQ(read_file(export_path), whole) << most;
    }
}

TEST_F(UsageFileWorld, IsNotReadWhenItGrewBeforeItWasOpened) {
    write_file(import_path, "0123456789");
    after_first_look(import_path, [] { write_file(import_path, "0123456789A"); });
    errno = 0;
    EXPECT_EQ(usage_file_open_to_read(import_path, 10), -1);
    EXPECT_EQ(errno, EFBIG);
}

TEST_F(UsageFileWorld, IsReadUpToTheLimit) {
    write_file(import_path, "0123456789");
    const fd_guard file(usage_file_open_to_read(import_path, 10));
    EXPECT_GE(file.get(), 0);
    EXPECT_EQ(usage_file_open_to_read(import_path, 9), -1);
    EXPECT_EQ(errno, EFBIG);
}

/// What takes the file's place after it was looked at.
TEST_F(UsageFileWorld, IsNotWrittenWhenSomethingElseTookItsPlace) {
    write_file("/tmp/usage/victim", "theirs");
    std::unique_ptr<usage_file::pipe_reader_t> pipe;
    const std::function<void()> swaps[] = {
        [&] { pipe = std::make_unique<usage_file::pipe_reader_t>(export_path); },
        [] { fs::create_symlink("/dev/null", export_path); },
        [] { fs::create_symlink("/tmp/usage/victim", export_path); },
        [] { write_file(export_path, "theirs"); },
        [] { fs::create_directory(export_path); },
        [] {},
    };
    for (const auto &swap : swaps) {
        write_file(export_path, "before");
        after_first_look(export_path, [&] {
            fs::rename(export_path, "/tmp/usage/old");
            swap();
        });
        EXPECT_EQ(utm_app_export_statistics(export_path, 0), -1);
        EXPECT_EQ(read_file("/tmp/usage/victim"), "theirs");
        EXPECT_EQ(read_file("/tmp/usage/old"), "before");
        world::after_stat(nullptr);
        fs::remove(export_path);
    }
    EXPECT_EQ(pipe->available(), "");
}

} // namespace

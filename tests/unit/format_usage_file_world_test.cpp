/// The usage file in a world that changes between two calls, or does not take all at once.

#include "format/usage_file.h"

#include "core/debug_log.h"
#include "core/regular_file.h"
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

/// @return what an import makes of a text with at most ten bytes
int error_of_reading(const std::string &path, size_t size_limit = 10) {
    const fd_guard file(regular_file_open(path.c_str()));
    errno = 0;
    const json_ptr document = usage_file_read(file.get(), size_limit);
    return document != nullptr ? 0 : errno;
}

TEST_F(UsageFileWorld, IsReadUpToTheLimitWhateverItSaysOfItsSize) {
    write_file(import_path, "[12345678]");
    EXPECT_EQ(error_of_reading(import_path), 0);
    write_file(import_path, "[123456789]");
    EXPECT_EQ(error_of_reading(import_path), EFBIG);
    EXPECT_EQ(error_of_reading("/proc/self/status"), EFBIG);
    EXPECT_EQ(error_of_reading("/proc/self/status", 1'000'000), EBADMSG);
}

TEST_F(UsageFileWorld, IsReadThroughInterruptions) {
    write_file(import_path, "[12345678]");
    world::disturb_read(3, 4);
    EXPECT_EQ(error_of_reading(import_path), 0);
    world::disturb_read(0, 0);
}

TEST_F(UsageFileWorld, IsCountedBeforeAnythingIsMadeOfIt) {
    const auto repeated = [](const std::string &piece, size_t count, const std::string &last) {
        std::string text = "[";
        for (size_t i = 0; i < count; ++i)
            text += piece + ",";
        return text + last + "]";
    };
    const struct {
        const char *name;
        std::string text;
        int error;
    } table[] = {
        // The list itself is one of them.
        {"values", repeated("0", usage_file_limits.values - 2, "0"), 0},
        {"too many values", repeated("0", usage_file_limits.values - 1, "0"), EOVERFLOW},
        {"lists", repeated("[]", usage_file_limits.containers - 2, "[]"), 0},
        {"too many lists", repeated("[]", usage_file_limits.containers - 1, "[]"), EOVERFLOW},
        {"too many objects", repeated("{}", usage_file_limits.containers - 1, "{}"), EOVERFLOW},
        {"members",
         "{" +
             repeated("\"a\":0", usage_file_limits.members, "")
                 .substr(1, usage_file_limits.members * 6 - 1) +
             "}",
         0},
        {"too many members",
         "{" +
             repeated("\"a\":0", usage_file_limits.members + 1, "")
                 .substr(1, usage_file_limits.members * 6 + 5) +
             "}",
         EOVERFLOW},
    };
    for (const auto &row : table) {
        write_file(import_path, row.text);
        EXPECT_EQ(error_of_reading(import_path, usage_file_size_limit), row.error) << row.name;
        EXPECT_EQ(usage_text_is_readable(row.text.data(), row.text.size()), row.error == 0);
    }
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

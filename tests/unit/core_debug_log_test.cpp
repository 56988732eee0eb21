#include "core/debug_log.h"

#include "core/log_text.h"
#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"
#include "tests/unit/support/usage_file_special.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const std::string moved_aside = std::string(debug_log_path) + "2";
const std::string mkdir_line = "run mkdir -p /tmp/utm_log\n";
const std::string touch_line = "run /bin/touch /tmp/utm_log/utm_app_log\n";
const std::string mv_line = "run /bin/mv /tmp/utm_log/utm_app_log /tmp/utm_log/utm_app_log2\n";

class DebugLog : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

std::string text_of(const std::string &path) {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// A log file of so many zero bytes.
void make_log_of(int64_t size) {
    std::ofstream{debug_log_path};
    fs::resize_file(debug_log_path, static_cast<uintmax_t>(size));
}

/// A folder that nobody else may write, whatever the machine's umask.
void make_folder(const std::string &path) {
    fs::create_directory(path);
    fs::permissions(path, fs::perms(0755));
}

void switch_logging(unsigned value) {
    ASSERT_EQ(utm_app_debug_set(value), 0);
}

TEST_F(DebugLog, AddsNothingToALine) {
    utm_app_debug_log("Create profile %d success\n", -3);
    utm_app_log_always("import from %s success\n", "/x");
    utm_app_debug_log("no line end");
    utm_app_debug_log("%c %d%%\n", ',', 7);
    EXPECT_EQ(world::log(), "Create profile -3 success\n"
                            "import from /x success\n"
                            "no line end, 7%\n");
}

TEST_F(DebugLog, WritesALineWithTheLongestPathWhole) {
    const std::string path(4095, 'p');
    utm_app_debug_log("import from %s failed\n", path.c_str());
    EXPECT_EQ(world::log(), "import from " + path + " failed\n");
}

TEST_F(DebugLog, CutsALineThatIsLongerThanAnyOfItsOwn) {
    utm_app_debug_log("%s\n", std::string(5000, 'x').c_str());
    EXPECT_EQ(world::log(), std::string(4096 + 128 - 1, 'x'));
}

TEST_F(DebugLog, ShowsControlCharactersAndNothingElseOtherwise) {
    EXPECT_STREQ(utm_app_log_text("a\\b \n\x01\x1f\x7f\x80\xff~").text,
                 "a\\b \\x0A\\x01\\x1F\\x7F\x80\xff~");
    EXPECT_EQ(utm_app_log_text(std::string(4095, 'p').c_str()).text, std::string(4095, 'p'));
    const std::string cut = utm_app_log_text(std::string(4095, '\n').c_str()).text;
    EXPECT_EQ(cut.size() % 4, 0U);
    EXPECT_GE(cut.size(), 4096U);
    EXPECT_LT(cut.size(), sizeof(log_text_t));
    EXPECT_TRUE(cut.ends_with("\\x0A"));
}

TEST_F(DebugLog, CreatesNothingForAGatedLineWhileSwitchedOff) {
    fs::remove_all(debug_log_directory);
    switch_logging(0);
    utm_app_debug_log("gated\n");
    EXPECT_FALSE(fs::exists(debug_log_directory));
}

TEST_F(DebugLog, CreatesFolderAndFileForAnUngatedLineWhileSwitchedOff) {
    fs::remove_all(debug_log_directory);
    switch_logging(0);
    utm_app_log_always("ungated\n");
    EXPECT_EQ(world::log(), "ungated\n");
}

TEST_F(DebugLog, LeavesAnExistingFileAloneWhileSwitchedOff) {
    utm_app_debug_log("before\n");
    switch_logging(0);
    utm_app_debug_log("gated\n");
    switch_logging(1);
    utm_app_debug_log("after\n");
    EXPECT_EQ(world::log(), "before\nafter\n");
}

TEST_F(DebugLog, KnowsOnlyOnAndOff) {
    struct {
        unsigned before, value;
        int result, after;
    } const table[] = {
        {0, 0, 0, 0},  {0, 1, 0, 1},  {1, 0, 0, 0},           {1, 1, 0, 1},           {0, 2, -1, 0},
        {1, 2, -1, 1}, {1, 3, -1, 1}, {0, 0x80000000, -1, 0}, {1, 0xFFFFFFFF, -1, 1},
    };
    for (const auto &row : table) {
        switch_logging(row.before);
        EXPECT_EQ(utm_app_debug_set(row.value), row.result) << row.value;
        EXPECT_EQ(utm_app_debug_get(), row.after) << row.value;
    }
}

TEST_F(DebugLog, RunsOnlyTheCommandsThatAreNeeded) {
    struct {
        const char *name;
        bool folder, file;
        int64_t size;
        std::string commands;
    } const table[] = {
        {"no folder", false, false, 0, mkdir_line + touch_line},
        {"no file", true, false, 0, touch_line},
        {"empty file", true, true, 0, ""},
        {"full file", true, true, debug_log_size_limit, ""},
        {"oversized file", true, true, debug_log_size_limit + 1, mv_line},
    };
    for (const auto &row : table) {
        world::reset();
        switch_logging(0);
        fs::remove_all(debug_log_directory);
        if (row.folder)
            make_folder(debug_log_directory);
        if (row.file)
            make_log_of(row.size);
        world::intercept_log_commands();
        std::string commands;
        world::on_system([&](const std::string &line) {
            commands += "run " + line + "\n";
            if (line.starts_with("mkdir"))
                make_folder(debug_log_directory);
            return 0;
        });
        utm_app_log_always("line\n");
        EXPECT_EQ(commands, row.commands) << row.name;
    }
}

TEST_F(DebugLog, DropsTheLineWhereNothingCouldBeMade) {
    world::intercept_log_commands();
    world::on_system([](const std::string &) { return 256; });
    fs::remove(debug_log_path);
    utm_app_debug_log("dropped\n");
    EXPECT_EQ(world::trace(), touch_line);
    EXPECT_FALSE(fs::exists(debug_log_path));
    fs::remove_all(debug_log_directory);
    utm_app_debug_log("dropped\n");
    EXPECT_EQ(world::trace(), mkdir_line);
    EXPECT_FALSE(fs::exists(debug_log_directory));
}

// ---- What others lay in its place ----------------------------------------------------------

/// Writes a line in each way. No command is run and nothing is written.
/// @return what is said in the system's log
std::string said_of_a_line() {
    world::intercept_log_commands();
    utm_app_log_from_signal("dropped\n");
    utm_app_log_always("dropped\n");
    utm_app_debug_log("dropped\n");
    return world::trace();
}

std::string unused_line() {
    return "syslog /tmp/utm_log is not used: it has to be a folder of user " +
           std::to_string(geteuid()) + " that nobody else may write\n";
}

TEST_F(DebugLog, UsesNoFolderThatOthersMayWrite) {
    for (const mode_t mode : {0777U, 01777U, 0775U, 0757U}) {
        world::reset();
        utm_app_debug_log("allowed\n");
        EXPECT_EQ(world::trace(), "log allowed\n");
        fs::remove(debug_log_path);
        ASSERT_EQ(chmod(debug_log_directory, mode), 0);
        EXPECT_EQ(said_of_a_line(), unused_line()) << mode;
        EXPECT_TRUE(fs::is_empty(debug_log_directory)) << mode;
    }
}

TEST_F(DebugLog, UsesNothingButAFolder) {
    const std::function<void()> lay[] = {
        [] { std::ofstream{debug_log_directory}; },
        [] { ASSERT_EQ(mkfifo(debug_log_directory, 0600), 0); },
        [] { fs::create_symlink("/dev/null", debug_log_directory); },
        [] { fs::create_symlink("utm_log", debug_log_directory); },
        [] {
            make_folder("/tmp/shared");
            fs::permissions("/tmp/shared", fs::perms::all);
            fs::create_symlink("/tmp/shared", debug_log_directory);
        },
    };
    for (const auto &act : lay) {
        world::reset();
        utm_app_debug_log("allowed\n");
        world::trace();
        fs::remove_all(debug_log_directory);
        act();
        EXPECT_EQ(said_of_a_line(), unused_line());
        fs::remove(debug_log_directory);
    }
}

TEST_F(DebugLog, UsesAFolderBehindALinkOfItsOwn) {
    fs::remove_all(debug_log_directory);
    make_folder("/tmp/elsewhere");
    fs::create_directory_symlink("elsewhere", debug_log_directory);
    utm_app_debug_log("line\n");
    utm_app_log_from_signal("signal\n");
    EXPECT_EQ(text_of("/tmp/elsewhere/utm_app_log"), "line\nsignal\n");
    fs::remove(debug_log_directory);
    fs::remove_all("/tmp/elsewhere");
}

TEST_F(DebugLog, MakesNoFolderBehindALink) {
    fs::remove_all(debug_log_directory);
    fs::create_symlink("/tmp/not_made", debug_log_directory);
    utm_app_debug_log("dropped\n");
    utm_app_log_from_signal("dropped\n");
    EXPECT_FALSE(fs::exists("/tmp/not_made"));
    fs::remove(debug_log_directory);
}

TEST_F(DebugLog, WritesToNothingButAFile) {
    std::ofstream("/tmp/victim") << "theirs";
    int pipe = -1;
    const std::function<void()> lay[] = {
        [] { fs::create_directory(debug_log_path); },
        [] { fs::create_symlink("/tmp/victim", debug_log_path); },
        // `touch` would follow it.
        [] { fs::create_symlink("/tmp/not_made", debug_log_path); },
        [] { fs::create_symlink("/dev/null", debug_log_path); },
        [&] {
            ASSERT_EQ(mkfifo(debug_log_path, 0600), 0);
            pipe = open(debug_log_path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        },
    };
    world::intercept_log_commands();
    int commands = 0;
    world::on_system([&](const std::string &) { return ++commands; });
    for (const auto &act : lay) {
        fs::remove(debug_log_path);
        act();
        utm_app_log_from_signal("dropped\n");
        utm_app_log_always("dropped\n");
        EXPECT_EQ(commands, 0);
        EXPECT_EQ(text_of("/tmp/victim"), "theirs");
        EXPECT_FALSE(fs::exists("/tmp/not_made"));
    }
    char byte = 0;
    EXPECT_EQ(read(pipe, &byte, 1), 0);
    close(pipe);
    fs::remove("/tmp/victim");
}

TEST_F(DebugLog, LeavesNoDescriptorBehind) {
    const size_t before = usage_file::open_descriptors();
    utm_app_debug_log("line\n");
    utm_app_log_from_signal("line\n");
    ASSERT_EQ(chmod(debug_log_directory, 0777), 0);
    utm_app_debug_log("line\n");
    EXPECT_EQ(usage_file::open_descriptors(), before);
}

// ---- Its size ------------------------------------------------------------------------------

TEST_F(DebugLog, MovesAFileAsideThatIsOverTheLimit) {
    const struct {
        int64_t size;
        bool moved;
        void (*write)(const char *line);
    } table[] = {
        {5'242'880, false, [](const char *line) { utm_app_debug_log("%s", line); }},
        {5'242'881, true, [](const char *line) { utm_app_debug_log("%s", line); }},
        // Without a command.
        {5'242'880, false, utm_app_log_from_signal},
        {5'242'881, true, utm_app_log_from_signal},
    };
    for (const auto &row : table) {
        world::reset();
        make_log_of(row.size);
        if (row.write == utm_app_log_from_signal)
            world::intercept_log_commands();
        row.write("line\n");
        EXPECT_EQ(fs::exists(moved_aside), row.moved);
        EXPECT_EQ(fs::file_size(debug_log_path),
                  row.moved ? 5U : static_cast<uintmax_t>(row.size) + 5U);
        EXPECT_TRUE(!row.moved || fs::file_size(moved_aside) == 5'242'881U);
    }
}

TEST_F(DebugLog, KeepsOneOlderGeneration) {
    std::ofstream(moved_aside) << "the generation before";
    make_log_of(5'242'876);
    utm_app_debug_log("full\n");
    utm_app_debug_log("next\n");
    EXPECT_EQ(world::log(), "next\n");
    EXPECT_EQ(fs::file_size(moved_aside), 5'242'881U);
    EXPECT_EQ(std::distance(fs::directory_iterator(debug_log_directory), {}), 2);
}

TEST_F(DebugLog, AppendsToAnOversizedFileThatCannotBeMoved) {
    make_log_of(5'242'881);
    world::intercept_log_commands();
    world::on_system([](const std::string &) { return 256; });
    utm_app_debug_log("line\n");
    EXPECT_EQ(fs::file_size(debug_log_path), 5'242'881U + 5);
    EXPECT_FALSE(fs::exists(moved_aside));
}

TEST_F(DebugLog, ComesBackAfterTheFolderIsDeleted) {
    utm_app_debug_log("first\n");
    fs::remove_all(debug_log_directory);
    utm_app_debug_log("second\n");
    EXPECT_EQ(world::log(), "second\n");
}

TEST_F(DebugLog, FollowsARotationFromOutside) {
    utm_app_debug_log("first\n");
    fs::rename(debug_log_path, moved_aside);
    utm_app_debug_log("second\n");
    EXPECT_EQ(text_of(moved_aside), "first\n");
    EXPECT_EQ(world::log(), "second\n");
}

TEST_F(DebugLog, HasReleasedItsMutexWhenItTouchesTheFile) {
    fs::remove_all(debug_log_directory);
    world::intercept_log_commands();
    std::vector<int> held;
    world::on_system([&](const std::string &) {
        held.push_back(pthread_mutex_trylock(&utm_app_debug_mutex.native));
        if (held.back() == 0)
            pthread_mutex_unlock(&utm_app_debug_mutex.native);
        make_folder(debug_log_directory);
        return 0;
    });
    utm_app_debug_log("line\n");
    EXPECT_EQ(held, (std::vector<int>{0, 0}));
}

TEST_F(DebugLog, WritesUngatedLinesWithoutTheMutex) {
    const mutex_guard lock(utm_app_debug_mutex);
    utm_app_log_always("at the end\n");
    utm_app_log_from_signal("from a signal\n");
    EXPECT_EQ(world::log(), "at the end\nfrom a signal\n");
}

TEST_F(DebugLog, CreatesFolderAndFileFromASignalWithoutACommand) {
    fs::remove_all(debug_log_directory);
    switch_logging(0);
    world::intercept_log_commands();
    utm_app_log_from_signal("100% fixed text\n");
    EXPECT_EQ(world::trace(), "log 100% fixed text\n");
}

TEST_F(DebugLog, KeepsErrnoFromASignal) {
    errno = EINTR;
    utm_app_log_from_signal("to an existing file\n");
    EXPECT_EQ(errno, EINTR);
    fs::remove_all(debug_log_directory);
    errno = EAGAIN;
    utm_app_log_from_signal("to a new file\n");
    EXPECT_EQ(errno, EAGAIN);
    fs::remove(debug_log_path);
    fs::create_directory(debug_log_path);
    errno = 0;
    utm_app_log_from_signal("to no file\n");
    EXPECT_EQ(errno, 0);
    fs::remove(debug_log_path);
}

constexpr int writers = 4;
constexpr int lines_each = 250;

/// Has several threads write numbered lines.
template <typename Write>
void write_from_threads(Write write) {
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer)
        threads.emplace_back([=] {
            for (int line = 0; line < lines_each; ++line)
                write(writer * lines_each + line);
        });
    for (std::thread &thread : threads)
        thread.join();
}

/// @return how often each number was written; a line that is not whole counts for nothing
std::vector<int> numbers_written() {
    std::vector<int> times(writers * lines_each);
    std::ifstream file(debug_log_path);
    for (std::string line; std::getline(file, line);) {
        size_t number = 0;
        if (sscanf(line.c_str(), "line %zu of", &number) == 1 && number < times.size() &&
            line == "line " + std::to_string(number) + " of many")
            ++times[number];
        else
            ADD_FAILURE() << "torn: " << line;
    }
    return times;
}

TEST_F(DebugLog, KeepsEveryLineOfConcurrentWritersWhole) {
    write_from_threads([](int number) { utm_app_debug_log("line %d of many\n", number); });
    EXPECT_EQ(numbers_written(), std::vector<int>(writers * lines_each, 1));
}

/// Writes a line and switches the log between the line's look at the flag and its mutex.
void write_while_switching(const char *line, unsigned value) {
    call_trace::of([=] { utm_app_debug_log("%s\n", line); },
                   [=](const std::string &word) {
                       if (word == "debug(")
                           switch_logging(value);
                   });
}

TEST_F(DebugLog, GivesALineTheFlagThatItFoundFirst) {
    write_while_switching("begun while on", 0);
    EXPECT_EQ(utm_app_debug_get(), 0);
    utm_app_debug_log("begun while off\n");
    write_while_switching("begun while still off", 1);
    EXPECT_EQ(utm_app_debug_get(), 1);
    utm_app_debug_log("begun while on again\n");
    EXPECT_EQ(world::log(), "begun while on\nbegun while on again\n");
}

TEST_F(DebugLog, LetsAChangeUnderWayFinishBeforeALine) {
    EXPECT_EQ(call_trace::of([] { utm_app_debug_log("line\n"); }), "debug() log");
    switch_logging(0);
    EXPECT_EQ(call_trace::of([] { utm_app_debug_log("line\n"); }), "debug()");
    EXPECT_EQ(call_trace::of([] { utm_app_log_always("line\n"); }), "log");
}

} // namespace

#include "client/names.h"

#include "sim/harness/files.h"
#include "tests/lib/world.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

constexpr char names_path[] = "/tmp/client_names";

/// Reads names and notes what is said meanwhile.
/// @return the entries as "305=video 306=chat", or the status where that is not CTL_DONE
std::string read(const std::string &text, std::string *said) {
    EXPECT_TRUE(sim_write_file(names_path, text));
    ctl_app_names names;
    testing::internal::CaptureStderr();
    const ctl_exit status = ctl_read_names(names_path, &names);
    *said = testing::internal::GetCapturedStderr();
    if (status != CTL_DONE)
        return "status " + std::to_string(status);
    std::string entries;
    for (const ctl_app_name &entry : names)
        entries += (entries.empty() ? "" : " ") + std::to_string(entry.app_id) + "=" + entry.name;
    return entries;
}

std::string complaint(int line) {
    return std::string("utm_appctl: ") + names_path + ", line " + std::to_string(line) +
           ": expected a number and a name, such as \"305 video\"; line skipped\n";
}

struct file_case {
    const char *what;
    std::string text;
    std::string entries;
};

TEST(ClientNames, AreReadLineByLine) {
    const std::string cut(63, 'x');
    const file_case cases[] = {
        {"nothing", "", ""},
        {"blank lines and comments", "\n  \n\t\r\n# 305 video\n  # more\n", ""},
        {"two lines", "305 video\n306 chat\n", "305=video 306=chat"},
        {"no line end at the end", "305 video", "305=video"},
        {"blanks around", "  305\t  video  \r\n", "305=video"},
        {"blanks within", "305 video and more\n", "305=video and more"},
        {"a name with a hash", "305 video # 1\n", "305=video # 1"},
        {"numbers to the ends of 32 bits", "-2147483648 a\n2147483647 b\n0 c\n",
         "-2147483648=a 2147483647=b 0=c"},
        {"the same number twice", "305 first\n305 second\n", "305=first 305=second"},
        {"what steers a terminal", "305 a\033[31m\xff\n", "305=a?[31m?"},
        {"the longest name", "305 " + cut + "\n", "305=" + cut},
        {"a longer name", "305 " + cut + "y\n", "305=" + cut},
        {"a longer name with a character at the border", "305 " + cut.substr(1) + "\xc3\xa9\n",
         "305=" + cut.substr(1)},
        {"a zero byte", std::string("305 vi\0deo\n306 chat\n", 20), "305=vi 306=chat"},
        {"a very long line", "305 " + std::string(100'000, 'x') + "\n306 chat\n",
         "305=" + cut + " 306=chat"},
    };
    for (const file_case &c : cases) {
        std::string said;
        EXPECT_EQ(read(c.text, &said), c.entries) << c.what;
        EXPECT_EQ(said, "") << c.what;
    }
}

TEST(ClientNames, OfABadLineAreLeftOutAndToldOf) {
    for (const char *bad : {"305", "305 ", "video", "video 305", "3.5 video", "305video",
                            "2147483648 video", "0x10 video", "305,video", "\xff"}) {
        std::string said;
        EXPECT_EQ(read(std::string("# apps\n") + bad + "\n306 chat\n", &said), "306=chat") << bad;
        EXPECT_EQ(said, complaint(2)) << bad;
    }
}

TEST(ClientNames, OfTheUsualPlaceAreToldOfAndNotNeeded) {
    ctl_app_names names;
    testing::internal::CaptureStderr();
    world::after_stat([](const std::string &) { errno = EACCES; });
    EXPECT_EQ(ctl_read_names(nullptr, &names), CTL_DONE);
    world::reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("utm_appctl: cannot read the applications' names from ") +
                  ctl_names_path + ": Permission denied\n");
}

/// The memory of a process passes for a file, and cannot be read at its beginning.
TEST(ClientNames, NeedAFileThatCanBeReadToItsEnd) {
    ctl_app_names names;
    testing::internal::CaptureStderr();
    EXPECT_EQ(ctl_read_names("/proc/self/mem", &names), CTL_USAGE);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("utm_appctl: cannot read the applications' names from /proc/self/mem: ") +
                  strerror(EIO) + "\n");
}

TEST(ClientNames, AreFoundByNumber) {
    ctl_app_names names;
    ASSERT_TRUE(names.add({305, "first"}) && names.add({305, "second"}) && names.add({-1, "odd"}));
    EXPECT_STREQ(ctl_find_name(names, 305), "first");
    EXPECT_STREQ(ctl_find_name(names, -1), "odd");
    EXPECT_EQ(ctl_find_name(names, 306), nullptr);
    EXPECT_EQ(ctl_find_name({}, 305), nullptr);
}

TEST(ClientNames, LeadToANumberWhateverTheCase) {
    ctl_app_names names;
    ASSERT_TRUE(names.add({305, "Video"}) && names.add({306, "video"}) && names.add({307, "9"}));
    const std::pair<const char *, int32_t> cases[] = {
        {"Video", 305}, {"vIDEO", 305}, {"999", 999}, {"-4", -4}, {"9", 9}};
    for (const auto &[text, expected] : cases) {
        int32_t app_id = 0;
        EXPECT_TRUE(ctl_find_app(names, text, &app_id)) << text;
        EXPECT_EQ(app_id, expected) << text;
    }
    for (const char *text : {"", "vide", "videos", "3 05", "99999999999"}) {
        int32_t app_id = 0;
        EXPECT_FALSE(ctl_find_app(names, text, &app_id)) << text;
    }
}

} // namespace

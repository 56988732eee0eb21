/// What `apply` remembers: written, read, damaged, locked, and in folders that it may not use.

#include "client/apply_memory.h"

#include "tests/unit/support/apply_fixture.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

const std::string memory_folder = "/tmp/apply_memory_test";

class ClientApplyMemory : public testing::Test {
protected:
    void SetUp() override { std::filesystem::remove_all(memory_folder); }
    void TearDown() override { std::filesystem::remove_all(memory_folder); }

    static ctl_exit open(ctl_state_folder *folder, const std::string &path = memory_folder) {
        testing::internal::CaptureStderr();
        const ctl_exit status = ctl_state_folder_open(path.c_str(), folder);
        said() = testing::internal::GetCapturedStderr();
        return status;
    }

    static std::string &said() {
        static std::string text;
        return text;
    }

    static std::string file(const std::string &name) {
        std::ostringstream text;
        text << std::ifstream(memory_folder + "/" + name).rdbuf();
        return text.str();
    }

    static void write_file(const std::string &text) {
        std::ofstream(memory_folder + "/applied.json") << text;
    }

    static std::string read(ctl_apply_memory *memory) {
        ctl_state_folder folder;
        EXPECT_EQ(open(&folder), CTL_DONE) << said();
        testing::internal::CaptureStderr();
        EXPECT_EQ(ctl_memory_read(folder, memory), CTL_DONE);
        return testing::internal::GetCapturedStderr();
    }
};

constexpr char whole[] =
    R"({"complete":true,"limits":true,"people":[{"number":1,"enforced":true,)"
    R"("weekdays":[60,60,60,60,60,60,60],"devices":["02:00:00:00:00:0A"],)"
    R"("rules":[[305,1,45],[306,2,0]]},{"number":7,"enforced":false,)"
    R"("weekdays":[1440,1440,1440,1440,1440,1440,1440],"devices":["02:00:00:00:00:0B"],)"
    R"("rules":[]}]})";

constexpr char under_way[] =
    R"({"complete":false,"limits":true,"people":[{"number":1,"enforced":true,)"
    R"("weekdays":[60,60,60,60,60,60,60],"devices":["02:00:00:00:00:0A"],)"
    R"("rules":[[305,1,45],[306,2,0]]},{"number":7,"enforced":false,)"
    R"("weekdays":[1440,1440,1440,1440,1440,1440,1440],"devices":["02:00:00:00:00:0B"],)"
    R"("rules":[]}],"devices":["02:00:00:00:00:0C","02:00:00:00:00:0A","02:00:00:00:00:0D"],)"
    R"("release":[1],"scratch":-2147483648})";

TEST_F(ClientApplyMemory, RemembersTheHouseholdAndStrangersAtTheEnd) {
    household_t household = {};
    apply::fill(
        &household,
        {{.number = 1, .limit = 60, .devices = {0x0A}, .rules = {{305, 1, 45}, {306, 2, 0}}}});
    ctl_daemon_state state = {};
    apply::fill(&state, {{.number = 1}, {.number = 7, .enabled = false, .devices = {0x0B}}});
    ctl_state_folder folder;
    ASSERT_EQ(open(&folder), CTL_DONE) << said();
    ASSERT_EQ(
        ctl_state_write(folder, "applied.json", ctl_memory_at_end(household, state, false).get()),
        CTL_DONE);
    EXPECT_EQ(file("applied.json"), whole);
    struct stat status = {};
    ASSERT_EQ(stat((memory_folder + "/applied.json").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_FALSE(std::filesystem::exists(memory_folder + "/.new"));
}

TEST_F(ClientApplyMemory, ForgetsNothingOnTheWay) {
    std::filesystem::create_directory(memory_folder);
    write_file(whole);
    ctl_apply_memory memory = {};
    ASSERT_EQ(read(&memory), "");
    ASSERT_TRUE(memory.devices.add(apply::mac(0x0C)));
    household_t household = {};
    apply::fill(&household, {{.devices = {0x0D}}});
    ctl_daemon_state state = {};
    apply::fill(&state, {{.devices = {0x0A}}});
    plain_vector<int32_t> release;
    ASSERT_TRUE(release.add(1));
    ctl_state_folder folder;
    ASSERT_EQ(open(&folder), CTL_DONE) << said();
    ASSERT_EQ(
        ctl_state_write(folder, "applied.json",
                        ctl_memory_under_way(memory, household, state, release, INT32_MIN).get()),
        CTL_DONE);
    EXPECT_EQ(file("applied.json"), under_way);
}

TEST_F(ClientApplyMemory, ReadsWhatItHasWritten) {
    std::filesystem::create_directory(memory_folder);
    write_file(under_way);
    ctl_apply_memory memory = {};
    EXPECT_EQ(read(&memory), "");
    EXPECT_TRUE(memory.exists);
    EXPECT_FALSE(memory.is_complete);
    EXPECT_TRUE(memory.applied.active);
    ASSERT_EQ(memory.applied.people.size(), 2U);
    const ctl_daemon_person &mia = memory.applied.people[0];
    EXPECT_EQ(mia.number, 1);
    EXPECT_TRUE(mia.enabled);
    EXPECT_EQ(mia.weekday_limits[6], 60);
    EXPECT_TRUE(ctl_state_has_device(memory.applied, mia, apply::mac(0x0A)));
    EXPECT_FALSE(ctl_state_has_device(memory.applied, mia, apply::mac(0x0B)));
    EXPECT_EQ(mia.rules.count, 2U);
    EXPECT_EQ(memory.applied.rules[0].daily_limit, 45);
    EXPECT_FALSE(memory.applied.people[1].enabled);
    EXPECT_EQ(memory.devices.size(), 3U);
    ASSERT_EQ(memory.release.size(), 1U);
    EXPECT_EQ(memory.release[0], 1);
    EXPECT_TRUE(memory.has_scratch);
    EXPECT_EQ(memory.scratch, INT32_MIN);
}

TEST_F(ClientApplyMemory, RemembersNothingAtFirst) {
    ctl_apply_memory memory = {};
    EXPECT_EQ(read(&memory), "");
    EXPECT_FALSE(memory.exists);
    EXPECT_FALSE(memory.has_scratch);
}

TEST_F(ClientApplyMemory, IgnoresADamagedFileWithAWord) {
    std::filesystem::create_directory(memory_folder);
    for (const char *text : {"", "{", "[]", "null", "7", "{\"complete\":tr"}) {
        write_file(text);
        ctl_apply_memory memory = {};
        EXPECT_EQ(read(&memory),
                  "utm_appctl: /tmp/apply_memory_test/applied.json is damaged and ignored: what "
                  "was applied last is not known; apply --repair mends what that could leave "
                  "behind\n")
            << text;
        EXPECT_FALSE(memory.exists);
    }
}

TEST_F(ClientApplyMemory, TakesMembersOfAnotherTypeForNothing) {
    std::filesystem::create_directory(memory_folder);
    for (const char *value : {"null", "7", "\"x\"", "{}", "[null,7,\"x\",[],{}]"}) {
        write_file("{\"people\":" + std::string(value) + ",\"devices\":" + value +
                   ",\"complete\":" + value + ",\"limits\":" + value + "}");
        ctl_apply_memory memory = {};
        EXPECT_EQ(read(&memory), "") << value;
        EXPECT_EQ(memory.applied.people.size(), 0U) << value;
        EXPECT_EQ(memory.devices.size(), 0U) << value;
        write_file("{\"people\":[{\"number\":3,\"weekdays\":" + std::string(value) +
                   ",\"devices\":" + value + ",\"rules\":" + value + "}]}");
        ctl_apply_memory inner = {};
        EXPECT_EQ(read(&inner), "") << value;
        ASSERT_EQ(inner.applied.people.size(), 1U) << value;
        EXPECT_EQ(inner.applied.people[0].devices.count, 0U) << value;
    }
}

TEST_F(ClientApplyMemory, UsesOnlyAFolderOfItsOwn) {
    const std::pair<std::string, std::string> bad[] = {
        {"relative", "its path has to begin with / and to be short"},
        {"/tmp/" + std::string(110, 'x'), "its path has to begin with / and to be short"},
        {"/tmp/none/none", "No such file or directory"},
        {"/dev/null", "Not a directory"},
    };
    for (const auto &[path, reason] : bad) {
        ctl_state_folder folder;
        EXPECT_EQ(open(&folder, path), CTL_BROKEN);
        EXPECT_EQ(said(), "utm_appctl: cannot use the folder " + path + " (" + reason +
                              "): set UTM_APPCTL_STATE to one that is yours and that nobody else "
                              "may write\n");
    }
    std::filesystem::create_directory(memory_folder);
    ASSERT_EQ(chmod(memory_folder.c_str(), 0770), 0);
    ctl_state_folder folder;
    EXPECT_EQ(open(&folder), CTL_BROKEN);
    EXPECT_NE(said().find("(others may write there)"), std::string::npos) << said();
}

TEST_F(ClientApplyMemory, WaitsForAnotherApply) {
    ctl_state_folder first;
    ASSERT_EQ(open(&first), CTL_DONE);
    ASSERT_EQ(ctl_state_folder_lock(&first, 0), CTL_DONE);
    ctl_state_folder second;
    ASSERT_EQ(open(&second), CTL_DONE);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ctl_state_folder_lock(&second, 0), CTL_REFUSED);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "utm_appctl: another apply, process " + std::to_string(getpid()) +
                  ", is at work: try again, or wait longer with -t\n");
    first.lock.reset(-1);
    EXPECT_EQ(ctl_state_folder_lock(&second, 0), CTL_DONE);
}

} // namespace

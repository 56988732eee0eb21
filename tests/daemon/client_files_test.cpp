/// The client and usage files: written, read, and made into a page.

#include "tests/daemon/support/client_fixture.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class ClientFiles : public client_test {
protected:
    void SetUp() override {
        client_test::SetUp();
        fs::remove_all("/tmp/here");
        fs::create_directory("/tmp/here");
    }
    void TearDown() override {
        fs::remove_all("/tmp/here");
        client_test::TearDown();
    }
};

/// @return what a folder holds, or nothing
fs::path only_one_in(const fs::path &folder) {
    for (const auto &entry : fs::directory_iterator(folder))
        return entry.path();
    return {};
}

/// The C libraries' words for it differ.
const std::string NAME_TOO_LONG = IS_EMULATED ? "Filename too long" : "File name too long";

constexpr char NOT_WRITTEN[] =
    "the daemon refused: limits are off (turn them on with activate on), or it cannot write there; "
    "does the folder exist, and is there space?";
constexpr char NOT_READ[] =
    "the daemon refused: limits are off (turn them on with activate on), or the "
    "file is missing, damaged or from the future";
constexpr char NO_REPORT[] =
    "the daemon refused: limits are off (turn them on with activate on), or it "
    "cannot write to the temporary folder";

/// @return the names in a folder
std::vector<std::string> names_in(const char *folder) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

} // namespace

TEST_F(ClientFiles, ARelativePathIsTheClientsOwn) {
    must({"activate", "on"});

    EXPECT_EQ(ctl({"export", "usage.json"}, {.directory = "/tmp/here"}), done());
    EXPECT_EQ(sim_read_file("/tmp/here/usage.json"), empty_document(NOON));
    EXPECT_EQ(ctl({"import", "./usage.json"}, {.directory = "/tmp/here"}), done());
    EXPECT_EQ(ctl({"import", "here/usage.json"}, {.directory = "/tmp"}), done());
}

TEST_F(ClientFiles, UsageMovesFromOneLifeToTheNext) {
    must({"activate", "on"});
    add_mia();
    use(25, {{305, 20}});
    EXPECT_EQ(ctl({"export", "/tmp/here/usage.json"}), done());
    must({"profile", "del", "3"});

    EXPECT_EQ(ctl({"import", "/tmp/here/usage.json"}), done());

    EXPECT_EQ(ctl({"usage", "3", "--apps", "--json"}),
              done(R"({"profile":3,"unit":"day","ago":0,"applications":[)"
                   R"({"app":305,"name":null,"minutes":20}]})"
                   "\n"));
}

TEST_F(ClientFiles, NothingIsWrittenWhileLimitsAreOff) {
    EXPECT_EQ(ctl({"export", "/tmp/here/usage.json"}), fails(1, NOT_WRITTEN));
    EXPECT_EQ(ctl({"import", "/tmp/here/usage.json"}), fails(1, NOT_READ));
    EXPECT_TRUE(fs::is_empty("/tmp/here"));
}

TEST_F(ClientFiles, FilesThatCannotBeAreRefused) {
    must({"activate", "on"});
    ASSERT_TRUE(sim_write_file("/tmp/here/damaged", "{\"user_profile_list\":"));

    EXPECT_EQ(ctl({"export", "/tmp/here/none/usage.json"}), fails(1, NOT_WRITTEN));
    EXPECT_EQ(ctl({"import", "/tmp/here/none"}), fails(1, NOT_READ));
    EXPECT_EQ(ctl({"import", "/tmp/here/damaged"}), fails(1, NOT_READ));
}

TEST_F(ClientFiles, APathThatDoesNotFitIsNotCut) {
    must({"activate", "on"});
    const std::string longest = "/tmp/here/" + std::string(117, 'a');
    EXPECT_EQ(ctl({"export", longest}), done());
    EXPECT_THAT(names_in("/tmp/here"), testing::ElementsAre(std::string(117, 'a')));

    for (const char *verb : {"export", "import"})
        EXPECT_EQ(ctl({verb, longest + "a"}),
                  fails(2, longest + "a is too long: a path may have at most 127 "
                                     "characters"));
    EXPECT_EQ(ctl({"export", std::string(118, 'a')}, {.directory = "/tmp/here"}),
              fails(2, longest + "a is too long: a path may have at most 127 characters"));
    EXPECT_EQ(ctl({"export", ""}), fails(2, "the path is empty: name a file"));
}

TEST_F(ClientFiles, AReportOfNowLeavesNoFileBehind) {
    must({"activate", "on"});
    add_mia();

    const program_end end = ctl({"report"}, {.environment = {{"TMPDIR", "/tmp/here"}}});

    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
    EXPECT_NE(end.out, "");
    EXPECT_TRUE(fs::is_empty("/tmp/here"));
}

TEST_F(ClientFiles, AReportShowsWhatTheDaemonExportsOfNow) {
    must({"activate", "on"});
    add_mia();
    use(25, {{305, 20}});
    must({"export", "/tmp/here/usage.json"});

    const program_end of_now = ctl({"report"});

    EXPECT_EQ(of_now, ctl({"report", "/tmp/here/usage.json"}));
    EXPECT_EQ(of_now.status, 0);
    EXPECT_THAT(of_now.out, testing::HasSubstr("</html>"));
    EXPECT_EQ(ctl({"report", "usage.json"}, {.directory = "/tmp/here"}), of_now);
}

TEST_F(ClientFiles, AReportThatIsRefusedLeavesNoFileBehind) {
    EXPECT_EQ(ctl({"report"}, {.environment = {{"TMPDIR", "/tmp/here"}}}), fails(1, NO_REPORT));
    EXPECT_TRUE(fs::is_empty("/tmp/here"));
}

TEST_F(ClientFiles, AReportThatNobodyCanReadLeavesNoFileBehind) {
    must({"activate", "on"});
    const appctl_setting full = {.environment = {{"TMPDIR", "/tmp/here"}}, .out_path = "/dev/full"};

    EXPECT_EQ(ctl({"report"}, full),
              fails(4, "the output could not be written (No space left on device)"));

    EXPECT_TRUE(fs::is_empty("/tmp/here"));
}

TEST_F(ClientFiles, AReportThatIsBrokenOffLeavesNoFileBehind) {
    must({"activate", "on"});
    for (const int signal_number : {SIGHUP, SIGINT, SIGTERM}) {
        const int blocker = occupy_the_socket_thread();
        auto report = std::async(std::launch::async, [this] {
            return ctl({"report"}, {.environment = {{"TMPDIR", "/tmp/here"}}, .in_child = [] {
                                        sim_write_file("/tmp/pid", std::to_string(getpid()));
                                    }});
        });
        EXPECT_TRUE(
            sim_wait_for([] { return fs::exists(only_one_in("/tmp/here") / "usage.json"); }));
        const pid_t pid = std::stoi(sim_read_file("/tmp/pid"));
        EXPECT_EQ(kill(pid, signal_number), 0);

        EXPECT_EQ(report.get(), program_end{.status = -1}) << signal_number;
        EXPECT_TRUE(fs::is_empty("/tmp/here"));
        open_gates();
        close(blocker);
    }
}

TEST_F(ClientFiles, AReportWithoutAFolderSaysWhich) {
    const std::string too_long = "/tmp/" + std::string(120, 'a');
    EXPECT_EQ(ctl({"report"}, {.environment = {{"TMPDIR", "/tmp/here/none"}}}),
              fails(4, "cannot create a folder in /tmp/here/none (No such file or directory); set "
                       "TMPDIR to another"));
    EXPECT_EQ(ctl({"report"}, {.environment = {{"TMPDIR", too_long}}}),
              fails(4, "cannot create a folder in " + too_long + " (" + NAME_TOO_LONG +
                           "); set TMPDIR to another"));
    EXPECT_THAT(log_lines(), testing::IsEmpty());
}

TEST_F(ClientFiles, ARelativeTemporaryFolderIsNotUsed) {
    must({"activate", "on"});
    const int blocker = occupy_the_socket_thread();
    auto report = std::async(std::launch::async, [this] {
        return ctl({"report"}, {.environment = {{"TMPDIR", "here"}}, .directory = "/tmp"});
    });

    EXPECT_TRUE(sim_wait_for([] {
        const std::vector<std::string> names = names_in("/tmp");
        return std::any_of(names.begin(), names.end(), [](const std::string &name) {
            return name.rfind("utm_appctl.", 0) == 0;
        });
    }));
    EXPECT_TRUE(fs::is_empty("/tmp/here"));
    open_gates();

    EXPECT_EQ(report.get().status, 0);
    close(blocker);
}

TEST_F(ClientFiles, TheFolderOfAReportIsNobodyElsesBusiness) {
    must({"activate", "on"});
    const int blocker = occupy_the_socket_thread();
    auto report = std::async(std::launch::async, [this] {
        return ctl({"report"},
                   {.environment = {{"TMPDIR", "/tmp/here"}}, .in_child = [] { umask(0); }});
    });

    EXPECT_TRUE(sim_wait_for([] { return !fs::is_empty("/tmp/here"); }));
    const auto folder = fs::directory_iterator("/tmp/here");
    EXPECT_EQ(folder->status().permissions(), fs::perms::owner_all);
    open_gates();

    EXPECT_EQ(report.get().status, 0);
    close(blocker);
}

TEST_F(ClientFiles, AReportThatTakesTooLongLeavesNoFileBehind) {
    must({"activate", "on"});
    const int blocker = occupy_the_socket_thread();

    EXPECT_EQ(ctl({"report", "-t", "1"}, {.environment = {{"TMPDIR", "/tmp/here"}}}),
              fails(4, "the daemon did not answer within 1 s: it may be waiting for one of the "
                       "router's programs; try again, or wait longer with -t"));

    EXPECT_TRUE(fs::is_empty("/tmp/here"));
    open_gates();
    close(blocker);
}

TEST_F(ClientFiles, AReportWhoseReaderHasGoneLeavesNoFileBehind) {
    must({"activate", "on"});
    const appctl_setting unread = {.environment = {{"TMPDIR", "/tmp/here"}}, .in_child = [] {
                                       int ends[2];
                                       if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0)
                                           _exit(127);
                                       close(ends[0]);
                                   }};

    EXPECT_EQ(ctl({"report"}, unread), fails(4, "the output could not be written (Broken pipe)"));

    EXPECT_TRUE(fs::is_empty("/tmp/here"));
}

TEST_F(ClientFiles, AReportOfAFileNeedsNoDaemonButTheFile) {
    const program_end end = ctl({"report", "/tmp/here/none", "-s", "/tmp/nobody"});

    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(end.out, "");
    EXPECT_THAT(end.err, testing::AllOf(testing::StartsWith("utm_appctl: "),
                                        testing::HasSubstr("/tmp/here/none"),
                                        testing::HasSubstr("No such file or directory")));
}

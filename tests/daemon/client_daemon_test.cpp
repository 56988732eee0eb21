/// The client and the daemon as a whole: its switches, the interval, signatures.

#include "tests/daemon/support/client_fixture.h"
#include "tests/daemon/support/processes.h"

namespace {

using ClientDaemon = client_test;

constexpr char NOT_LOADED[] = "the daemon refused: the DPI engine did not load the signatures; "
                              "does the file exist, and is it a signature file?";

} // namespace

TEST_F(ClientDaemon, PingSaysNothingAndSucceeds) {
    EXPECT_EQ(ctl({"ping"}), done());
    EXPECT_THAT(log_lines(), testing::ElementsAre("[socket] Receive cmd type=0"));
}

TEST_F(ClientDaemon, StatusShowsBothSwitches) {
    EXPECT_EQ(ctl({"status"}), done("limits     off\ndebug log  on\n"));
    EXPECT_EQ(ctl({"activate", "on"}), done());
    EXPECT_EQ(ctl({"debug", "off"}), done());
    EXPECT_EQ(ctl({"status"}), done("limits     on\ndebug log  off\n"));
}

TEST_F(ClientDaemon, StatusIsADocument) {
    EXPECT_EQ(ctl({"status", "--json"}), done("{\"active\":false,\"debug\":true}\n"));
    must({"activate", "on"});
    must({"debug", "off"});
    const program_end end = ctl({"status", "-j"});
    EXPECT_EQ(end, done("{\"active\":true,\"debug\":false}\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(ClientDaemon, ActivateTurnsTheRouterOnAndOff) {
    EXPECT_EQ(ctl({"activate", "on"}), done());
    EXPECT_EQ(ctl({"activate", "off"}), done());

    const text_lines expected = {"lcsh apg on", "notify status_changed 1 1", "lcsh apg off",
                                 "notify status_changed 1 0"};
    EXPECT_EQ(journal(), expected);
}

TEST_F(ClientDaemon, ASwitchKnowsOnAndOffAlone) {
    for (const char *verb : {"activate", "debug"})
        for (const char *word : {"1", "ON", "", "offf"})
            EXPECT_EQ(ctl({verb, word}),
                      fails(2, "\"" + std::string(word) + "\" is neither on nor off"));
    EXPECT_THAT(log_lines(), testing::IsEmpty()) << "nothing was asked";
}

TEST_F(ClientDaemon, TheIntervalIsShownAndSet) {
    EXPECT_EQ(ctl({"interval", "set", "1h30m"}), done());
    EXPECT_EQ(ctl({"interval", "show"}), done("90 (1h30m)\n"));
    EXPECT_EQ(ctl({"interval", "set", "45"}), done());
    EXPECT_EQ(ctl({"interval", "show"}), done("45 (45m)\n"));
    const program_end end = ctl({"interval", "show", "--json"});
    EXPECT_EQ(end, done("{\"interval\":45}\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(ClientDaemon, AnIntervalOfNothingIsRefused) {
    EXPECT_EQ(ctl({"interval", "set", "0"}),
              fails(1, "the daemon refused: the interval must be at least one minute"));
    EXPECT_EQ(ctl({"interval", "set", "soon"}),
              fails(2, "\"soon\" is not a time: give minutes, such as 90, 90m or 1h30m"));
}

TEST_F(ClientDaemon, ASignatureIsLoaded) {
    ASSERT_TRUE(sim_write_file("/tmp/good", "signature"));

    EXPECT_EQ(ctl({"signature", "load", "/tmp/good"}), done());
    EXPECT_EQ(ctl({"signature", "load", "good"}, {.directory = "/tmp"}), done());

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh load /tmp/good", "lcsh load /tmp/good"));
}

TEST_F(ClientDaemon, ASignatureThatIsNotThereIsRefused) {
    EXPECT_EQ(ctl({"signature", "load", "/tmp/none"}), fails(1, NOT_LOADED));
    EXPECT_THAT(journal(), testing::ElementsAre("lcsh load /tmp/none"));
}

TEST_F(ClientDaemon, ASignatureWhoseLoadCannotStartIsRefused) {
    ASSERT_TRUE(sim_write_file("/tmp/good", "signature"));
    // The connection gets the last descriptor, and the daemon's answer is its short one.
    ASSERT_TRUE(limit_descriptors(daemon.pid, next_descriptor(daemon.pid) + 1));

    EXPECT_EQ(ctl({"signature", "load", "/tmp/good"}), fails(1, NOT_LOADED));

    EXPECT_THAT(journal(), testing::IsEmpty()) << "it could start after all";
    ASSERT_TRUE(limit_descriptors(daemon.pid, 1024));
}

TEST_F(ClientDaemon, ASignaturePathThatAShellWouldReadIsNotSent) {
    EXPECT_EQ(ctl({"signature", "load", "/tmp/a;reboot"}),
              fails(2, "/tmp/a;reboot: a shell reads this path, so only letters, digits and "
                       "/._-+,=@%: are allowed; rename the file"));
    const std::string long_path = "/tmp/" + std::string(113, 'a');
    EXPECT_EQ(
        ctl({"signature", "load", long_path}),
        fails(2, long_path + " is too long: a signature's path may have at most 117 characters"));
    EXPECT_THAT(journal(), testing::IsEmpty());
}

TEST_F(ClientDaemon, TheLongestSignaturePathArrivesWhole) {
    const std::string path = "/tmp/" + std::string(112, 'a');
    ASSERT_TRUE(sim_write_file(path, "signature"));

    EXPECT_EQ(ctl({"signature", "load", path}), done());

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh load " + path));
}

/// The client and the daemon as a whole: its switches, the interval, signatures.

#include "tests/daemon/support/client_fixture.h"
#include "tests/daemon/support/processes.h"

namespace {

using client_daemon = client_test;

constexpr char NOT_LOADED[] = "the daemon refused: the DPI engine did not load the signatures; "
                              "does the file exist, and is it a signature file?";

} // namespace

TEST_F(client_daemon, ping_says_nothing_and_succeeds) {
    EXPECT_EQ(ctl({"ping"}), done());
    EXPECT_THAT(log_lines(), testing::ElementsAre("[socket] Receive cmd type=0"));
}

TEST_F(client_daemon, status_shows_both_switches) {
    EXPECT_EQ(ctl({"status"}), done("limits     off\ndebug log  on\n"));
    EXPECT_EQ(ctl({"activate", "on"}), done());
    EXPECT_EQ(ctl({"debug", "off"}), done());
    EXPECT_EQ(ctl({"status"}), done("limits     on\ndebug log  off\n"));
}

TEST_F(client_daemon, status_is_a_document) {
    EXPECT_EQ(ctl({"status", "--json"}), done("{\"active\":false,\"debug\":true}\n"));
    must({"activate", "on"});
    must({"debug", "off"});
    const appctl_end end = ctl({"status", "-j"});
    EXPECT_EQ(end, done("{\"active\":true,\"debug\":false}\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(client_daemon, activate_turns_the_router_on_and_off) {
    EXPECT_EQ(ctl({"activate", "on"}), done());
    EXPECT_EQ(ctl({"activate", "off"}), done());

    const text_lines expected = {"lcsh apg on", "notify status_changed 1 1", "lcsh apg off",
                                 "notify status_changed 1 0"};
    EXPECT_EQ(journal(), expected);
}

TEST_F(client_daemon, a_switch_knows_on_and_off_alone) {
    for (const char *verb : {"activate", "debug"})
        for (const char *word : {"1", "ON", "", "offf"})
            EXPECT_EQ(ctl({verb, word}),
                      fails(2, "\"" + std::string(word) + "\" is neither on nor off"));
    EXPECT_THAT(log_lines(), testing::IsEmpty()) << "nothing was asked";
}

TEST_F(client_daemon, the_interval_is_shown_and_set) {
    EXPECT_EQ(ctl({"interval", "set", "1h30m"}), done());
    EXPECT_EQ(ctl({"interval", "show"}), done("90 (1h30m)\n"));
    EXPECT_EQ(ctl({"interval", "set", "45"}), done());
    EXPECT_EQ(ctl({"interval", "show"}), done("45 (45m)\n"));
    const appctl_end end = ctl({"interval", "show", "--json"});
    EXPECT_EQ(end, done("{\"interval\":45}\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(client_daemon, an_interval_of_nothing_is_refused) {
    EXPECT_EQ(ctl({"interval", "set", "0"}),
              fails(1, "the daemon refused: the interval must be at least one minute"));
    EXPECT_EQ(ctl({"interval", "set", "soon"}),
              fails(2, "\"soon\" is not a time: give minutes, such as 90, 90m or 1h30m"));
}

TEST_F(client_daemon, a_signature_is_loaded) {
    ASSERT_TRUE(sim_write_file("/tmp/good", "signature"));

    EXPECT_EQ(ctl({"signature", "load", "/tmp/good"}), done());
    EXPECT_EQ(ctl({"signature", "load", "good"}, {.directory = "/tmp"}), done());

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh load /tmp/good", "lcsh load /tmp/good"));
}

TEST_F(client_daemon, a_signature_that_is_not_there_is_refused) {
    EXPECT_EQ(ctl({"signature", "load", "/tmp/none"}), fails(1, NOT_LOADED));
    EXPECT_THAT(journal(), testing::ElementsAre("lcsh load /tmp/none"));
}

TEST_F(client_daemon, a_signature_whose_load_cannot_start_is_refused) {
    ASSERT_TRUE(sim_write_file("/tmp/good", "signature"));
    // The connection gets the last descriptor, and the daemon's answer is its short one.
    ASSERT_TRUE(limit_descriptors(daemon.pid, next_descriptor(daemon.pid) + 1));

    EXPECT_EQ(ctl({"signature", "load", "/tmp/good"}), fails(1, NOT_LOADED));

    EXPECT_THAT(journal(), testing::IsEmpty()) << "it could start after all";
    ASSERT_TRUE(limit_descriptors(daemon.pid, 1024));
}

TEST_F(client_daemon, a_signature_path_that_a_shell_would_read_is_not_sent) {
    EXPECT_EQ(ctl({"signature", "load", "/tmp/a;reboot"}),
              fails(2, "/tmp/a;reboot: a shell reads this path, so only letters, digits and "
                       "/._-+,=@%: are allowed; rename the file"));
    const std::string long_path = "/tmp/" + std::string(113, 'a');
    EXPECT_EQ(
        ctl({"signature", "load", long_path}),
        fails(2, long_path + " is too long: a signature's path may have at most 117 characters"));
    EXPECT_THAT(journal(), testing::IsEmpty());
}

TEST_F(client_daemon, the_longest_signature_path_arrives_whole) {
    const std::string path = "/tmp/" + std::string(112, 'a');
    ASSERT_TRUE(sim_write_file(path, "signature"));

    EXPECT_EQ(ctl({"signature", "load", path}), done());

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh load " + path));
}

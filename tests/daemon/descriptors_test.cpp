/// What the programs that the daemon starts get of its descriptors: nothing.

#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"

#include <algorithm>
#include <filesystem>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

constexpr char RECORDERS[] = "/tmp/bin";

/// Goes before the fakes on the PATH: writes down what it inherited, then is the program of
/// its name.
constexpr char RECORDER_SCRIPT[] = R"(#!/bin/sh
name=${0##*/}
ls -l /proc/self/fd >"$UTM_SIM_DIR/inherited.$name.$$"
real=")" UTM_FAKES R"(/$name"
[ -x "$real" ] || real=/bin/$name
exec "$real" "$@"
)";

/// Takes a listing of `ls -l` apart. The directory that `ls` itself reads does not count.
std::vector<int> descriptors_in(const std::string &listing) {
    std::vector<int> numbers;
    for (const std::string &line : sim_split_lines(listing)) {
        const size_t arrow = line.find(" -> ");
        if (arrow == std::string::npos || line.find(" -> /proc/") != std::string::npos)
            continue;
        numbers.push_back(atoi(line.c_str() + line.rfind(' ', arrow - 1)));
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

/// @return what each start of a program inherited
std::vector<std::vector<int>> inherited_by(const std::string &program) {
    std::vector<std::vector<int>> starts;
    for (const auto &entry : std::filesystem::directory_iterator(ROUTER_DIR))
        if (entry.path().filename().string().rfind("inherited." + program + ".", 0) == 0)
            starts.push_back(descriptors_in(sim_read_file(entry.path())));
    return starts;
}

class DaemonOpenDescriptors : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        ASSERT_EQ(mkdir(RECORDERS, 0777), 0);
        for (const char *program : {"lcsh", "ubus", "mkdir"}) {
            const std::string path = std::string(RECORDERS) + "/" + program;
            ASSERT_TRUE(sim_write_file(path, RECORDER_SCRIPT));
            ASSERT_EQ(chmod(path.c_str(), 0777), 0);
        }
        options.fakes = RECORDERS;
    }
    /// Profile 1 with a device and a rule that blocks application 300, with the feature on.
    void set_up_a_profile() {
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
        EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2})), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 1}), 0);
        EXPECT_EQ(ask(sim_rules_command(1, {{300, 1, 5}})), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 1, .arg1 = 1}), 0);
    }
};

} // namespace

TEST_F(DaemonOpenDescriptors, ADescriptorThatIsInheritedWouldBeSeen) {
    const std::string command = std::string("exec 9</dev/null; UTM_SIM_DIR=") + ROUTER_DIR + " " +
                                RECORDERS + "/lcsh apg on";

    ASSERT_EQ(system(command.c_str()), 0);

    EXPECT_THAT(inherited_by("lcsh"), ElementsAre(ElementsAre(0, 1, 2, 9)));
}

TEST_F(DaemonOpenDescriptors, CommandsInheritTheStandardStreamsOnly) {
    start();
    const int idle = sim_connect();
    ASSERT_TRUE(wait_for_descriptors(5));

    set_up_a_profile();
    EXPECT_EQ(ask(sim_rules_command(1, {{301, 2, 0}})), 0);

    EXPECT_THAT(journal(),
                ElementsAre(router_query(NOON, NOON), "lcsh apg on", "notify status_changed 1 1",
                            "lcsh apg acl set 02:00:00:00:00:00 301 0 18"));
    EXPECT_THAT(inherited_by("lcsh"), SizeIs(2));
    EXPECT_THAT(inherited_by("lcsh"), Each(ElementsAre(0, 1, 2)));
    close(idle);
}

TEST_F(DaemonOpenDescriptors, CommandsDoNotInheritWhatTheDaemonSStarterLeftOpen) {
    options.in_child = [] {
        dup2(0, STDERR_FILENO + 1);
        dup2(0, STDERR_FILENO + 2);
        dup2(0, FD_SETSIZE - 1);
    };
    start();
    set_up_a_profile();

    EXPECT_THAT(inherited_by("lcsh"), ElementsAre(ElementsAre(0, 1, 2)));
    EXPECT_THAT(inherited_by("ubus"), ElementsAre(ElementsAre(0, 1, 2)));
}

TEST_F(DaemonOpenDescriptors, AQueryAndASignatureThatRunTogetherInheritNothingOfEachOther) {
    start_with_log();
    const int idle = sim_connect();
    hold_up_a_tick();

    const int busy = occupy_the_socket_thread();
    ASSERT_EQ(children_of(daemon.pid).size(), 2u) << "both run";
    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(busy)), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_THAT(inherited_by("ubus"), SizeIs(2));
    EXPECT_THAT(inherited_by("ubus"), Each(ElementsAre(0, 1, 2)));
    EXPECT_THAT(inherited_by("lcsh"), ElementsAre(ElementsAre(0, 1, 2)));
    EXPECT_THAT(inherited_by("mkdir"), ElementsAre(ElementsAre(0, 1, 2))) << "for the log";
    close(busy);
    close(idle);
}

TEST_F(DaemonOpenDescriptors, ATickBesideASignatureThatLoadsInheritsTheStandardStreamsOnly) {
    start();
    set_up_a_profile();
    prescribe("reply.profile", usage_reply({{300, 5}}));
    const int idle = sim_connect();
    const int busy = occupy_the_socket_thread();

    tick();
    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(busy)), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_THAT(journal(), testing::Contains("lcsh apg acl set 02:00:00:00:00:00 300 0 18"));
    EXPECT_THAT(inherited_by("lcsh"), SizeIs(3)) << "on, load, set";
    EXPECT_THAT(inherited_by("lcsh"), Each(ElementsAre(0, 1, 2)));
    EXPECT_THAT(inherited_by("ubus"), SizeIs(3));
    EXPECT_THAT(inherited_by("ubus"), Each(ElementsAre(0, 1, 2)));
    close(busy);
    close(idle);
}

TEST_F(DaemonOpenDescriptors, AConnectionClosesWhicheverEndClosesItWhileAQueryRuns) {
    start();
    const int asking = sim_connect();
    const int idle = sim_connect();
    ASSERT_TRUE(wait_for_descriptors(6));
    hold_up_a_tick();
    ASSERT_TRUE(wait_for_descriptors(7)) << "the socket, the clients and the query's pipe";

    ASSERT_TRUE(sim_send(asking, PING));
    const sim_answer answer = sim_read_answer(asking);
    close(idle);

    EXPECT_EQ(sim_status(answer), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_TRUE(answer.closed) << "the query keeps the connection open";
    EXPECT_TRUE(wait_for_descriptors(5)) << "a connection stays";
    EXPECT_FALSE(children_of(daemon.pid).empty()) << "the query is over";
    close(asking);
}

TEST_F(DaemonOpenDescriptors, TicksAndCommandsLeaveNoDescriptorBehind) {
    start();
    set_up_a_profile();
    for (int i = 0; i < 20; ++i) {
        tick();
        EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_LOAD_SIGNATURE, "/tmp/none")), 255);
    }

    EXPECT_TRUE(wait_for_descriptors(4));
}

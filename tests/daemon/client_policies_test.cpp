/// The client and policies: rules for applications by number and by name.

#include "tests/daemon/support/client_fixture.h"

namespace {

class client_policies : public client_test {
protected:
    void SetUp() override {
        client_test::SetUp();
        ASSERT_TRUE(sim_write_file("/tmp/apps", "305 Video\n306 Chat=Room\n"));
    }
    /// Profile 3 has policy 7, the feature is on, and the journal begins here.
    void bind() {
        add_mia();
        must({"activate", "on"});
        must({"policy", "create", "7"});
        must({"policy", "bind", "3", "7"});
        unlink("/tmp/router/journal");
        unlink(LOG_PATH);
    }
};

appctl_end no_rule(const std::string &text) {
    return fails(2, "\"" + text +
                        "\" is not a rule: give APP=MINUTES (at most 65535), APP=block or "
                        "APP=remove");
}

constexpr char BOUND_ALREADY[] =
    "the daemon refused: the profile or the policy does not exist, or one of them is bound already";

} // namespace

TEST_F(client_policies, a_policy_is_created_once) {
    EXPECT_EQ(ctl({"policy", "create", "7"}), done());
    const appctl_end refused =
        fails(1, "the daemon refused: the policy exists already, or its number is less than 1");
    EXPECT_EQ(ctl({"policy", "create", "7"}), refused);
    EXPECT_EQ(ctl({"policy", "create", "0"}), refused);
    EXPECT_EQ(ctl({"policy", "create", "seven"}),
              fails(2, "\"seven\" is not a policy's number: give a whole number, such as 3"));
}

TEST_F(client_policies, rules_reach_the_router) {
    bind();

    EXPECT_EQ(ctl({"policy", "rule", "7", "305=block", "306=0"}), done());
    EXPECT_EQ(ctl({"policy", "rule", "7", "305=remove"}), done());

    EXPECT_EQ(sim_read_file(LOG_PATH), R"([socket] Receive cmd type=43
Policy 7 add app 305 action 2 limit 0 success
Policy 7 add app 306 action 1 limit 0 success
Add apps to policy 7 success
[socket] Receive cmd type=43
Policy 7 update app 305 action 0 limit 0 success
Add apps to policy 7 success
)");
    EXPECT_THAT(journal(), testing::ElementsAre("lcsh apg acl set 02:00:00:00:00:0A 305 0 18",
                                                "lcsh apg acl del 02:00:00:00:00:0A 305 0"));
}

TEST_F(client_policies, applications_go_by_name_whatever_the_case) {
    must({"policy", "create", "7"});
    unlink(LOG_PATH);

    EXPECT_EQ(ctl({"policy", "rule", "7", "-n", "/tmp/apps", "vIDEO=1h30m", "chat=room=block"}),
              done());

    EXPECT_EQ(sim_read_file(LOG_PATH), R"([socket] Receive cmd type=43
Policy 7 add app 305 action 1 limit 90 success
Policy 7 add app 306 action 2 limit 0 success
Add apps to policy 7 success
)");
}

TEST_F(client_policies, an_unknown_name_is_not_sent) {
    must({"policy", "create", "7"});
    EXPECT_EQ(ctl({"policy", "rule", "7", "305=5", "musik=block", "--names", "/tmp/apps"}),
              fails(2, "\"musik\": unknown application; give its number, or name it in a "
                       "file for --names"));
    EXPECT_EQ(log_count("[socket] Receive cmd type=43"), 0u);
}

TEST_F(client_policies, what_is_no_rule_is_not_sent) {
    const std::string long_name(64, 'x');
    for (const std::string &text :
         {std::string("305"), std::string("=block"), std::string("305="), std::string("305=65536"),
          std::string("305=BLOCK"), std::string("305=-1"), std::string(""), long_name + "=block"})
        EXPECT_EQ(ctl({"policy", "rule", "7", text}), no_rule(text));
    EXPECT_THAT(log_lines(), testing::IsEmpty());
}

TEST_F(client_policies, the_largest_limit_arrives) {
    must({"policy", "create", "7"});
    EXPECT_EQ(ctl({"policy", "rule", "7", "305=65535", "2147483647=1092h15m"}), done());
    EXPECT_EQ(log_count("Policy 7 add app 305 action 1 limit 65535 success"), 1u);
    EXPECT_EQ(log_count("Policy 7 add app 2147483647 action 1 limit 65535 success"), 1u);
}

TEST_F(client_policies, more_than_ten_rules_go_in_several_requests_in_their_order) {
    must({"policy", "create", "7"});
    unlink(LOG_PATH);
    std::vector<std::string> words = {"policy", "rule", "7"};
    text_lines expected;
    for (int app = 1; app <= 21; ++app) {
        if (app % 10 == 1)
            expected.push_back("[socket] Receive cmd type=43");
        const std::string number = std::to_string(app);
        words.push_back(number + "=" + number + "m");
        expected.push_back("Policy 7 add app " + number + " action 1 limit " + number + " success");
        if (app % 10 == 0 || app == 21)
            expected.push_back("Add apps to policy 7 success");
    }

    EXPECT_EQ(ctl(words), done());

    EXPECT_EQ(log_lines(), expected);
}

TEST_F(client_policies, a_refusal_ends_the_requests) {
    std::vector<std::string> words = {"policy", "rule", "8"};
    for (int app = 1; app <= 11; ++app)
        words.push_back(std::to_string(app) + "=block");

    EXPECT_EQ(ctl(words),
              fails(1, "the daemon refused: no such policy; create it with policy create"));

    EXPECT_EQ(log_count("[socket] Receive cmd type=43"), 1u);
}

TEST_F(client_policies, a_policy_is_bound_once_and_for_good) {
    add_mia();
    must({"policy", "create", "7"});
    EXPECT_EQ(ctl({"policy", "bind", "3", "8"}), fails(1, BOUND_ALREADY));
    EXPECT_EQ(ctl({"policy", "bind", "9", "7"}), fails(1, BOUND_ALREADY));
    EXPECT_EQ(ctl({"policy", "bind", "3", "7"}), done());
    EXPECT_EQ(ctl({"policy", "bind", "3", "7"}), fails(1, BOUND_ALREADY));
}

TEST_F(client_policies, clearing_a_policy_lets_its_applications_go) {
    bind();
    must({"policy", "rule", "7", "305=block", "306=block"});
    unlink("/tmp/router/journal");

    EXPECT_EQ(ctl({"policy", "clear", "7"}), done());
    EXPECT_EQ(ctl({"policy", "clear", "8"}), fails(1, "the daemon refused: no such policy"));

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh apg acl reset 02:00:00:00:00:0A"));
}

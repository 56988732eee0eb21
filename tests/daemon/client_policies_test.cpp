/// The client and policies: rules for applications by number and by name.

#include "tests/daemon/support/client_fixture.h"

namespace {

class ClientPolicies : public client_test {
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

program_end no_rule(const std::string &text) {
    return fails(2, "\"" + text +
                        "\" is not a rule: give APP=MINUTES (at most 65535), APP=block or "
                        "APP=remove");
}

constexpr char BOUND_ALREADY[] =
    "the daemon refused: the profile or the policy does not exist, or one of them is bound already";

} // namespace

TEST_F(ClientPolicies, APolicyIsCreatedOnce) {
    EXPECT_EQ(ctl({"policy", "create", "7"}), done());
    const program_end refused =
        fails(1, "the daemon refused: the policy exists already, or its number is less than 1");
    EXPECT_EQ(ctl({"policy", "create", "7"}), refused);
    EXPECT_EQ(ctl({"policy", "create", "0"}), refused);
    EXPECT_EQ(ctl({"policy", "create", "seven"}),
              fails(2, "\"seven\" is not a policy's number: give a whole number, such as 3"));
}

TEST_F(ClientPolicies, RulesReachTheRouter) {
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

TEST_F(ClientPolicies, ApplicationsGoByNameWhateverTheCase) {
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

TEST_F(ClientPolicies, AnUnknownNameIsNotSent) {
    must({"policy", "create", "7"});
    EXPECT_EQ(ctl({"policy", "rule", "7", "305=5", "musik=block", "--names", "/tmp/apps"}),
              fails(2, "\"musik\": unknown application; give its number, or name it in a "
                       "file for --names"));
    EXPECT_EQ(log_count("[socket] Receive cmd type=43"), 0u);
}

TEST_F(ClientPolicies, WhatIsNoRuleIsNotSent) {
    const std::string long_name(64, 'x');
    for (const std::string &text :
         {std::string("305"), std::string("=block"), std::string("305="), std::string("305=65536"),
          std::string("305=BLOCK"), std::string("305=-1"), std::string(""), long_name + "=block"})
        EXPECT_EQ(ctl({"policy", "rule", "7", text}), no_rule(text));
    EXPECT_THAT(log_lines(), testing::IsEmpty());
}

TEST_F(ClientPolicies, TheLargestLimitArrives) {
    must({"policy", "create", "7"});
    EXPECT_EQ(ctl({"policy", "rule", "7", "305=65535", "2147483647=1092h15m"}), done());
    EXPECT_EQ(log_count("Policy 7 add app 305 action 1 limit 65535 success"), 1u);
    EXPECT_EQ(log_count("Policy 7 add app 2147483647 action 1 limit 65535 success"), 1u);
}

TEST_F(ClientPolicies, MoreThanTenRulesGoInSeveralRequestsInTheirOrder) {
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

TEST_F(ClientPolicies, ARefusalEndsTheRequests) {
    std::vector<std::string> words = {"policy", "rule", "8"};
    for (int app = 1; app <= 11; ++app)
        words.push_back(std::to_string(app) + "=block");

    EXPECT_EQ(ctl(words),
              fails(1, "the daemon refused: no such policy; create it with policy create"));

    EXPECT_EQ(log_count("[socket] Receive cmd type=43"), 1u);
}

TEST_F(ClientPolicies, APolicyIsBoundOnceAndForGood) {
    add_mia();
    must({"policy", "create", "7"});
    EXPECT_EQ(ctl({"policy", "bind", "3", "8"}), fails(1, BOUND_ALREADY));
    EXPECT_EQ(ctl({"policy", "bind", "9", "7"}), fails(1, BOUND_ALREADY));
    EXPECT_EQ(ctl({"policy", "bind", "3", "7"}), done());
    EXPECT_EQ(ctl({"policy", "bind", "3", "7"}), fails(1, BOUND_ALREADY));
}

TEST_F(ClientPolicies, ClearingAPolicyLetsItsApplicationsGo) {
    bind();
    must({"policy", "rule", "7", "305=block", "306=block"});
    unlink("/tmp/router/journal");

    EXPECT_EQ(ctl({"policy", "clear", "7"}), done());
    EXPECT_EQ(ctl({"policy", "clear", "8"}), fails(1, "the daemon refused: no such policy"));

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh apg acl reset 02:00:00:00:00:0A"));
}

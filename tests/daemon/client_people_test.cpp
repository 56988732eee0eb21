/// The client and the people: profiles and their devices, down to the router.

#include "tests/daemon/support/client_fixture.h"

namespace {

using ClientPeople = client_test;

program_end no_number(const std::string &text) {
    return fails(2, "\"" + text + "\" is not a profile's number: give a whole number, such as 3");
}

program_end no_mac(const std::string &text) {
    return fails(2, "\"" + text +
                        "\" is not a MAC address: give six bytes, such as 02:00:00:00:00:1a");
}

} // namespace

TEST_F(ClientPeople, AProfileComesAndGoes) {
    EXPECT_EQ(ctl({"profile", "add", "3"}), done());
    EXPECT_EQ(ctl({"limit", "show", "3"}), done("limit    1440 (24h)\nenabled  no\n"));
    EXPECT_EQ(ctl({"profile", "del", "3"}), done());
    EXPECT_EQ(ctl({"limit", "show", "3"}), fails(1, NO_PROFILE));
}

TEST_F(ClientPeople, AProfileHasAnyNumberOf32Bits) {
    for (const char *id : {"0", "+7", "2147483647"})
        EXPECT_EQ(ctl({"profile", "add", id}), done());
    EXPECT_EQ(ctl({"profile", "add", "--", "-2147483648"}), done());

    const text_lines expected = {
        "[socket] Receive cmd type=1", "Create profile 0 success",
        "[socket] Receive cmd type=1", "Create profile 7 success",
        "[socket] Receive cmd type=1", "Create profile 2147483647 success",
        "[socket] Receive cmd type=1", "Create profile -2147483648 success"};
    EXPECT_EQ(log_lines(), expected);
}

TEST_F(ClientPeople, WhatIsNoNumberIsNotAskedFor) {
    for (const char *text : {"mia", "", "3 ", " 3", "0x3", "2147483648", "1e3", "3.0"})
        EXPECT_EQ(ctl({"profile", "add", text}), no_number(text));
    EXPECT_EQ(ctl({"profile", "del", "--", "-2147483649"}), no_number("-2147483649"));
    EXPECT_EQ(ctl({"profile", "del", "-3"}),
              fails(2, "\"-3\": unknown option; put -- in front of a negative number"));
    EXPECT_THAT(log_lines(), testing::IsEmpty());
}

TEST_F(ClientPeople, ADeviceMayBeWrittenInAnyUsualWay) {
    must({"profile", "add", "3"});
    EXPECT_EQ(ctl({"device", "add", "3", "02:00:00:00:00:1a", "02-00-00-00-00-1B",
                   "02.00.00.00.00.1c", "0200.0000.001d", "020000-00001E", "02000000001F"}),
              done());

    std::string expected = "[socket] Receive cmd type=1\nCreate profile 3 success\n";
    for (const char last : {'A', 'B', 'C', 'D', 'E', 'F'})
        expected += "[socket] Receive cmd type=3\nAdd dev mac = 02:00:00:00:00:1" +
                    std::string(1, last) + " to profile 3 success\n";
    EXPECT_EQ(sim_read_file(LOG_PATH), expected);
}

TEST_F(ClientPeople, OneBadAddressKeepsAllFromBeingSent) {
    must({"profile", "add", "3"});
    for (const char *bad : {"02:00:00:00:00", "02:00:00:00:00:1a:2b", "02:00-00:00:00:1a", "",
                            "02:00:00:00:00:1g", "2:0:0:0:0:1a", "tablet"})
        EXPECT_EQ(ctl({"device", "add", "3", "02:00:00:00:00:0B", bad}), no_mac(bad));
    EXPECT_EQ(log_lines().size(), 2u) << "the profile's alone";
}

TEST_F(ClientPeople, AnAddressDoesNotGoOnInTheNextOperand) {
    must({"profile", "add", "3"});
    EXPECT_EQ(ctl({"device", "add", "3", "02", "fe", "80", "7f", "00", "1a"}), no_mac("02"));
    EXPECT_EQ(ctl({"device", "add", "3", "02fe80", "7f001a"}), no_mac("02fe80"));
}

TEST_F(ClientPeople, ADeviceThatLeavesIsReleased) {
    add_mia();
    must({"activate", "on"});
    unlink("/tmp/router/journal");

    EXPECT_EQ(ctl({"device", "del", "3", "02:00:00:00:00:0A"}), done());

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh apg acl reset 02:00:00:00:00:0A"));
}

TEST_F(ClientPeople, ADeviceOfABlockedProfileIsLetGoByTheHelper) {
    add_mia();
    must({"limit", "set", "3", "10"});
    must({"limit", "enable", "3"});
    must({"activate", "on"});
    use(10, {});
    unlink("/tmp/router/journal");

    EXPECT_EQ(ctl({"device", "del", "3", "02-00-00-00-00-0a"}), done());

    EXPECT_THAT(journal(), testing::ElementsAre("lcsh apg acl reset 02:00:00:00:00:0A",
                                                "profile_daily_limit.sh -C 3"));
}

TEST_F(ClientPeople, DevicesNeedAProfile) {
    EXPECT_EQ(ctl({"device", "add", "9", "02:00:00:00:00:0A", "02:00:00:00:00:0B"}),
              fails(1, NO_PROFILE));
    EXPECT_EQ(ctl({"device", "del", "9", "02:00:00:00:00:0A"}), fails(1, NO_PROFILE));
    EXPECT_EQ(log_count("[socket] Receive cmd type=3"), 1u) << "the second was not tried";
}

/// What the daemon and the client need at run time, and how they are linked: flash on a router is
/// small, and the daemon runs as root. Not built for a sanitizer, whose runtime they would need
/// too.

#include "tests/daemon/support/fixture.h"

#include <cstdio>
#include <gmock/gmock.h>

namespace {

std::string output_of(const std::string &command) {
    std::string output;
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return output;
    char chunk[512];
    while (const size_t got = fread(chunk, 1, sizeof chunk, pipe))
        output.append(chunk, got);
    pclose(pipe);
    return output;
}

text_lines facts_about(const std::string &binary) {
    return sim_split_lines(output_of("LC_ALL=C readelf -hWld '" + binary + "'"));
}

/// @return the libraries that a binary names
text_lines needed_libraries(const std::string &binary) {
    text_lines libraries;
    for (const std::string &line : facts_about(binary)) {
        const size_t start = line.find('[');
        if (line.find("(NEEDED)") != std::string::npos && start != std::string::npos)
            libraries.push_back(line.substr(start + 1, line.find(']') - start - 1));
    }
    return libraries;
}

/// What the linker does for hardening, whatever the optimisation. The shipped binaries, with all
/// that the compiler adds, are looked at by tests/binary.
void expect_hardened_link(const std::string &binary) {
    using testing::Contains;
    using testing::ContainsRegex;
    using testing::Not;
    const text_lines facts = facts_about(binary);

    EXPECT_THAT(facts, Contains(ContainsRegex("Type: +DYN "))) << binary;
    EXPECT_THAT(facts, Contains(ContainsRegex("\\(FLAGS_1\\).* NOW PIE"))) << binary;
    EXPECT_THAT(facts, Contains(ContainsRegex("GNU_RELRO "))) << binary;
    EXPECT_THAT(facts, Contains(ContainsRegex("GNU_STACK .* RW  "))) << binary;
    EXPECT_THAT(facts, Not(Contains(ContainsRegex("LOAD .* RWE ")))) << binary;
    EXPECT_THAT(facts, Not(Contains(ContainsRegex("TEXTREL")))) << binary;
}

} // namespace

TEST(DaemonBinary, ItNeedsLibcJsonCAndTheNotificationLibraryAndNothingElse) {
    EXPECT_THAT(needed_libraries(UTM_DAEMON),
                testing::UnorderedElementsAre(testing::AnyOf("libc.so.6", "libc.so"),
                                              "libjson-c.so.5", "libqvutm_notify.so"));
}

TEST(DaemonBinary, TheClientNeedsLibcAndJsonCAndNothingElse) {
    EXPECT_THAT(
        needed_libraries(UTM_APPCTL),
        testing::UnorderedElementsAre(testing::AnyOf("libc.so.6", "libc.so"), "libjson-c.so.5"));
}

TEST(DaemonBinary, ItAndTheClientAreLinkedHardened) {
    expect_hardened_link(UTM_DAEMON);
    expect_hardened_link(UTM_APPCTL);
}

TEST(DaemonBinary, ItAndTheClientProtectTheirStacks) {
    for (const std::string binary : {UTM_DAEMON, UTM_APPCTL})
        EXPECT_THAT(output_of("LC_ALL=C readelf -W --dyn-syms '" + binary + "'"),
                    testing::HasSubstr(" __stack_chk_fail"))
            << binary;
}

TEST(DaemonBinary, ItKeepsNoDoorForTests) {
    const std::string symbols = output_of("strings '" UTM_DAEMON "'");

    ASSERT_NE(symbols.find("/dev/utm_app_config_socket"), std::string::npos);
    EXPECT_EQ(symbols.find("UTM_SIM"), std::string::npos);
    EXPECT_EQ(symbols.find("/tmp/router"), std::string::npos);
}

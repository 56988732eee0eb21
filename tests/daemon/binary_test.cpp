/// What the daemon needs at run time: flash on a router is small.

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

/// @return the libraries that the binary names
text_lines needed_libraries() {
    text_lines libraries;
    for (const std::string &line : sim_split_lines(output_of("readelf -d '" UTM_DAEMON "'"))) {
        const size_t start = line.find('[');
        if (line.find("(NEEDED)") != std::string::npos && start != std::string::npos)
            libraries.push_back(line.substr(start + 1, line.find(']') - start - 1));
    }
    return libraries;
}

} // namespace

TEST(daemon_binary, it_needs_libc_json_c_and_the_notification_library_and_nothing_else) {
    if (IS_SANITIZED)
        GTEST_SKIP() << "a sanitized build also needs the sanitizer's runtime";

    EXPECT_THAT(needed_libraries(),
                testing::UnorderedElementsAre(testing::AnyOf("libc.so.6", "libc.so"),
                                              "libjson-c.so.5", "libqvutm_notify.so"));
}

TEST(daemon_binary, it_keeps_no_door_for_tests) {
    const std::string symbols = output_of("strings '" UTM_DAEMON "'");

    ASSERT_NE(symbols.find("/dev/utm_app_config_socket"), std::string::npos);
    EXPECT_EQ(symbols.find("UTM_SIM"), std::string::npos);
    EXPECT_EQ(symbols.find("/tmp/router"), std::string::npos);
}

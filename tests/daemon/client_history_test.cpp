/// The client's bar charts on a terminal.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fixture.h"
#include "tests/lib/needs.h"

namespace {

class ClientHistory : public daemon_test {
protected:
    /// @return the last line of profile 3's chart
    std::string today_on(int columns,
                         const std::vector<std::pair<std::string, std::string>> &environment = {}) {
        const program_end end = appctl(
            {"usage", "3", "--history"},
            {.environment = environment, .terminal_columns = columns, .clock_path = clock.path});
        EXPECT_EQ(end.status, 0) << end.err;
        const text_lines lines = sim_split_lines(end.out);
        return lines.empty() ? "" : lines.back();
    }
};

const std::pair<std::string, std::string> UTF_8 = {"LC_ALL", "C.UTF-8"};

} // namespace

TEST_F(ClientHistory, ATerminalGetsColoursUnlessSomebodyWantsNone) {
    UTM_NEEDS("pseudo-terminals", have_terminals());
    start();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 3}), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, {2})), OK);
    prescribe("reply.profile", usage_reply({{305, 45}}));
    tick();
    const std::string plain = "Tue  1 Jan  45  45m  ███████████████████";
    const std::string coloured = "Tue  1 Jan  45  45m  \033[33m███████████████████\033[0m";

    EXPECT_EQ(today_on(40, {UTF_8}), coloured);
    EXPECT_EQ(today_on(36), "Tue  1 Jan  45  45m  \033[33m###############\033[0m");
    EXPECT_EQ(today_on(40, {UTF_8, {"NO_COLOR", "1"}}), plain);
    EXPECT_EQ(today_on(40, {UTF_8, {"TERM", "dumb"}}), plain);
    EXPECT_EQ(today_on(40, {UTF_8, {"NO_COLOR", ""}}), coloured);
}

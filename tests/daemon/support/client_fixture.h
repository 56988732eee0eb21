#pragma once
/// The real client in front of the real daemon.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fixture.h"

/// The daemon is running and logs; the client reads the same virtual clock.
class client_test : public daemon_test {
protected:
    void SetUp() override;

    /// Runs the client against the daemon.
    program_end ctl(const std::vector<std::string> &words, appctl_setting setting = {});
    /// Runs it and expects success without a word; for what a test only needs to be so.
    void must(const std::vector<std::string> &words);

    /// Profile 3 has the tablet, 02:00:00:00:00:0A.
    void add_mia();
    /// Lets a minute pass, after which the statistics say that a profile's devices were online and
    /// used these applications (id, minutes) for so long.
    void use(int online, const std::vector<std::pair<int, int>> &apps);
    /// Goes to the next day, at the same time.
    void sleep_over();
};

/// The daemon's end while commands arrive. Not built for ThreadSanitizer: the end destroys the
/// locks that the socket thread still takes, and it says so.

#include "tests/daemon/support/clients.h"
#include "tests/daemon/support/fixture.h"

namespace {

class daemon_interrupts : public daemon_test {};

} // namespace

TEST_F(daemon_interrupts, an_interrupt_in_the_middle_of_many_commands_ends_it_with_status_0) {
    for (size_t round = 1; round <= (IS_SANITIZED ? 8u : 25u); ++round) {
        start();
        busy_clients clients(3, random_command);
        ASSERT_TRUE(sim_wait_for([&] { return clients.answered() >= 10; }));

        stop();
        clients.stop();

        EXPECT_EQ(clients.left_waiting(), 0u) << "round " << round;
        EXPECT_EQ(log_count("Config handler exit"), round);
    }
}

#pragma once
/// The daemon's life: start-up, the one-minute tick, shut-down.

#include <atomic>
#include <cstdint>

/// 1 while the main loop runs; SIGINT clears it.
extern std::atomic<int> running;

/// The handler of SIGINT and SIGPIPE; any other number does nothing, which is what it is installed
/// for: programs that are started would inherit a signal that is ignored. It runs on whichever
/// thread the kernel picks, so it only stores a flag or appends one line to the log. While the
/// control-socket thread is ended SIGPIPE does nothing either.
void signal_handler(int signo);

/// Settles the inherited descriptors: opens 0 to 2 where they are closed, so that no socket takes
/// their place and is replaced by the null device later, and keeps all others from the programs
/// that the daemon starts.
void utm_app_settle_descriptors();

/// Makes sure that nobody else may write what the daemon makes, its own folders above all.
void utm_app_settle_umask();

/// Installs `signal_handler` for SIGINT and SIGPIPE, and for the signals that do nothing: SIGHUP,
/// SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM and SIGPROF. Failures are ignored.
void utm_app_install_signal_handlers();

/// Creates the locks, empties the store and sets the control socket up.
/// @return 0, or negative when the socket could not be set up (logged)
[[nodiscard]] int32_t utm_app_config_handler_init();

/// Starts the control-socket thread.
/// @return 0, or -1 when the thread could not be created (logged)
[[nodiscard]] int32_t utm_app_config_handler_start();

/// Ends the control-socket thread and removes the socket's path. The thread is woken and not waited
/// for, except where it runs a command: only a command line that hangs holds this up.
void utm_app_config_handler_stop();

/// Destroys all profiles and statistics, which releases every device, and then the locks. Nothing
/// is saved. No other thread is left.
/// @return the result of flushing the profiles
int32_t utm_app_config_handler_exit();

/// Runs the main loop until `running` is cleared: a tick at once, then one after every sixty
/// one-second sleeps.
void utm_app_main_loop();

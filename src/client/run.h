#pragma once
/// The whole of `utm_appctl`, from its command line to its exit status.

#include "client/exit_status.h"

/// Finds the verb, checks its operands and options, and runs it.
[[nodiscard]] ctl_exit ctl_run(int argc, char **argv);

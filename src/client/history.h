#pragma once
/// A profile's last thirty days or four weeks, as a chart or a document.

#include "client/call.h"

/// Answers `usage ID --history [days|weeks]`. The daemon keeps no days of a profile itself, only of
/// its applications: the chart shows these added together, or with `--apps` each on its own.
[[nodiscard]] ctl_exit ctl_show_history(const ctl_call &call, int32_t profile_id);

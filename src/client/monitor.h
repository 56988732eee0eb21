#pragma once
/// `report`, `watch` and `metrics`: what a router can do without, so a program of its own has it,
/// utm_appctl_monitor. utm_appctl knows these verbs as any other, and becomes that program for
/// them.
///
/// Both are linked from the same library. monitor.cpp, which is in it, has the verbs linked in;
/// monitor_apart.cpp, which is not, comes before it in utm_appctl and leaves them out.

#include "client/message.h"

struct ctl_call;

/// Whether `ctl_monitor` becomes the other program, which then reads the household itself.
extern const bool ctl_monitor_is_apart;

/// Runs the verb, or becomes the program that does.
/// @return CTL_USAGE, after a message, where that program is missing
[[nodiscard]] ctl_exit ctl_monitor(const ctl_call &call);

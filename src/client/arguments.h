#pragma once
/// Operands of a command line. Each function complains about a text that it cannot use, in two
/// lines: what is wrong, and how it should be. The caller then ends with CTL_USAGE.

#include "client/message.h"
#include "client/names.h"
#include "format/household.h"
#include "format/protocol.h"
#include "format/spelling.h"

#include <cstdint>
#include <span>
#include <string_view>

struct ctl_verb;

/// How many operands there may be.
struct ctl_bounds {
    size_t least;
    size_t most;
};

/// @param synopsis  such as "ID MAC..." (two or more) or "[PATH]" (one or none)
[[nodiscard]] ctl_bounds ctl_bounds_of(const char *synopsis);

/// @param word  such as "ID", as the synopsis has it but for brackets and dots
/// @return whether the verb takes such an operand
[[nodiscard]] bool ctl_has_operand(const ctl_verb &verb, const char *word);

/// @return the synopsis' word for an operand; the last one's for all that follow it if there can be
///         any number of them; empty where none can stand
[[nodiscard]] std::string_view ctl_operand_word(const ctl_verb &verb, size_t place);

/// Reads operands into a request, each as its word in the verb's synopsis says: ID is a person's
/// name or number and POLICY a number; they go to arg0 or, as the second operand, to arg1, as
/// on|off and the first DAY do; MINUTES go where the verb says; PATH is an overlay. The verb itself
/// reads operands of other words.
/// @return CTL_DONE; CTL_USAGE for a text that is none of these; CTL_REFUSED for a number that the
///         daemon would refuse, which it is not asked: scripts know that status for it
[[nodiscard]] ctl_exit ctl_read_operands(const ctl_verb &verb,
                                         std::span<const char *const> operands,
                                         const household_t &household, utm_app_config_cmd *request);

/// Reads a number of 32 bits, as the daemon has them.
/// @param what  what it is, for the complaint: "a profile's number"
[[nodiscard]] bool ctl_read_number(const char *text, const char *what, int32_t *number);

/// Reads minutes in any of the forms of `spelling_minutes`.
[[nodiscard]] bool ctl_read_minutes(const char *text, int32_t *minutes);

/// Reads a switch in any of the forms of `spelling_switch`.
[[nodiscard]] bool ctl_read_switch(const char *text, int32_t *value);

/// Reads weekdays in any of the forms of `spelling_days`.
[[nodiscard]] bool ctl_read_days(const char *text, weekday_set_t *days);

/// Reads a MAC address in any of the forms of `mac_parse`.
/// @param mac  out: `mac_bytes` bytes in transmission order
[[nodiscard]] bool ctl_read_mac(const char *text, uint8_t *mac);

/// The same for an address that a single device can have.
[[nodiscard]] bool ctl_read_device_mac(const char *text, uint8_t *mac);

/// Reads a policy's rule: APP=MINUTES, APP=block (or "blocked") or APP=allow (or "remove", "free").
[[nodiscard]] bool ctl_read_rule(const ctl_app_names &names, const char *text,
                                 utm_app_config_app_entry *rule);

/// A path as a request carries it.
struct ctl_path {
    char text[UTM_APP_CONFIG_PATH_SIZE];
};

/// Makes a path absolute: the daemon's own directory is the root.
[[nodiscard]] bool ctl_read_path(const char *text, ctl_path *path);

/// The same for a signature. Its path becomes part of a command line that a shell reads as root and
/// that is cut when it is too long, so only short paths of harmless characters pass.
[[nodiscard]] bool ctl_read_signature_path(const char *text, ctl_path *path);

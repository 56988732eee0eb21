#pragma once
/// What the daemon has, as plain records: everything of a usage file that it exports, and what only
/// its answers say. The same records hold what was applied last (client/apply_memory.h).

#include "client/message.h"
#include "client/wire.h"
#include "core/clock.h"
#include "core/json.h"
#include "core/mac.h"
#include "core/vector.h"
#include "format/household.h"
#include "format/usage_file.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

struct ctl_mac {
    uint8_t bytes[mac_bytes];

    bool operator==(const ctl_mac &other) const {
        return memcmp(bytes, other.bytes, mac_bytes) == 0;
    }
};

[[nodiscard]] inline ctl_mac ctl_mac_of(const uint8_t *bytes) {
    ctl_mac mac;
    memcpy(mac.bytes, bytes, mac_bytes);
    return mac;
}

/// `std::find`, without its loop's being unrolled.
template <typename T>
[[gnu::noinline, nodiscard]] bool ctl_contains(const plain_vector<T> &list, const T &element) {
    for (const T &other : list)
        if (other == element)
            return true;
    return false;
}

/// An application's use today.
struct ctl_app_today {
    int32_t app_id;
    int32_t minutes;
};

struct ctl_daemon_person {
    int32_t number;
    int32_t weekday_limits[days_per_week]; ///< Sunday first
    int32_t limit;                         ///< today's own, which midnight takes from its weekday
    int32_t extend;
    int32_t used;   ///< today
    bool enabled;   ///< the limit cuts off
    bool blocked;   ///< is cut off, or would be if limits were on and the limit enabled
    int32_t policy; ///< the bound one, or 0
    household_part_t devices;
    household_part_t rules;
    household_part_t apps;
};

struct ctl_daemon_state {
    bool active = false;      ///< limits are on
    bool has_counted = false; ///< anybody has used anything
    bool is_of_today = false; ///< the file it was read from was written today
    plain_vector<ctl_daemon_person> people;
    plain_vector<ctl_mac> devices;
    plain_vector<config_policy_rule_t> rules;
    plain_vector<ctl_app_today> apps;
};

/// @return whether the daemon is to cut the person off. Without a device there is nothing to cut
///         off, and nobody would be told when it ends, not even at midnight: so the limit waits for
///         one.
[[nodiscard]] inline bool ctl_is_enforced(const household_person_t &person) {
    return person.enforced && person.devices.count != 0;
}

/// @return the person of that number, or null
[[nodiscard]] const ctl_daemon_person *ctl_state_person(const ctl_daemon_state &state,
                                                        int32_t number);

/// @return whether the person has the device
[[nodiscard]] bool ctl_state_has_device(const ctl_daemon_state &state,
                                        const ctl_daemon_person &person, const ctl_mac &mac);

/// @return whether anybody has the device
[[nodiscard]] bool ctl_state_knows_device(const ctl_daemon_state &state, const ctl_mac &mac);

/// Reads what a usage file says. Limits are on, and nobody's is enabled.
/// @param root  a usage file's document
/// @param state  out: empty before
/// @return false when memory ran out
[[nodiscard]] bool ctl_state_read(json_object *root, ctl_daemon_state *state);

/// Opens and reads a usage file.
/// @param objection  out: in words, when there is no document
/// @return the document, or null
[[nodiscard]] json_ptr ctl_usage_file_open(const char *path, const char **objection);

/// Has the daemon, whose limits are on, write down what it has.
/// @param file  a path that it may write to
/// @param document  out: what it has written
/// @return CTL_DONE, or the status to end with, after a message
[[nodiscard]] ctl_exit ctl_state_export(const ctl_wire &wire, const char *file, json_ptr *document);

/// The daemon takes an export for this program for its own periodic one, which it puts off then. So
/// it is told to do that, too; but not while its file may still have to be read: nothing has been
/// counted yet, or the file is older than the daemon, and the daemon too young to have replaced it
/// by itself. Where it cannot, its own log tells.
/// @param socket_path  made when the daemon started; null: its file may be replaced
/// @param state  what it has just exported
void ctl_make_up_for_export(const ctl_wire &wire, const char *socket_path,
                            const ctl_daemon_state &state);

/// Learns what the daemon has, whose limits are on.
/// @param file  as above
/// @param state  out: empty before
[[nodiscard]] ctl_exit ctl_state_learn(const ctl_wire &wire, const char *file,
                                       ctl_daemon_state *state);

/// Asks the daemon for what its getters show of people. Those whom it does not know are left out.
/// @param people  whom to ask for
/// @param known  out: empty before; without devices and rules
[[nodiscard]] ctl_exit ctl_state_ask(const ctl_wire &wire, std::span<const int32_t> people,
                                     plain_vector<ctl_daemon_person> *known);

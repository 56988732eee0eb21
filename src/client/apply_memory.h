#pragma once
/// What `apply` remembers from one time to the next, since the daemon shows neither a device that
/// was removed nor, while limits are off, anything but numbers. It lies in a folder that, like the
/// engine's rules, lasts until the router restarts.
///
/// | file           | what it is                                                            |
/// |----------------|-----------------------------------------------------------------------|
/// | apply.lock     | locked while one `apply` is at work; the number of its process        |
/// | applied.json   | what the daemon was brought to, or is on the way from                 |
/// | as_it_was.json | the use of people whom a repair has to show as used up for a moment   |
/// | used_up.json   | the same as used up                                                   |
///
/// applied.json is written before the first request with everything that may still be blocked
/// somewhere, and once more after the last with what there is then. So an `apply` that dies in
/// between forgets nothing.

#include "client/daemon_state.h"
#include "client/message.h"
#include "core/owners.h"
#include "format/household.h"

#include <cstdint>

struct ctl_apply_memory {
    bool exists;
    bool is_complete;              ///< the `apply` that wrote it came to its end
    ctl_daemon_state applied;      ///< numbers, weekday limits, enabled, devices and rules
    plain_vector<ctl_mac> devices; ///< others that may still have rules in the engine
    plain_vector<int32_t> release; ///< who may still be cut off although the daemon does not know
    bool has_scratch;
    int32_t scratch; ///< a person that was only made to release devices
};

inline constexpr char ctl_applied_name[] = "applied.json";
inline constexpr char ctl_as_it_was_name[] = "as_it_was.json"; ///< the longest of them
inline constexpr char ctl_used_up_name[] = "used_up.json";

/// The folder, locked or not.
struct ctl_state_folder {
    /// The daemon reads files there, so their paths have to fit into a request.
    char path[UTM_APP_CONFIG_PATH_SIZE - sizeof(ctl_as_it_was_name)] = {};
    fd_guard fd;
    fd_guard lock;
};

/// @return as UTM_APPCTL_STATE says, else the default
[[nodiscard]] const char *ctl_state_folder_path();

/// Opens the folder, and makes it when there is none.
/// @return CTL_DONE; CTL_BROKEN after a message: it cannot be used, or is not ours alone
[[nodiscard]] ctl_exit ctl_state_folder_open(const char *path, ctl_state_folder *folder);

/// Waits until no other `apply` is at work.
/// @return CTL_DONE; CTL_REFUSED after a message when one still is
[[nodiscard]] ctl_exit ctl_state_folder_lock(ctl_state_folder *folder, int32_t timeout_s);

/// A file in the folder.
struct ctl_state_path {
    char text[UTM_APP_CONFIG_PATH_SIZE];
};

[[nodiscard]] ctl_state_path ctl_state_file(const ctl_state_folder &folder, const char *name);

/// Writes a document beside the one that there is, and puts it in its place.
/// @return CTL_DONE, or CTL_BROKEN after a message
[[nodiscard]] ctl_exit ctl_state_write(const ctl_state_folder &folder, const char *name,
                                       json_object *document);

void ctl_state_remove(const ctl_state_folder &folder, const char *name);

/// Reads what is remembered. A damaged file is reported and counts as none.
/// @param folder  may be closed: then nothing is remembered
/// @param memory  out: empty before
/// @return CTL_DONE, or CTL_BROKEN after a message: out of memory
[[nodiscard]] ctl_exit ctl_memory_read(const ctl_state_folder &folder, ctl_apply_memory *memory);

/// @return what to remember before the first request, or null: what was applied last, and every
///         device that has been anybody's or will be
/// @param release  people who may be cut off although the daemon does not know
/// @param scratch  a person that is made to release devices
[[nodiscard]] json_ptr ctl_memory_under_way(const ctl_apply_memory &memory,
                                            const household_t &household,
                                            const ctl_daemon_state &state,
                                            const plain_vector<int32_t> &release, int32_t scratch);

/// @return what to remember after the last, or null
/// @param pruned  nobody is left who is not of the household
[[nodiscard]] json_ptr ctl_memory_at_end(const household_t &household,
                                         const ctl_daemon_state &state, bool pruned);

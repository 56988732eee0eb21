#pragma once
/// The event loop of the control-socket thread: a fixed table of descriptors around `select`.
///
/// The table is indexed by descriptor number and takes descriptors 0 to 127. Only the thread that
/// runs the loop touches it (the main thread prepares it before that thread exists), so it has no
/// lock. Registering and unregistering take constant time.

#include <cstdint>
#include <sys/select.h>

inline constexpr int fd_event_capacity = 128;

/// What a descriptor is watched for.
inline constexpr int fd_event_none = -1;
inline constexpr int fd_event_read = 0;
inline constexpr int fd_event_write = 1;

struct fd_event_table {
    fd_set read_set;
    fd_set write_set;
    int capacity;
    int count;                     ///< registered descriptors
    int kind[fd_event_capacity];   ///< per descriptor: fd_event_none, _read or _write
    void *data[fd_event_capacity]; ///< per descriptor: handed back to the callbacks
    int list[fd_event_capacity];   ///< the registered descriptors in slots 0..count-1, else -1
    int pos[fd_event_capacity];    ///< per descriptor: its slot in `list`, or -1
    int max_fd;                    ///< highest registered descriptor, -1 for none
    int max_fd_dirty;              ///< the highest one went: look for it when it is needed
    int paused_fd;                 ///< left out of the next pass, -1 for none
    fd_set ready_read;             ///< working copies for `select`
    fd_set ready_write;
    int ready[fd_event_capacity]; ///< descriptors to serve in the current pass
};

/// The callbacks of a loop. Their results are not looked at.
struct socket_event_handler {
    int (*on_write)(int fd, void *data);
    int (*on_read)(int fd, void *data);
    int (*on_error)(int fd, void *data); ///< part of the record, called by nobody
};

/// Empties the table.
void fd_event_reset();

/// Registers a descriptor; one that is taken, out of range or too many is refused with a log line.
/// @param kind  fd_event_read or fd_event_write; any other registers nothing
/// @param data  handed back to the callbacks
void fd_event_add(int fd, int kind, void *data);

/// Unregisters a descriptor by moving the last slot's into its place.
/// @return 0, or -1 when it was not registered
int fd_event_del(int fd);

/// @return whether the descriptor is registered
[[nodiscard]] bool fd_event_is_registered(int fd);

/// Leaves a descriptor out of the next pass, which lasts until another one is ready, at most a
/// second. For a descriptor that stays ready but cannot be served right now.
void fd_event_pause(int fd);

/// @return the highest registered descriptor, or -1
[[nodiscard]] int fd_event_max_fd();

/// @return 1 if `select` found the descriptor ready for what it is watched for, else 0
[[nodiscard]] int fd_event_is_ready(int fd);

/// Runs one pass: waits up to a second and serves what is ready, in slot order.
/// @return 0 to go on, also after a signal; -1 when `select` failed
[[nodiscard]] int utm_app_config_loop(const socket_event_handler *handler);

#include "control/fd_event.h"

#include "core/debug_log.h"

#include <algorithm>
#include <cerrno>

namespace {

/// One table, for the one thread that waits: the main thread prepares it before the other starts.
fd_event_table table;

/// `select` could take numbers up to 1023, the table has room for 128. A connection beyond it is
/// accepted and left open unserved (ARCHITECTURE.md says what that means).
bool is_in_range(int fd) {
    return fd >= 0 && fd < table.capacity;
}

/// Moves the last slot's descriptor into a slot that becomes free: the list stays dense, so that a
/// pass costs no more than there are descriptors, and nothing is searched.
void free_slot(int fd) {
    const int slot = table.pos[fd];
    const int last = --table.count;
    const int moved = table.list[last];
    table.list[slot] = moved;
    table.pos[moved] = slot;
    table.list[last] = -1;
    table.pos[fd] = -1;
}

/// Fixes the descriptors of a pass before any callback runs, since callbacks change the table.
int collect_ready() {
    int count = 0;
    for (int slot = 0; slot < table.count; ++slot)
        if (fd_event_is_ready(table.list[slot]))
            table.ready[count++] = table.list[slot];
    return count;
}

/// A descriptor is served only when it is ready for its kind. If one is not, the lines in the log
/// tell where to look; one for reading is then tried for writing.
void serve(int fd, const socket_event_handler *handler) {
    const int kind = table.kind[fd];
    if (kind != fd_event_read && kind != fd_event_write)
        return; // unregistered by a callback earlier in this pass
    if (kind == fd_event_read) {
        if (FD_ISSET(fd, &table.ready_read)) {
            handler->on_read(fd, table.data[fd]);
            return;
        }
        utm_app_debug_log("BUG: there should be a read event for %d\n", fd);
    }
    if (FD_ISSET(fd, &table.ready_write))
        handler->on_write(fd, table.data[fd]);
    else
        utm_app_debug_log("BUG: there should be a write event for %d\n", fd);
}

} // namespace

void fd_event_reset() {
    FD_ZERO(&table.read_set);
    FD_ZERO(&table.write_set);
    table.capacity = fd_event_capacity;
    table.count = 0;
    std::fill_n(table.kind, fd_event_capacity, fd_event_none);
    std::fill_n(table.pos, fd_event_capacity, -1);
    std::fill_n(table.list, fd_event_capacity, -1);
    std::fill_n(table.data, fd_event_capacity, nullptr);
    table.max_fd = -1;
    table.max_fd_dirty = 0;
    table.paused_fd = -1;
}

void fd_event_add(int fd, int kind, void *data) {
    if (!is_in_range(fd) || table.count >= table.capacity || table.kind[fd] != fd_event_none) {
        utm_app_debug_log("Add fd failed: %d\n", fd);
        return;
    }
    // Any other kind is refused without a line, unlike a bad descriptor.
    if (kind != fd_event_read && kind != fd_event_write)
        return;
    FD_SET(fd, kind == fd_event_read ? &table.read_set : &table.write_set);
    table.list[table.count] = fd;
    table.pos[fd] = table.count;
    table.max_fd = std::max(table.max_fd, fd);
    table.count += 1;
    table.kind[fd] = kind;
    table.data[fd] = data;
}

int fd_event_del(int fd) {
    if (!fd_event_is_registered(fd))
        return -1;
    FD_CLR(fd, table.kind[fd] == fd_event_read ? &table.read_set : &table.write_set);
    free_slot(fd);
    // The next highest is looked for once a pass: connections come and go several at a time.
    if (fd >= table.max_fd)
        table.max_fd_dirty = 1;
    table.kind[fd] = fd_event_none;
    table.data[fd] = nullptr;
    return 0;
}

bool fd_event_is_registered(int fd) {
    return is_in_range(fd) && table.kind[fd] != fd_event_none;
}

void fd_event_pause(int fd) {
    table.paused_fd = fd;
}

int fd_event_max_fd() {
    if (table.max_fd_dirty == 0)
        return table.max_fd;
    table.max_fd = -1;
    for (int slot = 0; slot < table.count; ++slot)
        table.max_fd = std::max(table.max_fd, table.list[slot]);
    table.max_fd_dirty = 0;
    return table.max_fd;
}

int fd_event_is_ready(int fd) {
    if (!fd_event_is_registered(fd))
        return 0;
    const fd_set *ready = table.kind[fd] == fd_event_read ? &table.ready_read : &table.ready_write;
    return FD_ISSET(fd, ready) ? 1 : 0;
}

int utm_app_config_loop(const socket_event_handler *handler) {
    table.ready_read = table.read_set;
    table.ready_write = table.write_set;
    if (is_in_range(table.paused_fd))
        FD_CLR(table.paused_fd, &table.ready_read);
    table.paused_fd = -1;
    // A second bounds nothing but the pause of a socket that cannot accept right now.
    timeval timeout = {1, 0};
    if (select(fd_event_max_fd() + 1, &table.ready_read, &table.ready_write, nullptr, &timeout) < 0)
        return errno == EINTR ? 0 : -1;
    const int count = collect_ready();
    for (int i = 0; i < count; ++i)
        serve(table.ready[i], handler);
    return 0;
}

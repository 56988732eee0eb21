#include "control/reply.h"

#include "core/write_whole.h"

#include <atomic>
#include <sys/socket.h>

namespace {

std::atomic<bool> is_ending{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler reads it");
/// The connection that a reply is being written to, -1 for none.
std::atomic<int> writing_fd{-1};

/// The descriptor is shown before `is_ending` is read, and `utm_app_reply_stop_waiting` goes the
/// other way round: either the writing does not wait, or the client is cut off.
bool write_replies(int fd, const void *bytes, size_t size) {
    writing_fd = fd;
    const bool written = write_whole(bytes, size, [fd](const char *next, size_t left) {
        return send(fd, next, left, is_ending ? MSG_DONTWAIT : 0);
    });
    writing_fd = -1;
    return written;
}

/// The block is empty afterwards, whether or not it was written: after a failure nothing is left to
/// be sent to a client that no longer takes replies.
bool write_block(reply_block_t *block) {
    const size_t count = block->count;
    block->count = 0;
    return write_replies(block->fd, block->replies, count * sizeof(block->replies[0]));
}

} // namespace

bool utm_app_reply_send(int fd, const utm_app_config_reply &reply, size_t size) {
    return write_replies(fd, &reply, size);
}

void utm_app_reply_begin(reply_block_t *block, int fd) {
    block->fd = fd;
    block->count = 0;
    block->zeroed = 0;
    block->last = nullptr;
}

utm_app_config_reply *utm_app_reply_next(reply_block_t *block) {
    if (block->count == reply_block_size && !write_block(block))
        return nullptr;
    utm_app_config_reply *reply = &block->replies[block->count++];
    // Cleared once and not for every block: a list sets the same fields of each reply anew.
    if (block->zeroed < block->count) {
        *reply = {};
        block->zeroed = block->count;
    }
    reply->status = UTM_APP_CONFIG_STATUS_DATA;
    block->last = reply;
    return reply;
}

void utm_app_reply_end(reply_block_t *block) {
    // Asked for first, because making room for the end may write the block that `last` stands in;
    // its bytes stay where they are.
    const utm_app_config_reply *last = block->last;
    utm_app_config_reply *end = utm_app_reply_next(block);
    if (end == nullptr)
        return;
    if (last != nullptr)
        *end = *last;
    end->status = UTM_APP_CONFIG_STATUS_OK;
    write_block(block);
}

void utm_app_reply_allow_waiting() {
    is_ending = false;
}

void utm_app_reply_stop_waiting() {
    is_ending = true;
    const int fd = writing_fd;
    if (fd >= 0)
        shutdown(fd, SHUT_RDWR);
}

bool utm_app_config_is_ending() {
    return is_ending;
}

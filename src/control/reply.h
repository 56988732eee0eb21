#pragma once
/// Sending replies to a client.
///
/// The socket's send timeout bounds the wait for a client that does not read; one that has gone
/// costs a line in the log (SIGPIPE). The replies of a list are gathered into blocks: a call for
/// each of hundreds of replies costs many times what making the replies does.

#include "format/protocol.h"

#include <cstddef>

/// Replies that are written at once: no more than the kernel takes in one piece, which is 32 KiB
/// and most of a page, so that a block waits for its client once and not piece by piece.
inline constexpr size_t reply_block_size = 40;

/// The part of a list that is not written yet. What a list does not set stays zero in every reply,
/// and what it sets for its last entry stands in its end too.
struct reply_block_t {
    int fd;
    size_t count;                     ///< replies to be written
    size_t zeroed;                    ///< replies that have been used, now or for an earlier block
    const utm_app_config_reply *last; ///< the entry that was asked for last, null before the first
    utm_app_config_reply replies[reply_block_size];
};

/// Writes one reply.
/// @param size  bytes of it
/// @return false when it could not be written whole
bool utm_app_reply_send(int fd, const utm_app_config_reply &reply,
                        size_t size = UTM_APP_CONFIG_REPLY_SIZE);

/// Begins a list.
void utm_app_reply_begin(reply_block_t *block, int fd);

/// Makes room for a list's next entry: a full block is written first.
/// @return the data reply, to be filled in; null when the client no longer takes replies
[[nodiscard]] utm_app_config_reply *utm_app_reply_next(reply_block_t *block);

/// Ends a list, and writes what is left of it.
void utm_app_reply_end(reply_block_t *block);

// ---- The end -------------------------------------------------------------------------------
//
// The one flag that says that the control-socket thread is being ended. It stands here because a
// reply may hold the thread up; the socket's loop and the daemon's signal handler ask for it.

/// Lets replies wait for their clients again, as they do at the start.
void utm_app_reply_allow_waiting();

/// From here on no reply waits for its client, and the client that one is being written to is cut
/// off: for the thread that ends the control-socket thread.
void utm_app_reply_stop_waiting();

/// @return whether replies have stopped waiting; safe in a signal handler
[[nodiscard]] bool utm_app_config_is_ending();

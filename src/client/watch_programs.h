#pragma once
/// Programs that are told of events: every executable file of a folder, in the order of their
/// names.
///
/// They run in the background. Each is told one event at a time, in the events' order, so it is
/// never at work twice and the last thing that it hears is how things are.

#include "client/message.h"
#include "client/watch_events.h"
#include "core/owners.h"

#include <climits>
#include <csignal>
#include <sys/types.h>

/// Most events that wait for their programs. What comes then is dropped with a message.
inline constexpr size_t ctl_jobs_max = 100;

class ctl_programs {
public:
    /// Says where the programs are. The folder, and what it holds, has to be the user's own, with
    /// nobody else writing: see core/own_folder.h.
    /// @param path       null: there are none, and nothing is ever run
    /// @param timeout_s  how long a program may take before it is ended
    /// @param mask       the signals that are blocked in programs
    /// @return CTL_DONE, or CTL_USAGE after a message
    [[nodiscard]] ctl_exit use(const char *path, int32_t timeout_s, const sigset_t &mask);

    /// Has every program told of an event as soon as it can be.
    void tell(const ctl_event &event);

    /// Collects the programs that have ended, ends those that take too long, starts those that
    /// wait. To be called when a child ends and when `wait_ms` are over.
    void attend();

    /// @return how long nothing needs to be done unless a child ends; -1 for any time
    int64_t wait_ms() const;

    /// Ends what runs.
    void end();

private:
    struct job {
        char name[NAME_MAX + 1];
        ctl_event event;
        pid_t pid; ///< 0 while it waits; it leads a process group
        int64_t deadline_ms;
        bool is_told_to_end;
        bool is_over;
    };

    int open_folder() const;
    void add(const char *name, const ctl_event &event);
    void collect();
    void end_late(job *of, int64_t now);
    bool is_busy_before(const job &of) const;
    bool start(job *of, int64_t now);
    void drop_over();

    char path_[PATH_MAX] = "";
    int64_t timeout_ms_ = 0;
    sigset_t mask_ = {};
    plain_vector<job> jobs_; ///< in the events' order, those of one event by their names
};

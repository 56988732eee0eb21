/// `watch`: looks at the household again and again, and tells what has changed.

#include "client/household_file.h"
#include "client/text.h"
#include "client/verbs.h"
#include "client/watch_events.h"
#include "client/watch_programs.h"
#include "core/clock.h"
#include "core/monotonic.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

volatile sig_atomic_t is_asked_to_look = 0;

/// A call that the signal met just before it began to wait would not notice: so once more.
void end(int /*signal*/) {
    ctl_told_to_end = 1;
    alarm(1);
}

void look_now(int /*signal*/) {
    is_asked_to_look = 1;
}

void wake(int /*signal*/) {}

/// A signal that is ignored, as under nohup, stays so.
void on_signal(int signal_number, void (*handler)(int)) {
    struct sigaction old = {};
    if (sigaction(signal_number, nullptr, &old) != 0 || old.sa_handler == SIG_IGN)
        return;
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(signal_number, &action, nullptr);
}

/// What is blocked outside of a watch's waiting.
struct signal_masks {
    sigset_t before;  ///< as the program was started, for the programs that it starts
    sigset_t waiting; ///< while it waits
};

signal_masks take_signals() {
    signal_masks masks = {};
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGCHLD);
    sigaddset(&held, SIGUSR1);
    sigprocmask(SIG_BLOCK, &held, &masks.before);
    masks.waiting = masks.before;
    sigdelset(&masks.waiting, SIGCHLD);
    sigdelset(&masks.waiting, SIGUSR1);
    for (const int signal_number : {SIGHUP, SIGINT, SIGTERM, SIGALRM})
        on_signal(signal_number, end);
    signal(SIGCHLD, wake); // ignored, it would leave nothing to collect
    signal(SIGUSR1, look_now);
    return masks;
}

/// What tells one version of a file from the next.
struct file_version {
    dev_t device;
    ino_t file;
    off_t size;
    timespec changed;
};

bool operator==(const file_version &one, const file_version &other) {
    return one.device == other.device && one.file == other.file && one.size == other.size &&
           one.changed.tv_sec == other.changed.tv_sec &&
           one.changed.tv_nsec == other.changed.tv_nsec;
}

/// The household file, read again when it changes.
class watched_household {
public:
    explicit watched_household(const ctl_options &options)
        : place_(ctl_household_place_of(options.household_path)), names_path_(options.names_path) {}

    /// Where the file is gone, or has mistakes, the household stays as it was.
    void follow() {
        struct stat status = {};
        if (stat(place_.path, &status) != 0)
            return;
        const file_version version = {status.st_dev, status.st_ino, status.st_size, status.st_mtim};
        if (version == version_)
            return;
        version_ = version;
        household_t &next = households_[1 - present_];
        clear(&next);
        if (ctl_read_whole_household(place_.path, names_path_, &next) == CTL_DONE)
            present_ = 1 - present_;
    }

    const household_t &present() const { return households_[present_]; }

private:
    static void clear(household_t *household) {
        household->people.clear();
        household->devices.clear();
        household->rules.clear();
        household->apps.clear();
    }

    ctl_household_place place_;
    const char *names_path_;
    file_version version_ = {};
    household_t households_[2] = {};
    int present_ = 0;
};

/// Asks for everything about a person.
ctl_exit look_at(const ctl_daemon &daemon, const household_t &household,
                 const household_person_t &person, ctl_look *look) {
    ctl_seen_person seen = {};
    seen.name = person.name;
    ctl_app_standings apps;
    ctl_exit status = ctl_read_standing(daemon, person.number, look->limits_on, &seen.is);
    if (status == CTL_DONE)
        status = ctl_read_app_standings(daemon, seen.is,
                                        household_records(household.rules, person.rules), &apps);
    if (status != CTL_DONE)
        return status;
    seen.apps = {look->apps.size(), apps.size()};
    for (const ctl_app_standing &app : apps)
        if (!look->apps.add({ctl_app_title(household, app.rule.app_id), app}))
            return ctl_too_long();
    return look->people.add(seen) ? CTL_DONE : ctl_too_long();
}

ctl_exit look_at_all(const ctl_daemon &daemon, const household_t &household, ctl_look *look) {
    ctl_exit status = ctl_read_limits_on(daemon, &look->limits_on);
    for (size_t i = 0; i < household.people.size() && status == CTL_DONE; ++i)
        status = look_at(daemon, household, household.people[i], look);
    return status;
}

class watch {
public:
    explicit watch(const ctl_call &call) : call_(call), household_(call.options) {}

    ctl_exit run() {
        const signal_masks masks = take_signals();
        ctl_exit status = programs_.use(call_.options.programs_path, call_.options.daemon.timeout_s,
                                        masks.before);
        ctl_mute(true); // as any verb, it has said by now what is wrong with the file
        household_.follow();
        ctl_mute(false);
        while (status == CTL_DONE && ctl_told_to_end == 0) {
            status = look();
            if (status == CTL_DONE)
                wait(masks.waiting);
        }
        programs_.end();
        return status;
    }

private:
    /// Somebody who does not answer is news, and nothing to end for.
    ctl_exit look() {
        household_.follow();
        ctl_look *now = looks_.next();
        now->time = utm_app_now();
        ctl_mute(is_gone_); // why is said once
        const ctl_exit status = look_at_all(call_.options.daemon, household_.present(), now);
        ctl_mute(false);
        if (status == CTL_USAGE || ctl_told_to_end != 0)
            return status == CTL_USAGE ? status : CTL_DONE;
        now->is_there = status == CTL_DONE;
        is_gone_ = !now->is_there;
        ctl_events events;
        if (!looks_.settle(call_.options.has(CTL_OPTION_ALL), &events))
            ctl_say("out of memory: not everything is told");
        return tell(events);
    }

    ctl_exit tell(const ctl_events &events) {
        for (const ctl_event &event : events) {
            const ctl_exit status = print(event);
            if (status != CTL_DONE)
                return status;
            programs_.tell(event);
        }
        return CTL_DONE;
    }

    /// A reader that has gone ends the watch; a full disk does not, and is reported at the end.
    ctl_exit print(const ctl_event &event) {
        ctl_exit status = CTL_DONE;
        if (call_.json()) {
            ctl_document document;
            ctl_describe_event(event, &document);
            status = document.print();
        } else {
            const tm time = ctl_local_day(event.time, 0);
            printf("%s  %s\n", ctl_write_day(time, "%Y-%m-%d %H:%M:%S").text,
                   ctl_event_sentence(event).text);
        }
        if (fflush(stdout) != 0 && errno == EPIPE)
            return CTL_BROKEN;
        return status;
    }

    void wait(const sigset_t &mask) {
        const int64_t end_ms = monotonic_ms() + int64_t{call_.options.interval_s} * 1000;
        is_asked_to_look = 0;
        for (;;) {
            programs_.attend();
            int64_t left = end_ms - monotonic_ms();
            if (left <= 0 || is_asked_to_look != 0 || ctl_told_to_end != 0)
                return;
            const int64_t attention = programs_.wait_ms();
            if (attention >= 0)
                left = std::min(left, attention);
            const timespec time = {static_cast<time_t>(left / 1000),
                                   static_cast<long>(left % 1000) * 1'000'000};
            ppoll(nullptr, 0, &time, &mask);
        }
    }

    const ctl_call &call_;
    watched_household household_;
    ctl_programs programs_;
    ctl_looks looks_;
    bool is_gone_ = false;
};

} // namespace

ctl_exit ctl_watch(const ctl_call &call) {
    watch of(call);
    return of.run();
}

/// Part of libsimpreload.so: puts `sleep` and `gettimeofday` under the control
/// of a virtual clock (clock_page.h).
///
/// Only these two: they are all that the daemon's tick depends on (and leak_check.cpp, in the same
/// library, adds a look for leaks to `_exit`). Whatever else waits (a socket, a child) keeps real
/// time. The programs that the daemon starts inherit the preload, so it needs nothing but libc and
/// does nothing before it is called.

#include "sim/preload/clock_page.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

std::atomic<sim_clock_page *> attached_page;

sim_clock_page *map_page() {
    const char *path = getenv(SIM_CLOCK_VARIABLE);
    if (path == nullptr)
        return nullptr;
    int fd = open(path, O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    void *mapped = mmap(nullptr, sizeof(sim_clock_page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    return mapped == MAP_FAILED ? nullptr : static_cast<sim_clock_page *>(mapped);
}

/// Attaches at the first call, not in a constructor: a sanitizer's runtime in the same program may
/// be initialised later than this library. Two threads that get here together both map the page,
/// which costs a page and harms nothing.
sim_clock_page *page() {
    sim_clock_page *known = attached_page.load();
    if (known == nullptr) {
        known = map_page();
        attached_page.store(known);
    }
    return known;
}

/// The sleeper's mark goes before the second is taken: a controller that sees everything taken and
/// a sleeper marked then knows that the program has done its work and sleeps again.
bool take_second(sim_clock_page *clock) {
    int64_t taken = clock->taken.load();
    if (taken >= clock->granted.load())
        return false;
    clock->sleeper.store(0);
    clock->now.fetch_add(1);
    clock->taken.fetch_add(1);
    return true;
}

/// Nobody is left to grant a second: the program would wait for ever, so it ends here.
void follow_controller(const sim_clock_page *clock) {
    if (kill(clock->controller.load(), 0) != 0 && errno == ESRCH)
        kill(getpid(), SIGKILL);
}

/// Waits a moment for a grant.
///
/// A futex would spare the polling. But ThreadSanitizer holds back signal handlers until the
/// program is in a call that it knows to block, and it knows nanosleep.
/// @return false when a signal handler ran
bool doze(sim_clock_page *clock) {
    clock->sleeper.store(getpid());
    const timespec moment = {.tv_sec = 0, .tv_nsec = 500'000};
    return nanosleep(&moment, nullptr) == 0 || errno != EINTR;
}

unsigned virtual_sleep(sim_clock_page *clock, unsigned seconds) {
    while (seconds > 0) {
        if (take_second(clock)) {
            --seconds;
        } else if (!doze(clock)) {
            clock->sleeper.store(0);
            return seconds;
        } else {
            follow_controller(clock);
        }
    }
    return 0;
}

template <class Function>
Function next(const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The exported names are assembler labels: libc's own declarations of the two differ between C
// libraries in attributes that a definition would have to repeat.
extern "C" {

unsigned simclock_sleep(unsigned seconds) __asm__("sleep");
int simclock_gettimeofday(timeval *now, void *zone) __asm__("gettimeofday");

__attribute__((visibility("default"))) unsigned simclock_sleep(unsigned seconds) {
    sim_clock_page *clock = page();
    if (clock != nullptr && getenv(SIM_SLEEPER_VARIABLE) != nullptr)
        return virtual_sleep(clock, seconds);
    return next<unsigned (*)(unsigned)>("sleep")(seconds);
}

__attribute__((visibility("default"))) int simclock_gettimeofday(timeval *now, void *zone) {
    sim_clock_page *clock = page();
    if (clock == nullptr)
        return next<int (*)(timeval *, void *)>("gettimeofday")(now, zone);
    now->tv_sec = clock->now.load();
    now->tv_usec = 0;
    return 0;
}
}

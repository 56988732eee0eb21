#include "daemon.h"

#include "control/fd_event.h"
#include "control/reply.h"
#include "control/socket_server.h"
#include "core/clock.h"
#include "core/debug_log.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "store/profiles.h"
#include "store/store.h"
#include "usage/collector.h"
#include "usage/top_apps.h"

#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

std::atomic<int> running{1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler stores to it");

namespace {

/// Sleeps of one second from one tick to the next.
constexpr unsigned seconds_per_tick = 60;

/// By default each of these would end the daemon and leave everybody blocked who is.
constexpr int signals_without_effect[] = {SIGHUP, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF};

pthread_t socket_thread;

void create_locks() {
    utm_app_config_mutex.create();
    utm_app_debug_mutex.create();
    utm_app_export_import_mutex.create();
    utm_export_interval_rwlock.create();
}

void destroy_locks() {
    utm_app_config_mutex.destroy();
    utm_app_debug_mutex.destroy();
    utm_app_export_import_mutex.destroy();
    utm_export_interval_rwlock.destroy();
}

void init_state(time_t now) {
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_store_init(now);
    }
    last_export_statistics_ts = now;
}

/// Sleeps for a second, which the signals without an effect do not shorten: sixty of these make a
/// minute. Meanwhile the other thread takes them.
void sleep_a_second() {
    sigset_t without_effect;
    sigset_t before;
    sigemptyset(&without_effect);
    for (const int signo : signals_without_effect)
        sigaddset(&without_effect, signo);
    pthread_sigmask(SIG_BLOCK, &without_effect, &before);
    sleep(1);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

/// One minute's work. Each step takes the locks it needs and reports its own failures.
void tick() {
    utm_app_update_app_status();
    utm_app_update_global_app_status();
    utm_app_export_check();
}

} // namespace

void signal_handler(int signo) {
    if (signo == SIGINT)
        running = 0;
    // A client that is cut off at the end has not gone by itself. The signal is not ignored then
    // instead, because the programs that are started would inherit that.
    else if (signo == SIGPIPE && !utm_app_config_is_ending())
        utm_app_log_from_signal("Receive SIGPIPE\n");
}

void utm_app_settle_descriptors() {
    int fd = open("/dev/null", O_RDWR);
    while (fd >= 0 && fd <= STDERR_FILENO)
        fd = open("/dev/null", O_RDWR);
    if (fd >= 0)
        close(fd);
    for (int inherited = STDERR_FILENO + 1; inherited < FD_SETSIZE; ++inherited)
        fcntl(inherited, F_SETFD, FD_CLOEXEC); // fails harmlessly where there is none
}

void utm_app_settle_umask() {
    umask(umask(S_IWGRP | S_IWOTH) | S_IWGRP | S_IWOTH);
}

void utm_app_install_signal_handlers() {
    struct sigaction action = {};
    action.sa_handler = signal_handler;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGPIPE, &action, nullptr);
    for (const int signo : signals_without_effect)
        sigaction(signo, &action, nullptr);
}

int32_t utm_app_config_handler_init() {
    const time_t now = utm_app_now();
    create_locks();
    init_state(now);
    fd_event_reset();
    const int32_t result = utm_app_config_socket_init_binding();
    if (result < 0)
        utm_app_log_always("utm_app_config_socket_init_binding failed\n");
    return result;
}

int32_t utm_app_config_handler_start() {
    if (pthread_create(&socket_thread, nullptr, utm_app_config_handler, nullptr) != 0) {
        utm_app_log_always("Config handler init failed\n");
        return -1;
    }
    utm_app_debug_log("Config handler init success\n");
    return 0;
}

void utm_app_config_handler_stop() {
    // Put back as in the main loop.
    utm_app_install_signal_handlers();
    utm_app_config_socket_stop();
    // Without a descriptor left the thread does not watch its socket, for a second at a time. The
    // signal ends that wait; elsewhere it changes nothing.
    pthread_kill(socket_thread, SIGINT);
    pthread_join(socket_thread, nullptr);
    utm_app_reply_allow_waiting();
    utm_app_config_socket_remove();
}

int32_t utm_app_config_handler_exit() {
    const int32_t result = utm_app_flush_profiles();
    utm_app_reset_top_apps();
    destroy_locks();
    utm_app_log_always("Config handler exit\n");
    return result;
}

void utm_app_main_loop() {
    unsigned counter = 0;
    do {
        if (counter == 0)
            tick();
        counter = (counter + 1) % seconds_per_tick;
        // `system` ignores SIGINT while its command runs. Where it is not written for threads, two
        // that overlap can leave it ignored for good, so the handlers are put back every second.
        utm_app_install_signal_handlers();
        sleep_a_second();
    } while (running != 0);
}

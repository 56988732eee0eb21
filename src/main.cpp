/// utm_appd: tracks and limits each family member's internet time.

#include "daemon.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

constexpr char help[] = "Usage: utm_appd [--help | --version]\n"
                        "Tracks and limits a family's internet time. Binds its control socket,\n"
                        "detaches and runs until SIGINT; utm_appctl configures and asks it.\n";
constexpr char version[] = "utm_appd " UTM_APPD_VERSION "\n";

/// @return what the command line asks to be told; null where it starts the daemon
///
/// Whoever tries out an unknown program types these two, and a daemon that started would take the
/// socket from one that runs. That can be the only word: every other argument has always been
/// ignored, and what starts the daemon with some goes on starting it.
const char *text_asked_for(int argc, char **argv) {
    if (argc != 2)
        return nullptr;
    if (strcmp(argv[1], "--help") == 0)
        return help;
    return strcmp(argv[1], "--version") == 0 ? version : nullptr;
}

} // namespace

int main(int argc, char **argv) {
    if (const char *text = text_asked_for(argc, argv))
        return fputs(text, stdout) >= 0 && fflush(stdout) == 0 ? 0 : 1;
    utm_app_settle_descriptors();
    utm_app_settle_umask();
    utm_app_install_signal_handlers();
    if (utm_app_config_handler_init() < 0)
        return 1;
    // The listening socket survives the fork; a thread would not. Whoever started the daemon sees
    // a socket that could not be bound as exit status 1, and after this point nothing more. A
    // daemon that cannot detach works as well in the foreground.
    [[maybe_unused]] const int detached = daemon(0, 0);
    if (utm_app_config_handler_start() != 0)
        return 1;
    if (running != 0)
        utm_app_main_loop();
    utm_app_config_handler_stop();
    utm_app_config_handler_exit();
    return 0;
}

/// utm_appd: tracks and limits each family member's internet time. Takes no arguments.

#include "daemon.h"

#include <unistd.h>

int main() {
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

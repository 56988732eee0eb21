#include "core/system_log.h"

#include <cstdarg>
#include <cstdio>
#include <syslog.h>

void utm_app_system_log(const char *format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    openlog("utm_appd", LOG_PID, LOG_DAEMON);
    syslog(LOG_WARNING, "%s", line);
    // The next line is far off, and an open descriptor would be one less for clients.
    closelog();
}

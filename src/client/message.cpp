#include "client/message.h"

#include <cstdio>

// Everything goes to standard error, so that a script's JSON or report stays whole.

void ctl_say_list(const char *format, va_list arguments) {
    fputs("utm_appctl: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
}

void ctl_say(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ctl_say_list(format, arguments);
    va_end(arguments);
}

ctl_exit ctl_fail(ctl_exit status, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ctl_say_list(format, arguments);
    va_end(arguments);
    return status;
}

/// The system's log of the simulated router: the file `syslog` in its directory, a line for each
/// call.

#include "sim/preload/call.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

void append(const char *format, va_list arguments) {
    const char *router = getenv("UTM_SIM_DIR");
    char path[4096];
    if (router == nullptr)
        return;
    snprintf(path, sizeof(path), "%s/syslog", router);
    FILE *file = fopen(path, "ae");
    if (file == nullptr)
        return;
    vfprintf(file, format, arguments);
    fputc('\n', file);
    fclose(file);
}

} // namespace

SIM_DEFINE(void, syslog, (int, const char *format, ...)) {
    va_list arguments;
    va_start(arguments, format);
    append(format, arguments);
    va_end(arguments);
}

/// What a fortified program calls instead.
SIM_DEFINE(void, __syslog_chk, (int, int, const char *format, ...)) {
    va_list arguments;
    va_start(arguments, format);
    append(format, arguments);
    va_end(arguments);
}

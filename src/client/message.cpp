#include "client/message.h"

#include "core/text.h"

#include <cstdio>
#include <cstring>

namespace {

plain_vector<ctl_message> said;
bool is_mute = false;

/// Makes one line of a message's lines.
void join_lines(char *text, size_t size) {
    for (char *end = strchr(text, '\n'); end != nullptr; end = strchr(end, '\n')) {
        const size_t rest = strlen(end + 1);
        if (end + 2 + rest >= text + size) { // no room for the full stop
            *end = ' ';
            continue;
        }
        memmove(end + 2, end + 1, rest + 1);
        memcpy(end, ". ", 2);
    }
}

__attribute__((format(printf, 1, 0))) void keep(const char *format, va_list arguments) {
    ctl_message raw = {};
    ctl_message clean = {};
    vsnprintf(raw.text, sizeof(raw.text), format, arguments);
    join_lines(raw.text, sizeof(raw.text));
    text_copy_clean(clean.text, sizeof(clean.text), raw.text);
    if (said.size() == ctl_messages_max)
        said[ctl_messages_max - 1] = clean; // the last one is the reason for the end
    else if (!said.add(clean))
        return;
}

} // namespace

// Everything goes to standard error, so that a script's JSON or report stays whole.

void ctl_mute(bool mute) {
    is_mute = mute;
}

void ctl_say_list(const char *format, va_list arguments) {
    if (is_mute)
        return;
    va_list again;
    va_copy(again, arguments);
    fputs("utm_appctl: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    keep(format, again);
    va_end(again);
}

plain_vector<ctl_message> &ctl_said() {
    return said;
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

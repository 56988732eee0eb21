#include "client/names.h"

#include "client/message.h"
#include "core/owners.h"
#include "core/regular_file.h"
#include "core/text.h"
#include "format/spelling.h"

#include <cerrno>
#include <cstring>

namespace {

/// The DPI engine's number for what it has not recognised.
constexpr int32_t unrecognised_app = 0;

constexpr char blanks[] = " \t\r\n";

/// Reads a line's number and name; what is neither blank nor a comment must have both.
/// @param line  is taken apart
bool parse_line(char *line, ctl_app_name *entry) {
    char *number = line + strspn(line, blanks);
    char *number_end = number + strcspn(number, blanks);
    char *name = number_end + strspn(number_end, blanks);
    size_t length = strlen(name);
    while (length > 0 && strchr(blanks, name[length - 1]) != nullptr)
        --length;
    name[length] = '\0';
    *number_end = '\0';
    if (length == 0 || !spelling_number(number, &entry->app_id))
        return false;
    text_copy_clean(entry->name, sizeof(entry->name), name);
    return true;
}

bool is_empty(const char *line) {
    const char *text = line + strspn(line, blanks);
    return *text == '\0' || *text == '#';
}

ctl_exit read_lines(FILE *file, const char *path, ctl_app_names *names) {
    char *line = nullptr;
    size_t room = 0;
    ctl_exit status = CTL_DONE;
    for (int number = 1; status == CTL_DONE && getline(&line, &room, file) >= 0; ++number) {
        ctl_app_name entry = {};
        if (is_empty(line))
            continue;
        if (!parse_line(line, &entry))
            ctl_say(
                "%s, line %d: expected a number and a name, such as \"305 video\"; line skipped",
                path, number);
        else if (!names->add(entry))
            status = ctl_fail(CTL_BROKEN, "%s: out of memory", path);
    }
    if (status == CTL_DONE &&
        feof(file) == 0) // an error, or a line that is too long for the memory
        status = ctl_fail(CTL_USAGE, "cannot read the applications' names from %s: %s", path,
                          strerror(errno));
    free(line);
    return status;
}

/// The file that is read unless told is a convenience: where it is of no use, applications go by
/// their numbers.
ctl_exit unreadable(const char *path, const char *wanted, const char *reason) {
    ctl_say("cannot read the applications' names from %s: %s", wanted, reason);
    return path == nullptr ? CTL_DONE : CTL_USAGE;
}

} // namespace

ctl_exit ctl_read_names(const char *path, ctl_app_names *names) {
    const char *wanted = path != nullptr ? path : ctl_names_path;
    fd_guard opened(regular_file_open(wanted));
    if (opened.get() < 0 && path == nullptr && errno == ENOENT)
        return CTL_DONE;
    const file_ptr file(opened.get() < 0 ? nullptr : fdopen(opened.get(), "r"));
    if (file == nullptr)
        return unreadable(path, wanted,
                          errno == ENOTSUP ? "it is not a regular file" : strerror(errno));
    opened.release(); // the stream's from here on
    return read_lines(file.get(), wanted, names);
}

const char *ctl_find_name(const ctl_app_names &names, int32_t app_id) {
    for (const ctl_app_name &entry : names)
        if (entry.app_id == app_id)
            return entry.name;
    return app_id == unrecognised_app ? "not recognised" : nullptr;
}

bool ctl_find_app(const ctl_app_names &names, const char *text, int32_t *app_id) {
    if (spelling_number(text, app_id))
        return true;
    for (const ctl_app_name &entry : names)
        if (text_is_same(entry.name, text)) {
            *app_id = entry.app_id;
            return true;
        }
    return false;
}

#include "client/household_file.h"

#include "client/names.h"
#include "core/owners.h"
#include "core/read_whole.h"
#include "core/regular_file.h"
#include "format/spelling.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

constexpr char path_variable[] = "UTM_APPCTL_HOUSEHOLD";

bool is_standard_input(const char *path) {
    return strcmp(path, "-") == 0;
}

const char *shown_path(const char *path) {
    return is_standard_input(path) ? "standard input" : path;
}

/// @return the text; null with `errno` set
heap_ptr<char> read_file(const char *path, size_t *size) {
    if (is_standard_input(path))
        return read_whole(STDIN_FILENO, household_size_limit, size);
    const fd_guard file(regular_file_open(path));
    if (file.get() < 0)
        return nullptr;
    return read_whole(file.get(), household_size_limit, size);
}

const char *reason(int error) {
    return error == ENOTSUP  ? "it is not a regular file"
           : error == EFBIG  ? "it is larger than 1 MiB"
           : error == ENOMEM ? "out of memory"
                             : strerror(error);
}

ctl_exit out_of_memory(const char *path) {
    return ctl_fail(CTL_BROKEN, "%s: out of memory", shown_path(path));
}

/// Reads the names file as the household has its applications.
ctl_exit read_apps(const char *names_path, plain_vector<household_app_t> *apps) {
    ctl_app_names names;
    const ctl_exit status = ctl_read_names(names_path, &names);
    if (status != CTL_DONE)
        return status;
    for (const ctl_app_name &name : names) {
        household_app_t app = {.number = name.app_id, .name = {}};
        static_assert(sizeof(app.name.text) == sizeof(name.name));
        memcpy(app.name.text, name.name, sizeof(name.name));
        if (!apps->add(app))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    return CTL_DONE;
}

std::span<const household_app_t> all_of(const plain_vector<household_app_t> &apps) {
    return {apps.begin(), apps.size()};
}

/// @return the first error; null without one, which is when memory ran out
const household_remark_t *first_error(const household_remarks_t &remarks) {
    for (const household_remark_t &remark : remarks)
        if (remark.is_error)
            return &remark;
    return nullptr;
}

/// Leaves the names file's names alone.
ctl_exit reset(const char *path, const plain_vector<household_app_t> &apps,
               household_t *household) {
    household->limits = true;
    household->people.clear();
    household->devices.clear();
    household->rules.clear();
    household->apps.clear();
    for (const household_app_t &app : apps)
        if (!household->apps.add(app))
            return out_of_memory(path);
    return CTL_DONE;
}

} // namespace

ctl_household_place ctl_household_place_of(const char *told) {
    if (told != nullptr)
        return {told, true};
    const char *path = getenv(path_variable);
    return {path != nullptr && path[0] != '\0' ? path : household_path, false};
}

ctl_exit ctl_read_names_of_household(const char *told, const char *names_path,
                                     household_t *household) {
    const ctl_household_place place = ctl_household_place_of(told);
    plain_vector<household_app_t> apps;
    const ctl_exit status = read_apps(names_path, &apps);
    if (status != CTL_DONE)
        return status;
    size_t size = 0;
    const heap_ptr<char> text = read_file(place.path, &size);
    if (text == nullptr) {
        const int error = errno;
        if (place.is_told || error != ENOENT)
            ctl_say("cannot read the household from %s: %s", shown_path(place.path), reason(error));
        return place.is_told ? CTL_USAGE : reset(place.path, apps, household);
    }
    household_remarks_t remarks;
    if (household_read(text.get(), size, all_of(apps), household, &remarks))
        return CTL_DONE;
    const household_remark_t *error = first_error(remarks);
    if (error == nullptr)
        return out_of_memory(place.path);
    ctl_say("%s: %s; until this is mended, the file names nobody and nothing",
            shown_path(place.path), error->text);
    return reset(place.path, apps, household);
}

ctl_exit ctl_read_whole_household(const char *path, const char *names_path,
                                  household_t *household) {
    plain_vector<household_app_t> apps;
    const ctl_exit status = read_apps(names_path, &apps);
    if (status != CTL_DONE)
        return status;
    size_t size = 0;
    const heap_ptr<char> text = read_file(path, &size);
    if (text == nullptr)
        return ctl_fail(CTL_USAGE, "cannot read the household from %s: %s", shown_path(path),
                        reason(errno));
    household_remarks_t remarks;
    const bool is_good = household_read(text.get(), size, all_of(apps), household, &remarks);
    // The warnings first: what is said last is the reason why it failed.
    for (const bool is_error : {false, true})
        for (const household_remark_t &remark : remarks)
            if (remark.is_error == is_error)
                ctl_say("%s: %s%s", shown_path(path), is_error ? "" : "warning: ", remark.text);
    if (!is_good && first_error(remarks) == nullptr)
        return out_of_memory(path);
    return is_good ? CTL_DONE : CTL_USAGE;
}

ctl_person_text ctl_person_name(const household_t &household, int32_t number) {
    ctl_person_text name = {};
    const household_person_t *person = household_person_of(household, number);
    if (person != nullptr)
        memcpy(name.text, person->name.text, sizeof(name.text));
    else
        snprintf(name.text, sizeof(name.text), "%d", number);
    return name;
}

household_name_t ctl_app_title(const household_t &household, int32_t app_id) {
    household_name_t title = {};
    const char *name = household_app_name(household, app_id);
    if (name != nullptr)
        snprintf(title.text, sizeof(title.text), "%s", name);
    else
        snprintf(title.text, sizeof(title.text), "%d", app_id);
    return title;
}

bool ctl_read_person(const household_t &household, const char *text, int32_t *number) {
    const household_person_t *person = household_find_person(household, text);
    if (person != nullptr) {
        *number = person->number;
        return true;
    }
    if (spelling_number(text, number))
        return true;
    const char *nearest = household_nearest_person(household, text);
    if (nearest != nullptr)
        ctl_say("\"%s\" is nobody's name\nDid you mean \"%s\"?", text, nearest);
    else
        ctl_say("\"%s\" is nobody's name\nGive a whole number, or a name in the household", text);
    return false;
}
